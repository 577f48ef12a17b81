// Passwords: what is stored in their place and what comes back.
#include "registry/scrambling.h"

#include "registry/store.h"
#include "tests/registry/store_test.h"
#include "tests/support/raised_error.h"

namespace moxel::test {
namespace {

class Scrambling : public StoreTest {};

TEST_F(Scrambling, GivesTheComplementOfTheTextOfAnyValueAndTheEmptyTextOnAFailure) {
  using Case = std::tuple<Variant, std::int32_t, std::string>;
  const auto cases =
      Cases(Case(u"A a0", 0, "\xBE\xDF\x9E\xCF"), Case(u"é€", 0, "\x16\x7F"), Case(2.5, 0, "\xCD\xD1\xCA"),
            Case(true, 0, "\xAB\x8D\x8A\x9A"), Case(Variant(), 0, ""),
            Case(std::u16string(32767, u'x'), 0, std::string(32767, '\x87')),
            Case(std::u16string(32768, u'x'), 6, ""), Case(Variant::Null(), 94, ""),
            Case(Variant::Missing(), 13, ""));
  for (const auto& [original, error, scrambled] : cases) {
    for (auto* scramble : {&ScrambleText, &UnscrambleText}) {
      Variant value = original;
      EXPECT_EQ(NumberRaisedBy([&] { scramble(value); }), error);
      EXPECT_EQ(Shown(value), "'" + scrambled + "'");
    }
  }
}

TEST_F(Scrambling, EveryCodeSurvivesTheRegistryButATrailing255) {
  auto restored = [](const std::string& password) {
    Variant value(FromAnsi(password));
    ScrambleText(value);
    RegWriteValue(u"User\\one", u"Password", REG_SZ, value.ToText());
    value = RegReadValue(u"User\\one", u"Password");
    UnscrambleText(value);
    return Shown(value);
  };
  for (int code = 0; code < 256; ++code) {
    const std::string password = "p"s + static_cast<char>(code);
    EXPECT_EQ(restored(password), "'" + password.substr(0, code == 255 ? 1 : 2) + "'") << code;
    EXPECT_EQ(restored(password + 'q'), "'" + password + "q'") << code;
  }
}

}  // namespace
}  // namespace moxel::test
