#include "users/utilisateurs.h"

#include <gtest/gtest.h>

#include "moxel/enumerations.h"
#include "tests/support/configuration.h"
#include "tests/variables/records.h"

namespace moxel::test {
namespace {

const Failure kBadPassword{MXUserError_BadPassword, u"User:NewUser"};
const Failure kConfPassword{MXUserError_ConfPassword, u"User:NewUser"};
const Failure kUserAlreadyExist{MXUserError_UserAlreadyExist, u"User:Validate"};

class UtilisateursTest : public ProductTest {
 protected:
  ObjectPtr<Utilisateurs> users_ = Utilisateurs::Create();
};

TEST_F(UtilisateursTest, ANewUserIsWrittenAddedAndReturned) {
  ObjectPtr<User> ann = users_->NewUser(u"Ann O'Hara", std::int16_t{12}, 12.0, -5);
  ObjectPtr<User> deep = users_->NewUser(u"A\\B", u"abc", u"abc", 1);
  EXPECT_EQ(ConfigurationAt("User"), Tidy(R"(User  User\A  User\A\B  AccessPerm=dword:1  Password=hidden:abc
                                             User\Ann O'Hara  AccessPerm=dword:-5  Password=hidden:12)"));
  EXPECT_EQ(users_->Item(u"ANN O'HARA").get(), ann.get());
  EXPECT_EQ(users_->Item(std::int16_t{2}).get(), deep.get());
  EXPECT_EQ(ann->Permission(), -5);
  EXPECT_EQ(ann->Check(u"12"), VARIANT_TRUE);
  // The level above a deeper name is there too.
  EXPECT_EQ(FailureOf([&] { users_->NewUser(u"a", u"x", u"x", 0); }), kUserAlreadyExist);
}

TEST_F(UtilisateursTest, RefusalsComeInOrderAndLeaveEverythingAsItWas) {
  Configure("User\\Taken  AccessPerm=dword:1");
  const std::string before = ConfigurationAt("User");
  const std::u16string too_long(32768, u'p');
  const struct {
    const char* story;
    const char16_t* name;
    Variant password, confirmation;
    std::int16_t permission;
    Failure failure;
  } cases[] = {
      {"name before all", u"", u"", u"x", 2, {MXUserError_UserRequired, u"User:NewUser"}},
      {"empty password before confirmation", u"Taken", u"", u"x", 2, kBadPassword},
      {"nothing as password", u"Ann", {}, {}, 0, kBadPassword},
      {"confirmation before permission", u"Taken", u"x", u"X", 2, kConfPassword},
      {"confirmation of another kind", u"Ann", u"12", std::int16_t{12}, 0, kConfPassword},
      {"password too long before permission", u"Taken", too_long, too_long, 2, Runtime(6)},
      {"permission", u"Taken", u"x", u"x", 2, {MXUserError_BadPermission, u"User:Permission Property Let"}},
      {"existence in another letter case", u"tAKEN", u"x", u"x", 1, kUserAlreadyExist},
  };
  for (const auto& c : cases) {
    auto create = [&] { users_->NewUser(c.name, c.password, c.confirmation, c.permission); };
    EXPECT_EQ(FailureOf(create), c.failure) << c.story;
    EXPECT_EQ(users_->Count(), 0) << c.story;
    EXPECT_EQ(ConfigurationAt("User"), before) << c.story;
  }
}

TEST_F(UtilisateursTest, ANameInMemoryOnlyIsWrittenBeforeItIsRefused) {
  ObjectPtr<User> user = Keyed<User>(u"Ann");
  users_->Add(*user);
  user->key = u"After";
  EXPECT_EQ(users_->Item(u"ann").get(), user.get()) << "filed under the name at that moment";
  EXPECT_FALSE(Exists("User")) << "adding wrote to the registry";
  EXPECT_EQ(FailureOf([&] { users_->NewUser(u"ANN", u"x", u"x", 1); }), Runtime(457));
  EXPECT_EQ(ConfigurationAt("User\\ANN"), "User\\ANN  AccessPerm=dword:1  Password=hidden:x\n");
  EXPECT_EQ(FailureOf([&] { users_->NewUser(u"Ann", u"x", u"x", 1); }), kUserAlreadyExist);
}

TEST_F(UtilisateursTest, DeletingAUserLeavesTheCollectionAndReportsNothing) {
  ObjectPtr<User> ann = users_->NewUser(u"Ann", u"x", u"x", 1);
  EXPECT_EQ(users_->DeleteUser(*ann), VARIANT_FALSE);
  EXPECT_FALSE(Exists("User\\Ann"));
  EXPECT_EQ(users_->DeleteUser(*ann), VARIANT_FALSE) << "gone, and without a list anywhere";
  EXPECT_EQ(users_->Item(u"Ann").get(), ann.get());
  ann->Update(0, {}, Variant::Missing(), {});
  EXPECT_EQ(ConfigurationAt("User\\Ann"), "User\\Ann  AccessPerm=dword:0\n") << "still usable";
}

TEST_F(UtilisateursTest, DeletingAUserClearsItsNameFromAList) {
  const std::string longest(2047, 'x');
  const struct {
    const char* story;
    const char16_t* user;
    std::string list, left;
  } cases[] = {
      {"among others", u"Ann", "1=Bob  2=Ann  3=Bob  4=Ann", "1=Bob  3=Bob"},
      {"three times in a row", u"Ann", "1=Ann  2=Ann  3=Ann", "2=Ann"},
      {"other spellings", u"Zo\u00EB", "1=zo\xEB  2=Zo\xEB  Zo\xEB=A", "1=zo\xEB  Zo\xEB=A"},
      {"a number is its text", u"-5", "1=dword:-5  2=dword:5", "2=dword:5"},
      {"no data after the user", u"Ann", "1=Ann  2=Bob  3=nothing:", "2=Bob"},
      {"no data, no data", u"Ann", "1=Ann  2=B  3=nothing:  4=B  5=nothing:", "2=B  4=B"},
      {"no data after another", u"Ann", "1=Ann  2=B  3=B  4=nothing:", "2=B  3=B  4=nothing:"},
      {"the empty text is data", u"Ann", "1=Ann  2=Bob  3=", "2=Bob  3="},
      {"the default value has the name before it", u"Ann", "1=Bob  =Ann  2=Bob", "=Ann  2=Bob"},
      {"too long", u"Ann", "1=Ann  2=B  3=" + longest + "  4=Ann", "2=B  3=" + longest + "  4=Ann"},
  };
  for (const auto& c : cases) {
    RegDeleteKeyA(HKEY_LOCAL_MACHINE, AbsolutePath("Scenarios\\S\\User").c_str());
    Configure("Scenarios\\S\\User  " + c.list);
    EXPECT_EQ(users_->DeleteUser(*Keyed<User>(c.user)), VARIANT_FALSE) << c.story;
    EXPECT_EQ(ConfigurationAt("Scenarios\\S\\User"), Tidy("Scenarios\\S\\User  " + c.left)) << c.story;
  }
}

TEST_F(UtilisateursTest, EveryListBelowTheScenariosIsCleared) {
  std::string deep = "Scenarios";
  for (int level = 0; level < 30; ++level) deep += "\\L" + std::to_string(level);
  const auto cleared = TokensOf(R"(
      Scenarios\A\User  Scenarios\B\User  Scenarios\B\User\Ann\User  Scenarios\B\Taches\T\User  Scenarios\User
      Scenarios\User\User  Scenarios\C\USER\User  )" +
                                deep + "\\User");
  const auto kept = TokensOf(R"(Scenarios\C\USER  Scenarios\User\Ann  Scenarios\B\User\Ann  Scenarios\B\Users
      Scenarios\B  Scenarios  Domain\D\User  User\Bob)");
  auto values = [](const std::string& path) { return ReadRecord(path).size(); };
  for (const auto& paths : {cleared, kept})
    for (const std::string& path : paths) Configure(path + "  1=Ann  2=Bob");
  EXPECT_EQ(users_->DeleteUser(*Keyed<User>(u"Ann")), VARIANT_FALSE);
  for (const std::string& path : cleared) EXPECT_EQ(values(path), 1u) << path;
  for (const std::string& path : kept) EXPECT_EQ(values(path), 2u) << path;
}

}  // namespace
}  // namespace moxel::test
