#include "moxel/reg_reader.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace moxel::tool {
namespace {

using namespace std::string_literals;

const std::string kV4 = "REGEDIT4\n";
const std::string kV5 = "Windows Registry Editor Version 5.00\n";
const std::string kKey = "[HKEY_LOCAL_MACHINE\\K]\n", kV4Key = kV4 + kKey, kV5Key = kV5 + kKey;

std::string Utf16(std::string_view ascii, bool big_endian) {
  std::string bytes = big_endian ? "\xFE\xFF" : "\xFF\xFE";
  for (const char c : ascii) bytes += big_endian ? std::string{'\0', c} : std::string{c, '\0'};
  return bytes;
}

// ---- Malformed files

// The line and the reason for which a file is refused.
std::pair<size_t, std::string> RefusalOf(const std::string& file) {
  try {
    ReadRegFile(file);
  } catch (const RegSyntaxError& error) {
    return {error.line(), error.what()};
  }
  return {0, "accepted"};
}

// Files are refused for a reason, all with the same head and at the same line.
void ExpectRefused(const std::string& head, size_t line, const std::string& reason,
                   const std::vector<std::string>& tails) {
  for (const std::string& tail : tails) {
    const auto [refused_at, refused_for] = RefusalOf(head + tail);
    EXPECT_EQ(refused_at, line) << tail << "\n" << refused_for;
    EXPECT_NE(refused_for.find(reason), std::string::npos) << tail << "\n" << refused_for;
  }
}

TEST(RegReader, RefusesMalformedFilesWithLineAndReason) {
  ExpectRefused("", 1, "first line", {"", "\n" + kV4, "REGEDIT40\n", kKey + "\"x\"=\"y\"\n"});
  ExpectRefused("", 1, "first line", {"Windows Registry Editor Version 4.00\n", Utf16(kV5, false).substr(2)});
  ExpectRefused(Utf16(kV5 + kKey, false), 3, "odd number", {"x"});
  ExpectRefused("\xEF\xBB\xBF" + kV4, 1, "not valid UTF-8", {"; \xE9\n"});

  ExpectRefused(kV4 + "\n", 3, "without closing", {"[HKEY_LOCAL_MACHINE\\K\n[HKEY_LOCAL_MACHINE\\L]\n"});
  ExpectRefused(kV4, 2, "empty key path", {"[]\n", "[-]\n"});
  ExpectRefused(kV4, 2, "empty component", {"[HKEY_LOCAL_MACHINE\\K\\]\n", "[HKEY_LOCAL_MACHINE\\\\K]\n"});
  ExpectRefused(kV4, 2, "NUL", {"[HKEY_LOCAL_MACHINE\\a\0b]\n"s});
  ExpectRefused(kV4, 2, "only HKEY_LOCAL_MACHINE", {"[SOFTWARE\\K]\n", "[ HKEY_LOCAL_MACHINE\\K]\n"});
  ExpectRefused(kV4, 2, "hive cannot be deleted", {"[-HKEY_LOCAL_MACHINE]\n"});
  ExpectRefused(kV5, 2, "U+0416 is not in code page 1252", {"[HKEY_LOCAL_MACHINE\\\xD0\x96]\n"});

  ExpectRefused(kV4, 2, "value before any key", {"\"x\"=\"y\"\n" + kKey});
  ExpectRefused(kV4 + "[-HKEY_LOCAL_MACHINE\\K]\n", 3, "below a key that is deleted", {"@=\"y\"\n"});
  ExpectRefused(kV4Key, 3, "neither a key", {"x=\"y\"\n"});
  ExpectRefused(kV4Key, 3, "\"=\" expected", {"\"x\" \"y\"\n", "@\n=\"y\"\n"});
  ExpectRefused(kV4Key, 3, "without data", {"\"x\"=\n", "\"x\"="});
  ExpectRefused(kV4Key, 3, "unknown form", {"\"x\"=y\n"});
  ExpectRefused(kV4Key, 3, "unexpected text", {"@=-1\n", "@=\"y\"z\n", "@=\"a\"b\"\n"});
  ExpectRefused(kV4Key, 3, "without closing quote", {"\"x=1\n\n", "\"x\"=\"C:\\\"\n", "\"x\"=\"a\\"});
  ExpectRefused(kV4Key, 4, "without closing quote", {"\n\"x\"=\"a\nb\nc\n"});
  ExpectRefused(kV4Key, 3, "NUL", {"\"a\0b\"=\"y\"\n"s});
  ExpectRefused(kV4Key, 6, "neither a key", {"\"x\"=\"a\nb\nc\"\n?\n"});
  ExpectRefused(kV5Key, 3, "U+01F600 is not", {"\"x\"=\"\xF0\x9F\x98\x80\"\n"});

  ExpectRefused(kV4Key, 3, "1 to 8", {"@=dword:123456789\n", "@=dword:\n", "@=dword:-1\n"});
  ExpectRefused(kV4Key, 3, "unexpected text", {"@=dword:12g\n", "@=hex:01 02\n"});
  ExpectRefused(kV4Key, 3, "1 or 2", {"@=hex:012\n", "@=hex:01,\n\"y\"=\"z\"\n", "@=hex:01,,02\n"});
  ExpectRefused(kV4Key, 5, "1 or 2", {"@=hex:01,\\\n  02,\\\n  zz\n"});
  ExpectRefused(kV4Key, 4, "1 or 2", {"@=hex:01,\\\n"});
  ExpectRefused(kV4Key, 3, "file ends", {"@=hex:01,\\"});
  ExpectRefused(kV4Key, 3, "backslash before the end", {"@=hex:01,\\02\n"});
  ExpectRefused(kV4Key, 3, "type of 1 to 8", {"@=hex():01\n", "@=hex(123456789):01\n"});
  ExpectRefused(kV4Key, 3, "\"):\" expected", {"@=hex(7:01\n"});
  ExpectRefused(kV5Key, 3, "odd number", {"@=hex(2):41,00,\\\n  00\n"});
  ExpectRefused(kV5Key, 3, "U+0416 is not", {"@=hex(7):16,04,00,00\n"});
}

// ---- Values, each as the one value of a key

// The text of a value and what it holds.
auto V(const std::string& text, DWORD type, const std::string& bytes, const std::string& name = "") {
  return std::pair(text, RegValueChange{name, RegData{type, bytes}});
}

void ExpectRead(const std::string& head, const auto&... values) {
  for (const auto& [text, value] : {values...})
    EXPECT_EQ(ReadRegFile(head + text), (RegDocument{{{HKEY_LOCAL_MACHINE, "K"}, false, {value}}})) << text;
}

TEST(RegReader, GivesEveryValueItsTypeBytesAndName) {
  // Some look like UTF-8 but encode "/" in two bytes, a surrogate, a code too large, or half a one.
  ExpectRead(
      kV4Key, V(" \t\"n\" =\t\"\" \t\n", 1, "\0"s, "n"), V("@=\"a;b\" ; \"c\"\n", 1, "a;b\0"s),
      V(R"("\"\\"="\\\"\n\r\t")", 1, "\\\"\n\rt\0"s, "\"\\"),
      V("\"a\nb\"=\"a\r\nb\nc\rd\"\n", 1, "a\r\nb\nc\rd\0"s, "a\nb"), V("@=dword:a", 4, "\x0A\0\0\0"s),
      V("@=DWORD:89ABCDEF", 4, "\xEF\xCD\xAB\x89"), V("@=hex:\n", 3, ""),
      V("@=hex:\\\n 1,\\ \n\t02\\\n  ,ff ; three\n", 3, "\x01\x02\xFF"),
      V("@=hex(4):00,00,00,00,00,00,04,40", 4, "\0\0\0\0\0\0\x04\x40"s), V("@=hex(2A):01", 0x2A, "\x01"),
      V("@=hex(2):41,00", 2, "A\0"s), V("@=\"\x80\x81\xE9\"", 1, "\x80\x81\xE9\0"s),
      V("@=\"\xC0\xAF\"", 1, "\xC0\xAF\0"s), V("@=\"\xED\xA0\x80\"", 1, "\xED\xA0\x80\0"s),
      V("@=\"\xF4\x90\x80\x80\"", 1, "\xF4\x90\x80\x80\0"s), V("@=\"\xC3\xA9\" ;\xE2\x82", 1, "\xC3\xA9\0"s));
  ExpectRead(kV5Key, V("@=hex(2):ac,20,00,00", 2, "\x80\0"s), V("@=hex(1):41,00,42,00", 1, "AB"),
             V("@=hex(7):61,00,00,00,00,00", 7, "a\0\0"s), V("@=hex(0):41,00,42", 0, "A\0B"s),
             V("@=\"\xC2\x81\xE2\x82\xAC\"", 1, "\x81\x80\0"s));
}

// ---- Whole files

const std::string kWhole =
    "Windows Registry Editor Version 5.00 \n; comment\n\n"
    "[HKEY_LOCAL_MACHINE\\SOFTWARE\\A]B] ; comment\n@=\"d\"\n\t; comment\n"
    "\"x\"=dword:00000001\n\"x\"=-\n[-hkey_classes_root\\Gone]\n  [HKEY_LOCAL_MACHINE]";

TEST(RegReader, KeepsOrderAndCountsLinesInEveryEncodingAndLineEnd) {
  RegDocument expected{{{HKEY_LOCAL_MACHINE, "SOFTWARE\\A]B"}, false, {}},
                       {{HKEY_CLASSES_ROOT, "Gone"}, true, {}},
                       {{HKEY_LOCAL_MACHINE, ""}, false, {}}};
  const RegData one{REG_DWORD, "\x01\0\0\0"s};
  expected[0].values = {{"", RegData{REG_SZ, "d\0"s}}, {"x", one}, {"x", std::nullopt}};
  for (const char* line_end : {"\n", "\r\n", "\r"}) {
    std::string text;
    for (const char c : kWhole) c == '\n' ? text += line_end : text += c;
    for (const std::string& file : {text, "\xEF\xBB\xBF" + text, Utf16(text, false), Utf16(text, true)})
      EXPECT_EQ(ReadRegFile(file), expected) << ::testing::PrintToString(file);
    ExpectRefused(text, 13, "neither", {std::string() + line_end + line_end + line_end + "?"});
  }
}

TEST(RegReader, RefusesOrReadsEveryCutAndEveryChangedByteOfAFile) {
  for (size_t at = 0; at < kWhole.size(); ++at)
    for (const char c : {'\0', '"', '\\', ']', '[', '\n', '\xE9'}) {
      std::string changed = kWhole;
      changed[at] = c;
      for (const std::string& file : {kWhole.substr(0, at), changed, Utf16(kWhole, false).substr(0, at)})
        EXPECT_LE(RefusalOf(file).first, 12u);
    }
}

}  // namespace
}  // namespace moxel::tool
