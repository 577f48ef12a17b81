// Passwords: what is stored in their place and what comes back.
#include "registry/scrambling.h"

#include "registry/store.h"
#include "tests/registry/store_test.h"
#include "tests/support/raised_error.h"

namespace moxel::test {
namespace {

class Scrambling : public StoreTest {
 protected:
  static Variant Scrambled(Variant value) {
    ScrambleText(value);
    return value;
  }

  // A password stored, read and unscrambled.
  static std::string Restored(const std::string& password) {
    RegWriteValue(u"User\\one", u"Password", REG_SZ, Scrambled(FromAnsi(password)).ToText());
    Variant read = RegReadValue(u"User\\one", u"Password");
    UnscrambleText(read);
    return Shown(read);
  }
};

TEST_F(Scrambling, GivesTheComplementOfTheTextOfAnyValue) {
  const struct {
    Variant value;
    std::string scrambled;
  } cases[] = {
      {u"abc", "\x9E\x9D\x9C"},
      {u"A a0", "\xBE\xDF\x9E\xCF"},
      {u"é€", "\x16\x7F"},
      {std::int32_t{123}, "\xCE\xCD\xCC"},
      {std::int16_t{-1}, "\xD2\xCE"},
      {2.5, "\xCD\xD1\xCA"},
      {true, "\xAB\x8D\x8A\x9A"},
      {u"", ""},
      {Variant(), ""},
  };
  for (const auto& c : cases) {
    Variant value = c.value;
    ScrambleText(value);
    EXPECT_EQ(Shown(value), '"' + c.scrambled + '"');
    UnscrambleText(value);
    EXPECT_EQ(value.text(), c.value.ToText());
    Variant other_way = c.value;
    UnscrambleText(other_way);
    EXPECT_EQ(Shown(other_way), '"' + c.scrambled + '"');
  }
}

TEST_F(Scrambling, EveryCodeSurvivesTheRegistryButATrailing255) {
  for (int code = 0; code < 256; ++code) {
    const std::string password = "p"s + static_cast<char>(code);
    EXPECT_EQ(Restored(password), '"' + password.substr(0, code == 255 ? 1 : 2) + '"') << code;
    EXPECT_EQ(Restored(password + 'q'), '"' + password + "q\"") << code;
  }
  EXPECT_EQ(Restored("\xFF"), "\"\"");
  EXPECT_EQ(Restored(""), "\"\"");
  EXPECT_EQ(Find("User\\one", "Password"), Stored(REG_SZ, "\0"s));
}

TEST_F(Scrambling, AFailureLeavesTheEmptyText) {
  const struct {
    Variant value;
    std::int32_t error;
  } cases[] = {
      {Variant::Null(), 94},
      {std::u16string(32768, u'x'), 6},
      {Variant::Missing(), 13},
  };
  for (const auto& c : cases) {
    for (auto* scramble : {&ScrambleText, &UnscrambleText}) {
      Variant value = c.value;
      EXPECT_EQ(NumberRaisedBy([&] { scramble(value); }), c.error);
      EXPECT_EQ(Shown(value), "\"\"");
    }
  }
  EXPECT_EQ(Shown(Scrambled(std::u16string(32767, u'x'))), '"' + std::string(32767, '\x87') + '"');
}

}  // namespace
}  // namespace moxel::test
