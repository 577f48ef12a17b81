// The entry to the object model: what it loads, when, and what two of its trees see of each other.
#include "root/root.h"

#include <ctime>
#include <functional>
#include <limits>

#include "moxel/late_bound.h"
#include "tests/scenarios/scenario_test.h"

namespace moxel::test {
namespace {

class RootTest : public ScenarioTest {
 protected:
  const ObjectPtr<Root> root_ = Root::Create();
};

using Lines = std::vector<std::string>;

TEST_F(RootTest, AnEmptyRegistryHasNothing) {
  EXPECT_EQ(root_->Utilisateurs()->Count(), 0);
  EXPECT_EQ(root_->Domaines()->Count(), 0);
  EXPECT_EQ(root_->Scenarios()->Count(), 0);
  EXPECT_FALSE(Exists("")) << "reading creates nothing";
}

TEST_F(RootTest, UsersKeepWhatCanBeRead) {
  Configure(R"(
      User\a   AccessPerm=dword:1   Password=hidden:secret
      User\b   AccessPerm=dword:5   Password=hidden:b
      User\c   AccessPerm=          Password=
      User\d   AccessPerm=some
      User\e   AccessPerm=1
      User\f   AccessPerm=dword:-3
      User\g   AccessPerm=dword:70000)");
  Lines lines;
  for (std::int32_t i = 1; i <= root_->Utilisateurs()->Count(); ++i) {
    const ObjectPtr<User> user = root_->Utilisateurs()->Item(i);
    lines.push_back(Narrow(user->key) + " " + std::to_string(user->Permission()) + " " +
                    Shown(user->PasswordDecrypted()));
  }
  EXPECT_EQ(lines, (Lines{"a 1 'secret'", "b 0 'b'", "c 0 ''", "d 0 ''", "e 1 ''", "f -3 ''", "g 0 ''"}));
  EXPECT_EQ(root_->Utilisateurs()->Item(u"A")->PasswordCrypted().text(),
            u"\u0152\u0161\u0153\u008D\u0161\u2039")
      << "it is held as it is stored";
}

TEST_F(RootTest, DomainsHaveTheirCommentAsRead) {
  Configure(R"(
      Domain\a   Comment=Orders
      Domain\b
      Domain\c   Comment=dword:7)");
  Lines lines;
  for (std::int32_t i = 1; i <= root_->Domaines()->Count(); ++i)
    lines.push_back(Narrow(root_->Domaines()->Item(i)->key) + " " +
                    Shown(root_->Domaines()->Item(i)->Comment()));
  EXPECT_EQ(lines, (Lines{"a 'Orders'", "b ''", "c I4 7"}));
}

constexpr const char* kScenarios = R"(
    Domain\D1
    Domain\7
    Scenarios\Cased      Domain=d1
    Scenarios\Empty      Domain=
    Scenarios\In1        Domain=D1
    Scenarios\In7        Domain=7
    Scenarios\Missing    Dir=here    Traitement=dword:2  Etat=x  UseSock=1  SockNum=dword:5  Date Traitement=now
    Scenarios\Number     Domain=dword:7  Traitement=x    UseSock=
    Scenarios\Unknown    Domain=D2
    Scenarios\User\alice  AccessPerm=dword:1)";

TEST_F(RootTest, ScenariosAreThoseWithoutAKnownDomain) {
  Configure(kScenarios);
  const ObjectPtr<Scenarios> scenarios = root_->Scenarios();
  EXPECT_EQ(KeysOf(*scenarios), "Cased Empty Missing Number Unknown User")
      << "the key of the permissions reads as a scenario";
  EXPECT_EQ(KeysOf(*root_->Domaines()->Item(u"D1")->Scenarios()), "In1");
  EXPECT_EQ(KeysOf(*root_->Domaines()->Item(u"7")->Scenarios()), "In7");
  const ObjectPtr<Scenario> whole = scenarios->Item(u"Missing");
  EXPECT_EQ(Shown(whole->Directory()) + Shown(whole->LastExe()) + Shown(whole->Port()), "'here''now'I4 5");
  EXPECT_EQ(whole->Mode(), 2);
  EXPECT_EQ(whole->UseSocket(), 1);
  EXPECT_EQ(NumberRaisedBy([&] { whole->State(); }), 13);
  const ObjectPtr<Scenario> poor = scenarios->Item(u"Number");
  EXPECT_EQ(poor->Mode() + poor->State() + poor->UseSocket() + poor->Hwnd(), 0);
  EXPECT_EQ(Shown(poor->Directory()) + Shown(poor->LastExe()) + Shown(poor->Port()), "''''''");
}

// A client may have put domains of its own, or renamed one.
TEST_F(RootTest, TheDomainsHeldDecideWhichAreKnown) {
  Configure(kScenarios);
  root_->Domaines()->Item(u"D1")->key = u"d1";
  EXPECT_EQ(KeysOf(*root_->Scenarios()), "Empty In1 Missing Number Unknown User");
  const ObjectPtr<Domaines> own = Domaines::Create();
  const ObjectPtr<Domaine> domain = Domaine::Create();
  domain->key = u"D2";
  own->Add(*domain);
  root_->PutDomaines(own.get());
  root_->PutScenarios(nullptr);
  EXPECT_EQ(KeysOf(*root_->Scenarios()), "Cased Empty In1 In7 Missing Number User");
}

TEST_F(RootTest, CollectionsAreLoadedOnceUnlessPut) {
  Configure(kScenarios);
  const ObjectPtr<Utilisateurs> users = root_->Utilisateurs();
  const ObjectPtr<Scenarios> scenarios = root_->Scenarios();
  const ObjectPtr<Domaines> domains = root_->Domaines();
  Configure("User\\new  Domain\\New  Scenarios\\New");
  EXPECT_EQ(root_->Utilisateurs().get(), users.get());
  EXPECT_EQ(root_->Scenarios().get(), scenarios.get());
  EXPECT_EQ(root_->Domaines().get(), domains.get());
  EXPECT_EQ(users->Count(), 0);
  EXPECT_EQ(domains->Count(), 2);

  root_->PutUtilisateurs(nullptr);
  root_->PutScenarios(nullptr);
  root_->PutDomaines(nullptr);
  EXPECT_EQ(KeysOf(*root_->Utilisateurs()), "new");
  EXPECT_EQ(KeysOf(*root_->Domaines()), "7 D1 New");
  EXPECT_EQ(KeysOf(*root_->Scenarios()), "Cased Empty Missing New Number Unknown User");
  EXPECT_EQ(domains->Count(), 2) << "the old collection stays as it is";

  root_->PutUtilisateurs(users.get());
  EXPECT_EQ(root_->Utilisateurs().get(), users.get());
}

TEST_F(RootTest, ScenariosLoadTheDomainsFirstWhenThereIsAScenario) {
  root_->Scenarios();
  Configure("Domain\\D1");
  EXPECT_EQ(KeysOf(*root_->Domaines()), "D1") << "nothing had to be told apart";

  const ObjectPtr<Root> other = Root::Create();
  Configure("Scenarios\\S");
  other->Scenarios();
  Configure("Domain\\D2");
  EXPECT_EQ(KeysOf(*other->Domaines()), "D1") << "a scenario that names no domain asks for them too";
  other->PutDomaines(nullptr);
  other->PutScenarios(nullptr);
  other->Domaines();
  Configure("Scenarios\\T  Domain=D3  Domain\\D3");
  EXPECT_EQ(KeysOf(*other->Scenarios()), "S T") << "domains loaded before are not loaded again";
}

// What a client brings may claim to be a collection; only the component's own are taken.
TEST_F(RootTest, ForeignCollectionsAreRefusedWithAnErrorThatHasNoMessage) {
  Owner foreign({IID__Utilisateurs, IID__Scenarios, IID__Domaines}, u"");
  const ObjectPtr<Utilisateurs> users = root_->Utilisateurs();
  const struct {
    std::function<HRESULT()> put;
    const char16_t* source;
  } cases[] = {
      {[&] { return root_->putref_Utilisateurs(reinterpret_cast<_Utilisateurs*>(&foreign)); },
       u"MOXEL:Utilisateurs Property Set"},
      {[&] { return root_->putref_Scenarios(reinterpret_cast<_Scenarios*>(&foreign)); },
       u"MOXEL:Scenarios Property Set"},
      {[&] { return root_->putref_Domaines(reinterpret_cast<_Domaines*>(&foreign)); },
       u"MOXEL:Domaines Property Set"},
      {[&] { return root_->putref_Domaines(reinterpret_cast<_Domaines*>(users.get())); },
       u"MOXEL:Domaines Property Set"},
  };
  for (std::int32_t language : {0, 10000}) {
    SetLanguage(StoredNumber(language));
    for (const auto& c : cases) {
      EXPECT_EQ(c.put(), -2147211505);
      EXPECT_EQ(RaisedBy([] { ThrowIfFailed(-2147211505); })->source(), c.source);
      EXPECT_EQ(RaisedBy([&] { ThrowIfFailed(c.put()); })->description(), u"An unknown error has occurred!");
    }
  }
  EXPECT_EQ(root_->Utilisateurs().get(), users.get()) << "what was held stays";
}

TEST_F(RootTest, WhatWasTakenOutlivesTheRoot) {
  Configure("Domain\\D\\Var\\x  Value=1  Scenarios\\S  Domain=D");
  ObjectPtr<Domaine> domain;
  {
    const ObjectPtr<Root> passing = Root::Create();
    passing->Scenarios();
    domain = passing->Domaines()->Item(u"D");
  }
  const ObjectPtr<Scenario> scenario = domain->Scenarios()->Item(u"S");
  const ObjectPtr<Variable> variable = domain->Variables()->Item(u"x");
  domain = nullptr;
  EXPECT_EQ(scenario->State(), 0);
  EXPECT_EQ(Shown(variable->Value()), "'1'");
}

// What one tree shows without reloading, and its live state; the changes that each side makes.
constexpr const char* kShared = "Domain\\D  Comment=c  Scenarios\\S  Etat=dword:0  SockNum=1";

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

TEST_F(RootTest, TwoTreesInOneProcessShareTheRegistryAlone) {
  Configure(kShared);
  const ObjectPtr<Root> other = Root::Create();
  EXPECT_EQ(Seen(*root_), Seen(*other));
  EXPECT_NE(root_->Scenarios()->Item(u"S").get(), other->Scenarios()->Item(u"S").get());
  ChangeBehind(*root_, u"New", "2");
  EXPECT_EQ(Seen(*root_), "D New, state 2, comment 'New'");
  EXPECT_EQ(Seen(*other), "D, state 2, comment 'c'");
  EXPECT_EQ(NumberRaisedBy([&] { other->Domaines()->NewDomain(u"new", {}); }),
            static_cast<std::int32_t>(0x80040000) + 1600);
  other->PutDomaines(nullptr);
  EXPECT_EQ(Seen(*other), "D New, state 2, comment 'New'");
}

TEST_F(RootTest, TwoProcessesSeeEachOthersChanges) {
  Configure(kShared);
  Seen(*root_);
  Pipe loaded, changed;
  Child child([&] {
    const ObjectPtr<Root> own = Root::Create();
    std::string seen = Seen(*own) + "; ";
    char word = 'r';
    loaded.Send(word);
    changed.Receive(word);
    seen += Seen(*own) + "; ";
    own->PutDomaines(nullptr);
    seen += Seen(*own);
    ChangeBehind(*own, u"FromChild", "3");
    return seen;
  });
  loaded.CloseWriting();
  char word = 0;
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

// Scenarios that name domains that are not there, so that each search comes to its end.
void WriteMany(int scenarios, int domains) {
  ASSERT_EQ(RegFileBegin(), 0);
  for (int i = 0; i < domains; ++i) Create(HKEY_LOCAL_MACHINE, AbsolutePath("Domain\\D" + std::to_string(i)));
  for (int i = 0; i < scenarios; ++i) {
    const Key key = Create(HKEY_LOCAL_MACHINE, AbsolutePath("Scenarios\\S" + std::to_string(i)));
    Set(key, "Domain", "d" + std::to_string(i % domains), REG_SZ);
  }
  ASSERT_EQ(RegFileCommit(), 0);
}

TEST_F(RootTest, ManyDomainsHardlySlowTheScenariosDown) {
  constexpr int kScenarioCount = 5000;
  auto time_over = [&](int domains) {
    TempFolder folder;
    ::setenv("MOXEL_REGISTRY", (folder.path() / "registry.db").c_str(), 1);
    WriteMany(kScenarioCount, domains);
    std::clock_t best = std::numeric_limits<std::clock_t>::max();
    for (int i = 0; i < 2; ++i) {
      const ObjectPtr<Root> root = Root::Create();
      const std::clock_t start = std::clock();
      EXPECT_EQ(root->Scenarios()->Count(), kScenarioCount);
      best = std::min(best, std::clock() - start);
    }
    return best;
  };
  const std::clock_t over_one = time_over(1);
  const std::clock_t over_many = time_over(1000);
  EXPECT_LE(over_many, 2 * over_one);
}

}  // namespace
}  // namespace moxel::test
