// Values on their way from and to the registry: what is stored, what is read, which handles stay open.
#include <bit>
#include <cmath>
#include <limits>

#include "registry/settings.h"
#include "registry/store.h"
#include "tests/registry/store_test.h"
#include "tests/support/raised_error.h"

namespace moxel::test {
namespace {

class Values : public StoreTest {};

std::string Repeated(std::size_t count) { return std::string(count, 'x'); }

TEST_F(Values, ReadByTypeAndSize) {
  const struct {
    const char* story;
    DWORD type;
    std::string bytes;
    std::string read;
  } cases[] = {
      {"text", REG_SZ, "abc\0"s, "\"abc\""},
      {"text without a byte", REG_SZ, "", "\"\""},
      {"empty text", REG_SZ, "\0"s, "\"\""},
      {"inner NUL", REG_SZ, "a\0b\0"s, "\"a\0b\""s},
      {"only one terminator is dropped", REG_SZ, "a\0\0"s, "\"a\0\""s},
      {"all codes above ASCII", REG_SZ, "\x80\x81\x9D\xE9\xFF\0"s, "\"\x80\x81\x9D\xE9\xFF\""},
      {"the longest text", REG_SZ, Repeated(2046) + '\0', '"' + Repeated(2046) + '"'},
      {"one byte too long", REG_SZ, Repeated(2047) + '\0', "\"\""},
      {"number", REG_DWORD, "\x10\x27\0\0"s, "10000"},
      {"negative number", REG_DWORD, "\xFE\xFF\xFF\xFF"s, "-2"},
      {"number without a byte", REG_DWORD, "", "\"\""},
      {"number of one byte", REG_DWORD, "\xFF"s, "255"},
      {"number of three bytes", REG_DWORD, "\x01\x02\x03"s, "197121"},
      {"number of eight bytes", REG_DWORD, "\x05\0\0\0\x09\0\0\0"s, "5"},
      {"number of 2047 bytes", REG_DWORD, "\x05\0\0\0"s + Repeated(2043), "5"},
      {"number of 2048 bytes", REG_DWORD, "\x05\0\0\0"s + Repeated(2044), "\"\""},
      {"other type", REG_BINARY, "\x01"s, "\"\""},
      {"other type of text", REG_EXPAND_SZ, "abc\0"s, "\"\""},
      {"other type without a byte", REG_BINARY, "", "empty"},
      {"no type, no byte", REG_NONE, "", "empty"},
  };
  for (const auto& c : cases) {
    Put("K\\L", "v", c.type, c.bytes);
    std::int32_t type = 77;
    EXPECT_EQ(Shown(RegReadValue(u"k\\l", u"V", &type)), c.read) << c.story;
    EXPECT_EQ(type, static_cast<std::int32_t>(c.type)) << c.story;
    EXPECT_EQ(Shown(RegReadValue(u"K\\L", u"v")), c.read) << c.story;
  }
}

TEST_F(Values, ReadAsTheEmptyTextWhereThereIsNone) {
  Put("K", "v", REG_DWORD, "\x01\0\0\0"s);
  for (const char16_t* path : {u"K", u"Missing", u"K\\Missing", u""}) {
    std::int32_t type = 77;
    EXPECT_EQ(Shown(RegReadValue(path, u"w", &type)), "\"\"");
    EXPECT_EQ(type, 0);
  }
}

TEST_F(Values, TextsAreStoredWithOneTerminator) {
  const struct {
    std::u16string text;
    std::string bytes;
  } cases[] = {
      {u"abc", "abc\0"s},
      {u"", "\0"s},
      {u"déjà 5 €", "d\xE9j\xE0 5 \x80\0"s},
      {u"Ω or ?", "? or ?\0"s},
      {std::u16string(u"a\0b", 3), "a\0b\0"s},
      {std::u16string(u"a\0", 2), "a\0"s},
      {u"12", "12\0"s},
      {std::u16string(3000, u'x'), Repeated(3000) + '\0'},
  };
  Put("K", "v", REG_DWORD, "\x01\0\0\0"s);
  for (const auto& c : cases) {
    EXPECT_EQ(RegWriteValue(u"K", u"v", REG_SZ, c.text), VARIANT_TRUE);
    EXPECT_EQ(Find("K", "v"), Stored(REG_SZ, c.bytes));
  }
}

TEST_F(Values, NumbersAreRoundedToTheNearestTiesToEven) {
  constexpr std::int32_t kLargest = std::numeric_limits<std::int32_t>::max();
  constexpr std::int32_t kSmallest = std::numeric_limits<std::int32_t>::min();
  const struct {
    const char16_t* text;
    std::int32_t number;
  } cases[] = {{u"12", 12},
               {u" -5 ", -5},
               {u"2.5", 2},
               {u"3.5", 4},
               {u"-2.5", -2},
               {u"0.51", 1},
               {u"1e3", 1000},
               {u"2147483647.4", kLargest},
               {u"-2147483648", kSmallest}};
  for (const auto& c : cases) {
    EXPECT_EQ(RegWriteValue(u"K", u"v", REG_DWORD, c.text), VARIANT_TRUE);
    EXPECT_EQ(Find("K", "v"), Stored(REG_DWORD, {reinterpret_cast<const char*>(&c.number), 4}));
  }
}

TEST_F(Values, ATextThatIsNoNumberCreatesThePathAlone) {
  const struct {
    const char16_t* text;
    std::int32_t error;
  } cases[] = {{u"", 13},     {u" ", 13},         {u"abc", 13},         {u"12x", 13},
               {u"True", 13}, {u"2147483648", 6}, {u"2147483647.5", 6}, {u"-2147483649", 6}};
  Put("Old", "v", REG_SZ, "kept\0"s);
  for (const auto& c : cases) {
    std::u16string path = std::u16string(u"New\\") + (*c.text ? c.text : u"none");
    auto write_to = [&](std::u16string_view key) {
      return NumberRaisedBy([&] { RegWriteValue(key, u"v", REG_DWORD, c.text); });
    };
    EXPECT_EQ(write_to(path), c.error) << ToAnsi(c.text);
    EXPECT_TRUE(Exists(ToAnsi(path)));
    EXPECT_EQ(Find(ToAnsi(path), "v"), std::nullopt);
    EXPECT_EQ(write_to(u"Old"), c.error);
  }
  EXPECT_EQ(Find("Old", "v"), Stored(REG_SZ, "kept\0"s));
}

TEST_F(Values, OfAnotherTypeAreNotWrittenButTheirPathIs) {
  for (DWORD type : {REG_NONE, REG_BINARY, REG_QWORD})
    EXPECT_EQ(RegWriteValue(u"A\\B", u"v", type, u"12"), VARIANT_TRUE);
  EXPECT_TRUE(Exists("A\\B"));
  EXPECT_EQ(NamesOf(OpenKey("A\\B"), ValueName), std::vector<std::string>{});
}

TEST_F(Values, WritingToAKeyThatCannotBeCreatedIsFalse) {
  const std::u16string overlong(256, u'x');
  for (DWORD type : {REG_SZ, REG_BINARY, REG_DWORD})
    EXPECT_EQ(RegWriteValue(overlong, u"v", type, u"1"), VARIANT_FALSE);
  EXPECT_EQ(RegWriteRawValue(overlong, u"v", 1), VARIANT_FALSE);
}

TEST_F(Values, RawDoublesAreEightBytesUnderTheTypeOfANumber) {
  EXPECT_EQ(RegWriteRawValue(u"A\\B", u"v", 2.5), VARIANT_TRUE);
  EXPECT_EQ(Find("A\\B", "v"), Stored(REG_DWORD, "\0\0\0\0\0\0\x04\x40"s));
  for (double value : {0.1, -0.0, 1e300, std::numeric_limits<double>::denorm_min(),
                       std::numeric_limits<double>::infinity(), std::nan("")}) {
    RegWriteRawValue(u"A\\B", u"v", value);
    EXPECT_EQ(std::bit_cast<std::uint64_t>(RegReadRawValue(u"A\\B", u"v")),
              std::bit_cast<std::uint64_t>(value));
  }
}

TEST_F(Values, RawDoublesAreReadFromDataOfAnySizeAndType) {
  const std::string stored = "\0\0\0\0\0\0\x04\x40"s;
  const struct {
    DWORD type;
    std::string bytes;
    double read;
  } cases[] = {
      {REG_DWORD, stored, 2.5},
      {REG_BINARY, stored, 2.5},
      {REG_DWORD, stored + "more", 2.5},
      {REG_DWORD, stored + Repeated(4992), 2.5},
      {REG_DWORD, stored + Repeated(4993), 0.0},
      {REG_DWORD, "", 0.0},
      {REG_DWORD, "\x05\0\0\0"s, std::bit_cast<double>(std::uint64_t{5})},
      {REG_DWORD, "\0\0\0\0\0\0\x04"s, std::bit_cast<double>(std::uint64_t{0x04} << 48)},
      {REG_SZ, "\0"s, 0.0},
  };
  for (const auto& c : cases) {
    Put("K", "v", c.type, c.bytes);
    EXPECT_EQ(RegReadRawValue(u"K", u"v"), c.read) << c.bytes.size();
  }
  EXPECT_EQ(RegReadRawValue(u"K", u"missing"), 0.0);
  EXPECT_EQ(RegReadRawValue(u"Missing", u"v"), 0.0);
}

TEST_F(Values, OnlyRawCallsPutTheBackslashAfterTheRoot) {
  Settings().RootPath = u"SOFTWARE\\MOXEL";
  RegWriteRawValue(u"K", u"raw", 2.5);
  RegWriteValue(u"K", u"text", REG_SZ, u"abc");
  EXPECT_EQ(RegReadRawValue(u"K", u"raw"), 2.5);
  EXPECT_TRUE(Find("K", "raw"));
  EXPECT_FALSE(Find("K", "text"));
  EXPECT_EQ(Get(Open(HKEY_LOCAL_MACHINE, "SOFTWARE\\MOXELK"), "text"), "abc\0"s);
}

class Handles : public StoreTest {
 protected:
  // How many of the handles that a call opened are still open after it. Handles are numbered upwards.
  template <class Call>
  static int LeftOpenBy(Call&& call) {
    Key before = CreateKey("");
    call();
    Key after = CreateKey("");
    int open = 0;
    for (HKEY handle = before + 1; handle < after; ++handle) open += RegCloseKey(handle) == ERROR_SUCCESS;
    return open;
  }
};

TEST_F(Handles, StayOpenOnlyWhereTheyAreMeantTo) {
  CreateKey("Tree\\A\\B");
  CreateKey("Single");
  Put("K", "v", REG_SZ, "abc\0"s);
  auto write_number = [](const char16_t* text) {
    return [text] { NumberRaisedBy([&] { RegWriteValue(u"K", u"n", REG_DWORD, text); }); };
  };
  EXPECT_EQ(LeftOpenBy(write_number(u"12")), 0);
  EXPECT_EQ(LeftOpenBy(write_number(u"abc")), 1);
  EXPECT_EQ(LeftOpenBy(write_number(u"1e10")), 1);
  EXPECT_EQ(LeftOpenBy([] { RegWriteValue(u"K", u"w", REG_SZ, u"text"); }), 0);
  EXPECT_EQ(LeftOpenBy([] { RegWriteValue(u"K", u"w", REG_BINARY, u"text"); }), 0);
  EXPECT_EQ(LeftOpenBy([] { RegReadValue(u"K", u"v"); }), 0);
  EXPECT_EQ(LeftOpenBy([] { RegReadValue(u"K", u"missing"); }), 0);
  EXPECT_EQ(LeftOpenBy([] { RegWriteRawValue(u"K", u"r", 2.5); }), 0);
  EXPECT_EQ(LeftOpenBy([] { RegReadRawValue(u"K", u"r"); }), 0);
  EXPECT_EQ(LeftOpenBy([] { RegDeleteKeyPath(u"", u"Tree"); }), 1) << "a subkey that has subkeys";
  EXPECT_EQ(LeftOpenBy([] { RegDeleteKeyPath(u"", u"Single"); }), 1);
  EXPECT_EQ(LeftOpenBy([] { RegDeleteKeyPath(u"Missing", u"Single"); }), 0);
  EXPECT_EQ(LeftOpenBy([] { RegDeleteKeyTree(u"", u"Tree"); }), 0);
  EXPECT_EQ(LeftOpenBy([] { RegDeleteKeyTree(u"", u"Tree"); }), 0) << "gone by now";
}

}  // namespace
}  // namespace moxel::test
