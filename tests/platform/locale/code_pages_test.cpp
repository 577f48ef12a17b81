#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "moxel/platform.h"

namespace {

using namespace std::string_literals;

std::u16string Decode(UINT page, const std::string& bytes) {
  const auto length = static_cast<INT>(bytes.size());
  const INT size = MultiByteToWideChar(page, 0, bytes.data(), length, nullptr, 0);
  std::u16string text(static_cast<std::size_t>(size), u'#');
  EXPECT_EQ(MultiByteToWideChar(page, 0, bytes.data(), length, text.data(), size), size);
  return text;
}

std::string Encode(UINT page, const std::u16string& text, bool replaces) {
  const auto length = static_cast<INT>(text.size());
  const INT size = WideCharToMultiByte(page, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
  std::string bytes(static_cast<std::size_t>(size), '#');
  BOOL used = !replaces;
  EXPECT_EQ(WideCharToMultiByte(page, 0, text.data(), length, bytes.data(), size, nullptr, &used), size);
  EXPECT_EQ(used != 0, replaces) << bytes;
  return bytes;
}

TEST(CodePages, Ansi) {
  std::string all;
  for (int code = 0; code < 256; ++code) all += static_cast<char>(code);
  for (const UINT page : {CP_ACP, UINT{1252}}) {
    const std::u16string text = Decode(page, all);
    ASSERT_EQ(text.size(), 256u);
    EXPECT_EQ(
        text.substr(0x80, 32),
        u"\u20AC\x81\u201A\u0192\u201E\u2026\u2020\u2021\u02C6\u2030\u0160\u2039\u0152\x8D\u017D\x8F"
        u"\x90\u2018\u2019\u201C\u201D\u2022\u2013\u2014\u02DC\u2122\u0161\u203A\u0153\x9D\u017E\u0178");
    EXPECT_TRUE(text[0x41] == u'A' && text[0xE9] == u'\xE9');
    EXPECT_EQ(Encode(page, text, false), all);
  }
  EXPECT_EQ(Encode(CP_ACP, u"a\u0416\x80\x9F b", true), "a??? b");
  char byte = 0;
  EXPECT_TRUE(WideCharToMultiByte(CP_ACP, 0, u"\u0416", 1, &byte, 1, "_", nullptr) == 1 && byte == '_');
}

TEST(CodePages, Utf8) {
  const std::pair<std::string, std::u16string> valid[] = {
      {"plain ASCII, longer than a block\xC3\xA9", u"plain ASCII, longer than a block\xE9"},
      {"1234567\xC3\xA9\xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF", u"1234567\xE9\x80\x7FF\x800\xFFFF"},
      {"\xF0\x90\x80\x80 \xF4\x8F\xBF\xBF a\0b"s, u"\U00010000 \U0010FFFF a\0b"s},
  };
  for (const auto& [bytes, text] : valid) {
    EXPECT_EQ(Decode(CP_UTF8, bytes), text);
    EXPECT_EQ(Encode(CP_UTF8, text, false), bytes);
  }
  // No lead bytes and overlong; surrogates and beyond the last code; cut short.
  const std::pair<std::string, std::u16string> broken[] = {
      {"\x80|\xFF|\xFE|\xC0\x80|\xC1\xBF", u"\xFFFD|\xFFFD|\xFFFD|\xFFFD\xFFFD|\xFFFD\xFFFD"},
      {"\xE0\x9F\xBF|\xED\xA0\x80|", u"\xFFFD\xFFFD\xFFFD|\xFFFD\xFFFD\xFFFD|"},
      {"\xF4\x90\x80\x80|\xE2\x82|\xF0\x9F\x98", u"\xFFFD\xFFFD\xFFFD\xFFFD|\xFFFD|\xFFFD"},
      {"\xF0\x9F\x98|\xE2\x82\xAC|\xC3", u"\xFFFD|\u20AC|\xFFFD"},
  };
  for (const auto& [bytes, text] : broken) EXPECT_EQ(Decode(CP_UTF8, bytes), text) << bytes;
  const std::u16string lone = {0xD800, u'|', 0xDC00, 0xDC00, 0xD800};
  EXPECT_EQ(Encode(CP_UTF8, lone, true), "\xEF\xBF\xBD|\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD");
}

TEST(CodePages, LengthsAndRefusals) {
  char16_t wide[4] = {};
  char bytes[4] = {};
  EXPECT_EQ(MultiByteToWideChar(CP_ACP, 0, "abc", -1, wide, 4), 4);
  EXPECT_EQ(wide[3], u'\0');
  EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0, "abc", -1, nullptr, 0), 4);
  EXPECT_EQ(MultiByteToWideChar(CP_ACP, 0, "abc", -1, wide, 3), 0);
  EXPECT_EQ(WideCharToMultiByte(CP_UTF8, 0, u"\u20AC", -1, bytes, 4, nullptr, nullptr), 4);
  EXPECT_EQ(WideCharToMultiByte(CP_UTF8, 0, u"\u20AC", -1, bytes, 3, nullptr, nullptr), 0);
  for (const INT length : {0, -2}) {
    EXPECT_EQ(MultiByteToWideChar(CP_ACP, 0, "abc", length, wide, 4), 0);
    EXPECT_EQ(WideCharToMultiByte(CP_ACP, 0, u"abc", length, bytes, 4, nullptr, nullptr), 0);
  }
  EXPECT_EQ(MultiByteToWideChar(CP_ACP, 0, nullptr, 3, wide, 4), 0);
  EXPECT_EQ(MultiByteToWideChar(CP_ACP, 0, "abc", 3, wide, -1), 0);
  EXPECT_EQ(MultiByteToWideChar(850, 0, "abc", 3, wide, 4), 0);
  EXPECT_EQ(WideCharToMultiByte(850, 0, u"abc", 3, bytes, 4, nullptr, nullptr), 0);
}

}  // namespace
