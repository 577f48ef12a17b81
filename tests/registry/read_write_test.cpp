// Values on their way from and to the registry: what is stored, what is read, which handles stay open.
#include <bit>
#include <cmath>
#include <functional>

#include "registry/settings.h"
#include "registry/store.h"
#include "tests/registry/store_test.h"
#include "tests/support/raised_error.h"

namespace moxel::test {
namespace {

class Values : public StoreTest {};

TEST_F(Values, ReadByTypeAndSize) {
  using Case = std::tuple<DWORD, std::string, std::string>;
  const auto cases =
      Cases(Case(1, "abc\0"s, "'abc'"), Case(1, "", "''"), Case(1, "a\0b\0\0"s, "'a\0b\0'"s),
            Case(1, "\x80\x81\x9D\xE9\xFF\0"s, "'\x80\x81\x9D\xE9\xFF'"),
            Case(1, Long(2046), "'" + Long(2046) + "'"), Case(1, Long(2047), "''"),
            Case(4, "\x10\x27\0\0"s, "10000"), Case(4, "\xFE\xFF\xFF\xFF", "-2"), Case(4, "", "''"),
            Case(4, "\x01\x02\x83", "8585729"), Case(4, "\x05\0\0\0"s + Long(2043), "5"),
            Case(4, Long(2048), "''"), Case(3, "\x01", "''"), Case(0, "", "empty"));
  for (const auto& [type, bytes, read] : cases) {
    Put("K\\L", "v", type, bytes);
    std::int32_t found_type = 77;
    EXPECT_EQ(Shown(RegReadValue(u"k\\l", u"V", &found_type)), read);
    EXPECT_EQ(found_type, static_cast<std::int32_t>(type)) << read;
  }
  std::int32_t type = 77;
  EXPECT_EQ(Shown(RegReadValue(u"K\\L", u"missing", &type)), "''");
  EXPECT_EQ(type, 0);
}

TEST_F(Values, AreStoredByTypeOrCreateThePathAlone) {
  using Case = std::tuple<DWORD, std::u16string, std::int32_t, std::string>;
  const auto cases =
      Cases(Case(REG_SZ, u"déjà 5 € Ω", 0, "d\xE9j\xE0 5 \x80 ?\0"s), Case(REG_SZ, u"", 0, "\0"s),
            Case(REG_SZ, u"a\0b"s, 0, "a\0b\0"s), Case(REG_SZ, u"a\0"s, 0, "a\0"s),
            Case(REG_SZ, std::u16string(3000, u'x'), 0, Long(3000) + '\0'),
            Case(REG_DWORD, u" -2.5 ", 0, "\xFE\xFF\xFF\xFF"),
            Case(REG_DWORD, u"2147483647.4", 0, "\xFF\xFF\xFF\x7F"), Case(REG_DWORD, u"", 13, ""),
            Case(REG_DWORD, u"12x", 13, ""), Case(REG_DWORD, u"2147483647.5", 6, ""),
            Case(REG_NONE, u"12", 0, ""), Case(REG_BINARY, u"12", 0, ""));
  std::u16string path = u"New\\";
  for (const auto& [type, text, error, bytes] : cases) {
    const auto stored = bytes.empty() ? std::nullopt : std::optional(Stored{type, bytes});
    const std::optional<Stored> old = Find("Old", "v");
    for (const std::u16string& key : {path += u'x', u"Old"s})
      EXPECT_EQ(NumberRaisedBy([&] { EXPECT_EQ(RegWriteValue(key, u"v", type, text), -1); }), error) << bytes;
    EXPECT_TRUE(Exists(ToAnsi(path)));
    EXPECT_EQ(Find(ToAnsi(path), "v"), stored);
    EXPECT_EQ(Find("Old", "v"), stored ? stored : old);
  }
  const std::u16string overlong(256, u'x');
  for (DWORD type : {REG_SZ, REG_BINARY, REG_DWORD}) EXPECT_EQ(RegWriteValue(overlong, u"v", type, u"1"), 0);
  EXPECT_EQ(RegWriteRawValue(overlong, u"v", 1), VARIANT_FALSE);
}

TEST_F(Values, RawDoublesAreEightBytesUnderTheTypeOfANumberAndReadFromAnyData) {
  for (double value : {2.5, -0.0, 5e-324, HUGE_VAL, std::nan("")}) {
    const auto bits = std::bit_cast<std::uint64_t>(value);
    EXPECT_EQ(RegWriteRawValue(u"A\\B", u"v", value), VARIANT_TRUE);
    EXPECT_EQ(Find("A\\B", "v"), StoredReal(value));
    EXPECT_EQ(std::bit_cast<std::uint64_t>(RegReadRawValue(u"A\\B", u"v")), bits);
  }
  const std::string stored = "\0\0\0\0\0\0\x04\x40"s;
  using Case = std::tuple<DWORD, std::string, double>;
  const auto cases =
      Cases(Case(REG_BINARY, stored, 2.5), Case(REG_DWORD, stored + Long(4992), 2.5),
            Case(REG_DWORD, stored + Long(4993), 0.0), Case(REG_DWORD, "", 0.0),
            Case(REG_DWORD, "\0\0\0\0\0\0\x04"s, std::bit_cast<double>(std::uint64_t{0x04} << 48)));
  for (const auto& [type, bytes, read] : cases) {
    Put("K", "v", type, bytes);
    EXPECT_EQ(RegReadRawValue(u"K", u"v"), read) << bytes.size();
  }
  EXPECT_EQ(RegReadRawValue(u"Missing", u"v"), 0.0);
}

TEST_F(Values, OnlyRawCallsPutTheBackslashAfterTheRoot) {
  Settings().RootPath = u"SOFTWARE\\MOXEL";
  RegWriteRawValue(u"K", u"raw", 2.5);
  RegWriteValue(u"K", u"text", REG_SZ, u"abc");
  EXPECT_EQ(RegReadRawValue(u"K", u"raw"), 2.5);
  EXPECT_TRUE(Find("K", "raw"));
  EXPECT_EQ(Get(Open(HKEY_LOCAL_MACHINE, "SOFTWARE\\MOXELK"), "text"), "abc\0"s);
}

// How many of the handles that a call opened are still open after it. Handles are numbered upwards.
TEST_F(Values, HandlesStayOpenOnlyWhereTheyAreMeantTo) {
  CreateKey("Tree\\A\\B");
  const std::pair<int, std::function<void()>> cases[] = {
      {1, [] { NumberRaisedBy([] { RegWriteValue(u"K", u"n", REG_DWORD, u"abc"); }); }},
      {0, [] { RegWriteValue(u"K", u"n", REG_DWORD, u"12"), RegWriteValue(u"K", u"w", REG_SZ, u"text"); }},
      {0, [] { RegReadValue(u"K", u"w"), RegReadValue(u"K", u"missing"); }},
      {0, [] { RegWriteRawValue(u"K", u"r", 2.5), RegReadRawValue(u"K", u"r"); }},
      {2, [] { RegDeleteKeyPath(u"", u"Tree"), RegDeleteKeyPath(u"", u"K"); }},
      {0, [] { RegDeleteKeyTree(u"", u"Tree"); }}};
  for (const auto& [left_open, call] : cases) {
    const Key before = CreateKey("");
    call();
    const Key after = CreateKey("");
    int open = 0;
    for (HKEY handle = before + 1; handle < after; ++handle) open += RegCloseKey(handle) == ERROR_SUCCESS;
    EXPECT_EQ(open, left_open) << "case " << &left_open - &cases->first;
  }
}

}  // namespace
}  // namespace moxel::test
