#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "moxel/platform.h"

namespace {

std::u16string_view View(BSTR text) { return {text, SysStringLen(text)}; }

TEST(Bstr, LayoutIsByteCountTextAndNul) {
  BSTR text = SysAllocString(u"caf\xE9");
  UINT count = 0;
  std::memcpy(&count, reinterpret_cast<char*>(text) - 4, 4);
  EXPECT_EQ(count, 8u);
  EXPECT_EQ(SysStringByteLen(text), 8u);
  EXPECT_EQ(std::u16string(text), u"caf\xE9");
  SysFreeString(text);
}

TEST(Bstr, NullIsTheEmptyText) {
  EXPECT_EQ(SysStringLen(nullptr), 0u);
  EXPECT_EQ(SysStringByteLen(nullptr), 0u);
  EXPECT_EQ(SysAllocString(nullptr), nullptr);
  SysFreeString(nullptr);
}

TEST(Bstr, CountedTexts) {
  using namespace std::string_view_literals;
  BSTR inner = SysAllocStringLen(u"a\0b|", 3);
  EXPECT_EQ(View(inner), u"a\0b"sv);
  EXPECT_EQ(inner[3], u'\0');
  SysFreeString(inner);

  BSTR empty = SysAllocStringLen(u"abc", 0);
  ASSERT_NE(empty, nullptr);
  EXPECT_EQ(SysStringLen(empty), 0u);
  EXPECT_EQ(*empty, u'\0');
  SysFreeString(empty);

  BSTR room = SysAllocStringLen(nullptr, 3);
  EXPECT_EQ(View(room), u"\0\0\0"sv);
  SysFreeString(room);

  BSTR odd = SysAllocStringByteLen("abc", 3);
  EXPECT_EQ(SysStringByteLen(odd), 3u);
  EXPECT_EQ(SysStringLen(odd), 1u);
  EXPECT_EQ(std::memcmp(odd, "abc\0\0", 5), 0);
  SysFreeString(odd);
}

TEST(Bstr, LengthsBeyondTheCountAreRefused) {
  for (const UINT length : {0x80000000u, 0x7FFFFFFFu, 0xFFFFFFFFu}) {
    EXPECT_EQ(SysAllocStringLen(nullptr, length), nullptr) << length;
  }
  EXPECT_EQ(SysAllocStringByteLen(nullptr, 0xFFFFFFFFu), nullptr);
}

}  // namespace
