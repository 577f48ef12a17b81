#include "moxel/reg_reader.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

namespace moxel::tool {
namespace {

using namespace std::string_literals;

const std::string kV4 = "REGEDIT4\n";
const std::string kV5 = "Windows Registry Editor Version 5.00\n";
const std::string kKey = "[HKEY_LOCAL_MACHINE\\K]\n";

std::string Utf16(std::string_view ascii, bool big_endian) {
  std::string bytes = big_endian ? "\xFE\xFF" : "\xFF\xFE";
  for (const char c : ascii) {
    const std::string unit{c, '\0'};
    bytes.append(big_endian ? std::string(unit.rbegin(), unit.rend()) : unit);
  }
  return bytes;
}

std::string WithLineEnds(std::string_view text, std::string_view line_end) {
  std::string result;
  for (const char c : text) c == '\n' ? result += line_end : result += c;
  return result;
}

// ---- Malformed files

struct Malformed {
  const char* what;
  std::string file;
  size_t line;
  std::string reason;
};

void PrintTo(const Malformed& malformed, std::ostream* out) { *out << malformed.what; }

class MalformedRegFile : public ::testing::TestWithParam<Malformed> {};

TEST_P(MalformedRegFile, IsRefusedWithLineAndReason) {
  try {
    ReadRegFile(GetParam().file);
    FAIL() << "accepted";
  } catch (const RegSyntaxError& error) {
    EXPECT_EQ(error.line(), GetParam().line) << error.what();
    EXPECT_NE(std::string(error.what()).find(GetParam().reason), std::string::npos) << error.what();
  }
}

INSTANTIATE_TEST_SUITE_P(
    Headers, MalformedRegFile,
    ::testing::Values(
        Malformed{"empty", "", 1, "first line"}, Malformed{"blank line first", "\n" + kV4, 1, "first line"},
        Malformed{"version 4 in version 5 words", "Windows Registry Editor Version 4.00\n", 1, "first line"},
        Malformed{"header with a tail", "REGEDIT40\n", 1, "first line"},
        Malformed{"no header", kKey + "\"x\"=\"y\"\n", 1, "first line"},
        Malformed{"UTF-16 without mark", Utf16(kV5, false).substr(2), 1, "first line"},
        Malformed{"UTF-16 cut in a character", Utf16(kV5 + kKey, false) + "x", 3, "odd number"},
        Malformed{"marked as UTF-8, is not", "\xEF\xBB\xBF" + kV4 + "; \xE9\n", 1, "not valid UTF-8"}));

INSTANTIATE_TEST_SUITE_P(
    Keys, MalformedRegFile,
    ::testing::Values(
        Malformed{"never closed", kV4 + "\n[HKEY_LOCAL_MACHINE\\K\n[HKEY_LOCAL_MACHINE\\L]\n", 3,
                  "without closing"},
        Malformed{"text behind", kV4 + "[HKEY_LOCAL_MACHINE\\K] x\n", 2, "unexpected text"},
        Malformed{"empty", kV4 + "[]\n", 2, "empty key path"},
        Malformed{"empty deletion", kV4 + "[-]\n", 2, "empty key path"},
        Malformed{"leading backslash", kV4 + "[\\HKEY_LOCAL_MACHINE\\K]\n", 2, "begins with a backslash"},
        Malformed{"trailing backslash", kV4 + "[HKEY_LOCAL_MACHINE\\K\\]\n", 2, "empty component"},
        Malformed{"doubled backslash", kV4 + "[HKEY_LOCAL_MACHINE\\\\K]\n", 2, "empty component"},
        Malformed{"256 characters", kV4 + "[HKEY_LOCAL_MACHINE\\" + std::string(256, 'k') + "]\n", 2,
                  "over 255"},
        Malformed{"NUL", kV4 + "[HKEY_LOCAL_MACHINE\\a\0b]\n"s, 2, "NUL"},
        Malformed{"other hive", kV4 + "[HKEY_CURRENT_USER\\K]\n", 2,
                  "only HKEY_LOCAL_MACHINE and HKEY_CLASSES_ROOT"},
        Malformed{"no hive", kV4 + "[SOFTWARE\\K]\n", 2, "only HKEY_LOCAL_MACHINE and HKEY_CLASSES_ROOT"},
        Malformed{"blank before the hive", kV4 + "[ HKEY_LOCAL_MACHINE\\K]\n", 2, "this registry holds only"},
        Malformed{"hive deleted", kV4 + "[-HKEY_LOCAL_MACHINE]\n", 2, "hive cannot be deleted"},
        Malformed{"foreign character", kV5 + "[HKEY_LOCAL_MACHINE\\\xD0\x96]\n", 2,
                  "U+0416 is not in code page 1252"}));

INSTANTIATE_TEST_SUITE_P(
    Values, MalformedRegFile,
    ::testing::Values(
        Malformed{"before any key", kV4 + "\"x\"=\"y\"\n" + kKey, 2, "value before any key"},
        Malformed{"below a deleted key", kV4 + "[-HKEY_LOCAL_MACHINE\\K]\n@=\"y\"\n", 3,
                  "below a key that is deleted"},
        Malformed{"unquoted name", kV4 + kKey + "x=\"y\"\n", 3, "neither a key"},
        Malformed{"no equals sign", kV4 + kKey + "\"x\" \"y\"\n", 3, "\"=\" expected"},
        Malformed{"equals sign on the next line", kV4 + kKey + "@\n=\"y\"\n", 3, "\"=\" expected"},
        Malformed{"no data", kV4 + kKey + "\"x\"=\n", 3, "without data"},
        Malformed{"no data but a file end", kV4 + kKey + "\"x\"=", 3, "without data"},
        Malformed{"unquoted data", kV4 + kKey + "\"x\"=y\n", 3, "unknown form"},
        Malformed{"deletion with a tail", kV4 + kKey + "\"x\"=-1\n", 3, "unexpected text"},
        Malformed{"text behind a text", kV4 + kKey + "\"x\"=\"y\"z\n", 3, "unexpected text"},
        Malformed{"inner quote not escaped", kV4 + kKey + "\"x\"=\"a\"b\"\n", 3, "unexpected text"},
        Malformed{"text never closed, from where it began", kV4 + kKey + "\n\"x\"=\"a\nb\nc\n", 4,
                  "without closing quote"},
        Malformed{"name never closed", kV4 + kKey + "\"x=1\n\n", 3, "without closing quote"},
        Malformed{"closing quote escaped", kV4 + kKey + "\"x\"=\"C:\\\"\n", 3, "without closing quote"},
        Malformed{"file ends in an escape", kV4 + kKey + "\"x\"=\"a\\", 3, "without closing quote"},
        Malformed{"NUL in a name", kV4 + kKey + "\"a\0b\"=\"y\"\n"s, 3, "NUL"},
        Malformed{"line counted behind a text of three lines", kV4 + kKey + "\"x\"=\"a\nb\nc\"\n?\n", 6,
                  "neither a key"},
        Malformed{"pair of surrogates", kV5 + kKey + "\"x\"=\"\xF0\x9F\x98\x80\"\n", 3, "U+01F600 is not"}));

INSTANTIATE_TEST_SUITE_P(
    Numbers, MalformedRegFile,
    ::testing::Values(
        Malformed{"dword of 9 digits", kV4 + kKey + "@=dword:123456789\n", 3, "1 to 8"},
        Malformed{"dword without digits", kV4 + kKey + "@=dword:\n", 3, "1 to 8"},
        Malformed{"dword with another letter", kV4 + kKey + "@=dword:12g\n", 3, "unexpected text"},
        Malformed{"dword below zero", kV4 + kKey + "@=dword:-1\n", 3, "1 to 8"},
        Malformed{"byte of 3 digits", kV4 + kKey + "@=hex:012\n", 3, "1 or 2"},
        Malformed{"comma at the end", kV4 + kKey + "@=hex:01,\n\"y\"=\"z\"\n", 3, "1 or 2"},
        Malformed{"two commas", kV4 + kKey + "@=hex:01,,02\n", 3, "1 or 2"},
        Malformed{"no comma", kV4 + kKey + "@=hex:01 02\n", 3, "unexpected text"},
        Malformed{"bad byte, on its own line", kV4 + kKey + "@=hex:01,\\\n  02,\\\n  zz\n", 5, "1 or 2"},
        Malformed{"continued into nothing", kV4 + kKey + "@=hex:01,\\\n", 4, "1 or 2"},
        Malformed{"file ends behind the backslash", kV4 + kKey + "@=hex:01,\\", 3, "file ends"},
        Malformed{"backslash inside the line", kV4 + kKey + "@=hex:01,\\02\n", 3, "backslash before the end"},
        Malformed{"type missing", kV4 + kKey + "@=hex():01\n", 3, "type of 1 to 8"},
        Malformed{"type never closed", kV4 + kKey + "@=hex(7:01\n", 3, "\"):\" expected"},
        Malformed{"type of 9 digits", kV4 + kKey + "@=hex(123456789):01\n", 3, "type of 1 to 8"},
        Malformed{"UTF-16 text of 3 bytes", kV5 + kKey + "@=hex(2):41,00,\\\n  00\n", 3, "odd number"},
        Malformed{"UTF-16 text outside the code page", kV5 + kKey + "@=hex(7):16,04,00,00\n", 3,
                  "U+0416 is not"}));

// ---- Values, each as the one value of a key

struct Accepted {
  const char* what;
  std::string file;
  DWORD type;
  std::string bytes;
  std::string name{};
};

void PrintTo(const Accepted& accepted, std::ostream* out) { *out << accepted.what; }

class AcceptedValue : public ::testing::TestWithParam<Accepted> {};

TEST_P(AcceptedValue, HasItsNameTypeAndBytes) {
  const RegDocument document = ReadRegFile(GetParam().file);
  ASSERT_EQ(document.size(), 1u);
  ASSERT_EQ(document[0].values.size(), 1u);
  const RegValueChange& value = document[0].values[0];
  EXPECT_EQ(value.name, GetParam().name);
  EXPECT_EQ(value.data, (RegData{GetParam().type, GetParam().bytes}));
}

INSTANTIATE_TEST_SUITE_P(
    Forms, AcceptedValue,
    ::testing::Values(
        Accepted{"empty text", kV4 + kKey + "@=\"\"", REG_SZ, "\0"s},
        Accepted{"blanks everywhere", kV4 + kKey + " \t\"n\" =\t\"x\" \t\n", REG_SZ, "x\0"s, "n"},
        Accepted{"comment behind", kV4 + kKey + "@=\"a;b\" ; \"c\"\n", REG_SZ, "a;b\0"s},
        Accepted{"escapes, an unknown one too", kV4 + kKey + R"("\"\\"="\\\"\n\r\t")", REG_SZ, "\\\"\n\rt\0"s,
                 "\"\\"},
        Accepted{"raw line breaks as they are", kV4 + kKey + "@=\"a\r\nb\nc\rd\"\n", REG_SZ,
                 "a\r\nb\nc\rd\0"s},
        Accepted{"raw line break in a name", kV4 + kKey + "\"a\nb\"=\"\"\n", REG_SZ, "\0"s, "a\nb"},
        Accepted{"dword of 1 digit", kV4 + kKey + "@=dword:a", REG_DWORD, "\x0A\0\0\0"s},
        Accepted{"dword in capitals", kV4 + kKey + "@=DWORD:89ABCDEF", REG_DWORD, "\xEF\xCD\xAB\x89"},
        Accepted{"no bytes", kV4 + kKey + "@=hex:\n", REG_BINARY, ""},
        Accepted{"bytes of 1 digit and blanks", kV4 + kKey + "@=hex:1, 2 ,ff ; three\n", REG_BINARY,
                 "\x01\x02\xFF"},
        Accepted{"continued lines", kV4 + kKey + "@=hex:\\\n 01,\\ \n\t02\\\n  ,03\n", REG_BINARY,
                 "\x01\x02\x03"},
        Accepted{"8 bytes under the type of a dword", kV4 + kKey + "@=hex(4):00,00,00,00,00,00,04,40",
                 REG_DWORD, "\0\0\0\0\0\0\x04\x40"s},
        Accepted{"type in hexadecimal", kV4 + kKey + "@=hex(2A):01", 0x2A, "\x01"},
        Accepted{"version 4: texts are bytes", kV4 + kKey + "@=hex(2):41,00", REG_EXPAND_SZ, "A\0"s},
        Accepted{"version 5: texts are UTF-16", kV5 + kKey + "@=hex(2):ac,20,00,00", REG_EXPAND_SZ,
                 "\x80\0"s},
        Accepted{"version 5: text without NUL", kV5 + kKey + "@=hex(1):41,00,42,00", REG_SZ, "AB"},
        Accepted{"version 5: list", kV5 + kKey + "@=hex(7):61,00,00,00,00,00", REG_MULTI_SZ, "a\0\0"s},
        Accepted{"version 5: other types are bytes", kV5 + kKey + "@=hex(0):41,00,42", REG_NONE, "A\0B"s}));

INSTANTIATE_TEST_SUITE_P(
    Encodings, AcceptedValue,
    ::testing::Values(
        Accepted{"UTF-8 with mark", "\xEF\xBB\xBF" + kV5 + kKey + "@=\"\xE2\x82\xAC\"", REG_SZ, "\x80\0"s},
        Accepted{"UTF-8", kV5 + kKey + "@=\"\xC2\x81\xC3\xA9\"", REG_SZ, "\x81\xE9\0"s},
        Accepted{"UTF-8 in version 4", kV4 + kKey + "\"\xC3\xA9\"=\"\xC3\xA9\"", REG_SZ, "\xE9\0"s, "\xE9"},
        Accepted{"1252", kV4 + kKey + "@=\"\x80\x81\xE9\"", REG_SZ, "\x80\x81\xE9\0"s},
        Accepted{"1252 in version 5", kV5 + kKey + "@=\"\xE9\"", REG_SZ, "\xE9\0"s},
        // What looks like UTF-8 but encodes "/" in two bytes, a surrogate, or a code beyond the last.
        Accepted{"overlong is 1252", kV4 + kKey + "@=\"\xC0\xAF\"", REG_SZ, "\xC0\xAF\0"s},
        Accepted{"surrogate is 1252", kV4 + kKey + "@=\"\xED\xA0\x80\"", REG_SZ, "\xED\xA0\x80\0"s},
        Accepted{"beyond the last is 1252", kV4 + kKey + "@=\"\xF4\x90\x80\x80\"", REG_SZ,
                 "\xF4\x90\x80\x80\0"s},
        Accepted{"cut short is 1252", kV4 + kKey + "@=\"x\" ;\xE2\x82", REG_SZ, "x\0"s}));

// ---- Whole files

const std::string kWhole =
    "Windows Registry Editor Version 5.00 \n"
    "; comment\n"
    "\n"
    "[HKEY_LOCAL_MACHINE\\SOFTWARE\\A]B] ; comment\n"
    "@=\"d\"\n"
    "\t; comment\n"
    "\"x\"=dword:00000001\n"
    "\"x\"=-\n"
    "[-hkey_classes_root\\Gone]\n"
    "  [HKEY_LOCAL_MACHINE]";

TEST(RegReader, KeepsTheOrderOfKeysAndValuesInEveryEncodingAndLineEnd) {
  const RegDocument expected{
      {{HKEY_LOCAL_MACHINE, "SOFTWARE\\A]B"},
       false,
       {{"", RegData{REG_SZ, "d\0"s}}, {"x", RegData{REG_DWORD, "\x01\0\0\0"s}}, {"x", std::nullopt}}},
      {{HKEY_CLASSES_ROOT, "Gone"}, true, {}},
      {{HKEY_LOCAL_MACHINE, ""}, false, {}}};
  for (const char* line_end : {"\n", "\r\n", "\r"}) {
    const std::string text = WithLineEnds(kWhole, line_end);
    for (const std::string& file : {text, "\xEF\xBB\xBF" + text, Utf16(text, false), Utf16(text, true)}) {
      EXPECT_EQ(ReadRegFile(file), expected) << ::testing::PrintToString(file);
    }
  }
}

TEST(RegReader, CountsEveryKindOfLineEndOnce) {
  for (const char* line_end : {"\n", "\r\n", "\r"}) {
    try {
      ReadRegFile(WithLineEnds(kWhole + "\n\n\n?", line_end));
      FAIL();
    } catch (const RegSyntaxError& error) {
      EXPECT_EQ(error.line(), 13u);
    }
  }
}

TEST(RegReader, RefusesOrReadsEveryCutAndEveryChangedByteOfAFile) {
  for (size_t at = 0; at < kWhole.size(); ++at) {
    std::string changed = kWhole;
    for (const char c : {'\0', '"', '\\', ']', '[', '\n', '\xE9'}) {
      changed[at] = c;
      for (const std::string& file : {kWhole.substr(0, at), changed, Utf16(kWhole, false).substr(0, at)}) {
        try {
          ReadRegFile(file);
        } catch (const RegSyntaxError& error) {
          EXPECT_GE(error.line(), 1u);
          EXPECT_LE(error.line(), 12u);
        }
      }
    }
  }
}

}  // namespace
}  // namespace moxel::tool
