#include "users/user.h"

#include <gtest/gtest.h>

#include "moxel/enumerations.h"
#include "registry/ansi.h"
#include "registry/store.h"
#include "tests/support/configuration.h"
#include "tests/variables/records.h"

namespace moxel::test {
namespace {

const Failure kOld{MXUserError_BadPassword, u"User:Update"};
const Failure kNew{MXUserError_EnterNewPassword, u"User:Update"};
const Failure kConfirmation{MXUserError_ConfPassword, u"User:Update"};
const Failure kPermission{MXUserError_BadPermission, u"User:Update"};

const std::u16string kTooLong(32768, u'p');
const Variant kNothing, kNull = Variant::Null(), kOmitted = Variant::Missing();

Variant Complement(const std::string& plain) { return FromAnsi(StoredPassword(plain).bytes.c_str()); }

// A user as the loaders make one: nothing is written.
ObjectPtr<User> Loaded(const std::u16string& key, const Variant& scrambled, std::int16_t permission = 0) {
  ObjectPtr<User> user = Keyed<User>(key);
  user->SetPasswordCrypted(scrambled);
  user->SetPermission(permission);
  return user;
}

std::string Fields(const User& user) {
  return Shown(Variant(user.key)) + Shown(user.PasswordCrypted()) + std::to_string(user.Permission());
}

class UserTest : public ProductTest {};

TEST_F(UserTest, ThePasswordIsShownMaskedAndPlain) {
  auto shown = [](const Variant& held) {
    ObjectPtr<User> user = Loaded(u"Ann", held);
    const std::string masked_and_plain = Shown(user->Password()) + Shown(user->PasswordDecrypted());
    EXPECT_EQ(Shown(user->PasswordCrypted()), Shown(held)) << "reading changed it";
    return masked_and_plain;
  };
  EXPECT_EQ(shown(kNothing), "''''");
  EXPECT_EQ(shown(u"\u017E\u009D\u0153"), "'***''abc'") << "codes 158, 157, 156";
  EXPECT_EQ(shown(std::int16_t{12}), "'**''\\206\\205'") << "a client may assign anything";
  EXPECT_EQ(FailureOf([&] { shown(kNull); }), Runtime(94));
  EXPECT_FALSE(Exists("User")) << "assigning a password wrote it";
}

TEST_F(UserTest, CheckComparesExactlyWithWhatTheUserHolds) {
  Configure("User\\Ann  Password=hidden:elsewhere");
  auto check = [](const Variant& held, const Variant& given) {
    const std::string before = Shown(given);
    Failure failure = FailureOf([&] { EXPECT_EQ(Loaded(u"Ann", held)->Check(given), VARIANT_TRUE); });
    EXPECT_EQ(Shown(given), before) << "the argument was scrambled in place";
    return failure;
  };
  const Variant held = Complement("Secret");
  EXPECT_EQ(check(held, u"Secret"), Failure{});
  for (const Variant& wrong : {Variant(u"secret"), Variant(u"Secret "), Variant(u"elsewhere"), held})
    EXPECT_EQ(check(held, wrong), kOld) << Shown(wrong);
  EXPECT_EQ(check(std::int16_t{206}, u"1"), kOld);
  EXPECT_EQ(check(Complement("12"), std::int16_t{12}), Failure{});
  EXPECT_EQ(check(held, kNull), Runtime(94));
  EXPECT_EQ(check(kNothing, kOmitted), Runtime(13));
  EXPECT_EQ(check(held, kTooLong), Runtime(6));
}

TEST_F(UserTest, APermissionIsAtMostOneAndLivesInMemory) {
  const Failure refused{MXUserError_BadPermission, u"User:Permission Property Let"};
  ObjectPtr<User> user = User::Create();
  user->SetPermission(1);
  user->SetPermission(-32768);
  EXPECT_EQ(FailureOf([&] { user->SetPermission(2); }), refused);
  EXPECT_EQ(user->Permission(), -32768);
  EXPECT_FALSE(Exists("User"));
}

TEST_F(UserTest, UpdateRefusesInOrderOrChangesMemoryAndRegistry) {
  const Variant held = Complement("Secret"), secret(u"Secret"), twelve(std::int16_t{12}), e(u"\u00E9");
  const struct {
    const char* story;
    Variant held;
    std::int16_t permission;
    Variant old_password, new_password, confirmation;
    Failure failure;
    std::string written = {};
  } cases[] = {
      {"permission first of all", held, 2, u"wrong", secret, u"x", kPermission},
      {"permission, no passwords", held, 2, kOmitted, kOmitted, kOmitted, kPermission},
      {"old before new", held, 1, u"secret", secret, u"x", kOld},
      {"old before null new", held, 1, u"wrong", kNull, kNull, kOld},
      {"old given scrambled", held, 1, held, u"New", u"New", kOld},
      {"new before confirmation", held, 1, secret, secret, u"x", kNew},
      {"nothing stays nothing", kNothing, 1, kNothing, u"", kNothing, kNew},
      {"letter case", held, 1, secret, u"New", u"new", kConfirmation},
      {"empty, confirmation omitted", held, 1, secret, u"", kOmitted, kConfirmation},
      {"a number is not its text", held, 1, secret, twelve, u"12", kConfirmation},
      {"confirmation null", held, 1, secret, u"New", kNull, kConfirmation},
      {"old omitted", kNothing, 1, kOmitted, u"New", u"New", Runtime(13)},
      {"new null", held, 1, secret, kNull, kNull, Runtime(94)},
      {"new too long", held, 1, secret, kTooLong, kTooLong, Runtime(6)},
      {"no new password", held, 1, u"wrong", kOmitted, u"x", {}, "AccessPerm=dword:1"},
      {"negative", held, -5, kOmitted, kOmitted, kOmitted, {}, "AccessPerm=dword:-5"},
      {"empty", held, 1, secret, u"", kNothing, {}, "Password=  AccessPerm=dword:1"},
      {"the first", kNothing, 1, u"", u"a", u"a", {}, "Password=hidden:a  AccessPerm=dword:1"},
      {"accent", held, 1, secret, e, e, {}, "Password=\x16  AccessPerm=dword:1"},
      {"a number", held, 0, secret, twelve, 12.0, {}, "Password=hidden:12  AccessPerm=dword:0"},
  };
  for (const auto& c : cases) {
    ObjectPtr<User> user = Loaded(u"Before", c.held, -1);
    user->key = u"Zo\u00EB";
    std::string fields = Fields(*user);
    auto update = [&] { user->Update(c.permission, c.old_password, c.new_password, c.confirmation); };
    EXPECT_EQ(FailureOf(update), c.failure) << c.story;
    EXPECT_EQ(ConfigurationAt("User"), Tidy(c.written.empty() ? "" : "User\nUser\\Zo\xEB  " + c.written));
    if (!c.written.empty()) {
      const std::string password = ReadRecord("User\\Zo\xEB")[0].second.bytes;
      const Variant after = c.new_password.is_missing() ? c.held : FromAnsi(password.c_str());
      fields = Fields(*Loaded(user->key, after, c.permission));
      RegDeleteKeyTree(u"", u"User");
    }
    EXPECT_EQ(Fields(*user), fields) << c.story;
  }
}

TEST_F(UserTest, ValidateWritesANewUserOnly) {
  const Failure exists{MXUserError_UserAlreadyExist, u"User:Validate"};
  const Record ann{{"AccessPerm", StoredNumber(-1)}, {"Password", StoredPassword("Secret")}};
  EXPECT_EQ(Loaded(u"Ann", Complement("Secret"), -1)->Validate(), VARIANT_TRUE);
  EXPECT_EQ(FailureOf([&] { Loaded(u"ANN", u"other")->Validate(); }), exists);
  EXPECT_EQ(ReadRecord("User\\Ann"), ann);
  EXPECT_EQ(Loaded(u"Bob", {})->Validate(), VARIANT_TRUE);
  EXPECT_EQ(ConfigurationAt("User\\Bob"), "User\\Bob  AccessPerm=dword:0  Password=\n");
}

TEST_F(UserTest, WritesThatFailAreNotNoticed) {
  ::setenv("MOXEL_REGISTRY", (folder() / "no such folder" / "registry.db").c_str(), 1);
  ObjectPtr<User> user = Loaded(u"Ann", Complement("Old"));
  EXPECT_EQ(user->Update(1, u"Old", u"New", u"New"), VARIANT_TRUE);
  EXPECT_EQ(Fields(*user), Fields(*Loaded(u"Ann", Complement("New"), 1)));
  user->Validate();
  EXPECT_EQ(user->Validate(), VARIANT_TRUE) << "nothing was written, so nothing is there";
}

}  // namespace
}  // namespace moxel::test
