// The entry to the object model: what it loads, when, and what two of its trees see of each other.
#include "root/root.h"

#include <functional>

#include "moxel/late_bound.h"
#include "tests/scenarios/scenario_test.h"

namespace moxel::test {
namespace {

class RootTest : public ScenarioTest {
 protected:
  const ObjectPtr<Root> root_ = Root::Create();
};

TEST_F(RootTest, UsersAndDomainsKeepWhatCanBeRead) {
  Configure(R"(
      Domain\A  Comment=Orders  Domain\B  Domain\C  Comment=dword:7
      User\a  AccessPerm=dword:1  Password=hidden:secret  User\b  AccessPerm=dword:5  Password=hidden:b
      User\c  AccessPerm=  Password=  User\d  AccessPerm=some  User\e  AccessPerm=1
      User\f  AccessPerm=dword:-3     User\g  AccessPerm=dword:70000)");
  std::string users;
  for (std::int32_t i = 1; i <= root_->Utilisateurs()->Count(); ++i) {
    const ObjectPtr<User> user = root_->Utilisateurs()->Item(i);
    users += Narrow(user->key) + std::to_string(user->Permission()) + Shown(user->PasswordDecrypted()) + " ";
  }
  EXPECT_EQ(users, "a1'secret' b0'b' c0'' d0'' e1'' f-3'' g0'' ");
  EXPECT_EQ(KeysOf(*root_->Domaines()), "A B C");
  EXPECT_EQ(Shown(root_->Domaines()->Item(u"C")->Comment()), "I4 7");
}

TEST_F(RootTest, ScenariosAreThoseWithoutADomainThatIsHeld) {
  Configure(R"(
      Domain\D1  Domain\7  Scenarios\Cased  Domain=d1  Scenarios\Empty  Domain=  Scenarios\In1  Domain=D1
      Scenarios\In7  Domain=7  Scenarios\Missing  Dir=here  Scenarios\Number  Domain=dword:7
      Scenarios\Unknown  Domain=D2  Scenarios\User\alice  AccessPerm=dword:1)");
  EXPECT_EQ(KeysOf(*root_->Scenarios()), "Cased Empty Missing Number Unknown User")
      << "the key of the permissions reads as a scenario";
  EXPECT_EQ(KeysOf(*root_->Domaines()->Item(u"7")->Scenarios()), "In7");
  root_->Domaines()->Item(u"D1")->key = u"d1";
  root_->PutScenarios(nullptr);
  EXPECT_EQ(KeysOf(*root_->Scenarios()), "Empty In1 Missing Number Unknown User");
  root_->PutDomaines(Domaines::Create().get());
  root_->Domaines()->NewDomain(u"D2", {});
  root_->PutScenarios(nullptr);
  EXPECT_EQ(KeysOf(*root_->Scenarios()), "Cased Empty In1 In7 Missing Number User");
}

TEST_F(RootTest, CollectionsAreLoadedOnceUnlessPut) {
  auto seen = [&] {
    return KeysOf(*root_->Utilisateurs()) + "/" + KeysOf(*root_->Scenarios()) + "/" +
           KeysOf(*root_->Domaines());
  };
  EXPECT_EQ(KeysOf(*root_->Utilisateurs()) + KeysOf(*root_->Scenarios()), "");
  EXPECT_FALSE(Exists("")) << "reading creates nothing";
  Configure("User\\a  Scenarios\\S  Domain\\D");
  EXPECT_EQ(seen(), "//D") << "without a scenario no domain had to be known";
  root_->PutUtilisateurs(nullptr);
  root_->PutScenarios(nullptr);
  const ObjectPtr<Domaines> domains = root_->Domaines();
  root_->PutDomaines(nullptr);
  root_->Scenarios();
  Configure("User\\b  Scenarios\\T  Domain\\E");
  EXPECT_EQ(seen(), "a b/S/D") << "a scenario that names no domain asks for them too";
  root_->PutDomaines(nullptr);
  EXPECT_EQ(seen(), "a b/S/D E");
  root_->PutDomaines(domains.get());
  EXPECT_EQ(root_->Domaines().get(), domains.get());
}

// What a client brings may claim to be a collection; only the component's own are taken.
TEST_F(RootTest, ForeignCollectionsAreRefusedWithAnErrorThatHasNoMessage) {
  Owner foreign({IID__Utilisateurs, IID__Scenarios, IID__Domaines}, u"");
  const ObjectPtr<Utilisateurs> users = root_->Utilisateurs();
  auto* root = root_.get();
  const std::pair<const char*, std::function<HRESULT(void*)>> puts[] = {
      {"Utilisateurs", [=](void* o) { return root->putref_Utilisateurs(static_cast<_Utilisateurs*>(o)); }},
      {"Scenarios", [=](void* o) { return root->putref_Scenarios(static_cast<_Scenarios*>(o)); }},
      {"Domaines", [=](void* o) { return root->putref_Domaines(static_cast<_Domaines*>(o)); }}};
  for (std::int32_t language : {0, 10000}) {
    SetLanguage(StoredNumber(language));
    for (const auto& [name, put] : puts) {
      const auto error = RaisedBy([&] { ThrowIfFailed(put(&foreign)); });
      ASSERT_TRUE(error) << name;
      EXPECT_EQ(error->number(), -2147211505);
      EXPECT_EQ(Narrow(error->source()), "MOXEL:" + std::string(name) + " Property Set");
      EXPECT_EQ(error->description(), u"An unknown error has occurred!");
    }
  }
  EXPECT_EQ(puts[2].second(users.get()), -2147211505) << "another of its own kinds";
  EXPECT_EQ(root_->Utilisateurs().get(), users.get()) << "what was held stays";
}

// What one tree shows without reloading, and its live state; the changes that each side makes.
std::string Seen(Root& root) {
  const ObjectPtr<Scenario> scenario = root.Scenarios()->Item(u"S");
  return KeysOf(*root.Domaines()) + ", state " + std::to_string(scenario->State()) + ", comment " +
         Shown(root.Domaines()->Item(u"D")->Comment());
}

void ChangeBehind(Root& root, std::u16string name, const char* state) {
  root.Domaines()->NewDomain(name, {});
  root.Domaines()->Item(u"D")->Update(name);
  RegWriteValue(u"Scenarios\\S", u"Etat", REG_DWORD, Wide(state));
}

TEST_F(RootTest, TwoProcessesSeeEachOthersChanges) {
  Configure("Domain\\D  Comment=c  Scenarios\\S  Etat=dword:0");
  Seen(*root_);
  Pipe loaded, changed;
  Child child([&] {
    const ObjectPtr<Root> own = Root::Create();
    std::string seen = Seen(*own) + "; ";
    int word = 0;
    loaded.Send(word);
    changed.Receive(word);
    seen += Seen(*own) + "; ";
    own->PutDomaines(nullptr);
    seen += Seen(*own);
    ChangeBehind(*own, u"FromChild", "3");
    return seen;
  });
  loaded.CloseWriting();
  int word = 0;
  ASSERT_TRUE(loaded.Receive(word));
  ChangeBehind(*root_, u"FromParent", "2");
  changed.Send(word);
  EXPECT_EQ(child.Answer(),
            "D, state 0, comment 'c'; D, state 2, comment 'c'; "
            "D FromParent, state 2, comment 'FromParent'");
  EXPECT_EQ(Seen(*root_), "D FromParent, state 3, comment 'FromParent'");
  root_->PutDomaines(nullptr);
  EXPECT_EQ(Seen(*root_), "D FromChild FromParent, state 3, comment 'FromChild'");
}

}  // namespace
}  // namespace moxel::test
