#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "moxel/platform.h"

namespace {

using namespace std::string_literals;

TEST(Bstr, LayoutIsByteCountTextAndNul) {
  const struct {
    BSTR text;
    std::string bytes;
  } cases[] = {
      {SysAllocString(u"caf\xE9"), "c\0a\0f\0\xE9\0"s},
      {SysAllocStringLen(u"a\0b|", 3), "a\0\0\0b\0"s},
      {SysAllocStringLen(u"abc", 0), ""s},
      {SysAllocStringLen(nullptr, 3), "\0\0\0\0\0\0"s},
      {SysAllocStringByteLen("abc", 3), "abc"s},
  };
  for (const auto& [text, bytes] : cases) {
    ASSERT_NE(text, nullptr);
    const char* start = reinterpret_cast<char*>(text);
    const UINT count = SysStringByteLen(text);
    EXPECT_TRUE(count == bytes.size() && SysStringLen(text) == count / 2);
    EXPECT_EQ(std::memcmp(start - 4, &count, 4), 0);
    EXPECT_EQ(std::string(start, bytes.size() + 2), bytes + "\0\0"s);
    SysFreeString(text);
  }
}

TEST(Bstr, NullIsTheEmptyTextAndHugeLengthsAreRefused) {
  EXPECT_EQ(SysStringLen(nullptr) + SysStringByteLen(nullptr), 0u);
  EXPECT_EQ(SysAllocString(nullptr), nullptr);
  SysFreeString(nullptr);
  for (const UINT length : {1u << 31, ~0u >> 1, ~0u}) EXPECT_EQ(SysAllocStringLen(nullptr, length), nullptr);
  EXPECT_EQ(SysAllocStringByteLen(nullptr, 0xFFFFFFFFu), nullptr);
}

}  // namespace
