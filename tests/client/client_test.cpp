// The C++ client against the component as a program has it: the shared library alone, nothing registered.
#include "moxel/client.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <ranges>
#include <string>
#include <string_view>

#include "tests/support/configuration.h"
#include "tests/support/raised_error.h"
#include "tests/support/temp_registry.h"

namespace moxel::test {
namespace {

constexpr const char* kConfiguration = R"(
    Configuration  Lang=dword:10000   Domain\Empty  Comment=Nothing   Domain\Sales  Comment=Orders
    Domain\Sales\Var\Rate        V/C=V  Type=dword:6  Value=real:2.5  Init=real:1.5
    Scenarios\Backup  Domain=  Etat=dword:2   Scenarios\Idle  Domain=Sales
    Scenarios\Night              Domain=Sales  Dir=C:\Night  Traitement=dword:8  Etat=dword:3  UseSock=dword:9
                                 SockNum=dword:5001  Date Traitement=today  Hwnd=dword:70000
    Scenarios\Night\Ordre        tsk1=Load  tsk2=Check
    Scenarios\Night\Taches\Check  Etat=dword:2  Type=dword:6  ExecuteLe=now
    Scenarios\Night\Taches\Check\Action\OnErr  Status=S
    Scenarios\Night\Taches\Load  Etat=dword:3
    Scenarios\Night\Var\Tries    V/C=V  Type=dword:1  Value=dword:3  Init=dword:0
    User\alice  AccessPerm=dword:1  Password=hidden:secret   User\bob  Password=hidden:abc)";

class ClientTest : public RegistryTest {
 protected:
  ClientTest() { Configure(kConfiguration); }
  ~ClientTest() override { EXPECT_EQ(DllCanUnloadNow(), S_OK) << "no test leaves an object behind"; }
};

template <class Range>
std::string KeysOf(Range&& objects) {
  std::string keys;
  for (const auto& object : objects) keys += (keys.empty() ? "" : " ") + object.key();
  return keys;
}

std::string Shown(const std::string& text) { return text; }
std::string Shown(const Variant& value) { return value.ToUtf8(); }
template <class Number>
std::string Shown(Number number) {
  return std::to_string(number);
}
template <class... Values>
std::string Joined(const Values&... values) {
  return (("[" + Shown(values) + "]") + ...);
}

std::string FailureOf(const std::function<void()>& call) {
  const auto error = RaisedBy(call);
  return error ? std::to_string(error->number()) + " " + ToUtf8(error->source()) + ": " + error->what() : "";
}

TEST_F(ClientTest, WalksTheConfigurationAndResetsADomainBeforeARun) {
  static_assert(std::ranges::input_range<const client::Domaines> && std::input_iterator<ElementIterator>);
  const client::Root root;
  std::string walk;
  for (const auto& domain : root.Domaines())
    walk += Joined(domain.key(), KeysOf(domain.Variables()), KeysOf(domain.Scenarios()));
  EXPECT_EQ(walk, "[Empty][][][Sales][Rate][Idle Night]");
  const client::Domaine sales = root.Domaines()["sales"];
  EXPECT_EQ(sales, root.Domaines()[2]);
  const client::Scenarios scenarios = sales.Scenarios();
  const auto failed = [](const auto& scenario) { return scenario.State() == MXScenarioState_WithError; };
  const client::Scenario night = *std::ranges::find_if(scenarios, failed);
  std::string order;
  for (const Variant& name : night.TraitementsSelected())
    order += Joined(name, night.Traitements()[name].State());
  EXPECT_EQ(order, "[Load][3][Check][2]");

  EXPECT_TRUE(sales.Initialize(1, 1));
  EXPECT_EQ(std::ranges::count_if(scenarios, failed), 0) << "states are live";
  EXPECT_EQ(Joined(sales.Variables()["Rate"].Value(), night.Variables()[1].Value(),
                   night.Traitements()["Load"].State()),
            "[1.5][0][0]");
}

TEST_F(ClientTest, EveryPropertyIsItsOwn) {
  const client::Root root;
  const client::Domaine sales = root.Domaines()["Sales"], empty = root.Domaines()["Empty"];
  const client::Scenario night = sales.Scenarios()["Night"], backup = root.Scenarios()["Backup"];
  EXPECT_EQ(Joined(night.Mode(), night.Directory(), night.UseSocket(), night.Port(), night.State(),
                   night.Hwnd(), night.LastExe()),
            "[8][C:\\Night][9][5001][3][70000][today]");
  const client::Traitement check = night.Traitements()["Check"];
  check.PutSelected(-7);
  EXPECT_EQ(Joined(check.TypeTask(), check.State(), check.Selected(), check.LastExe(), check.StatusAct(),
                   check.Source()),
            "[6][2][-7][now][S   ][Night]");
  const client::User bob = root.Utilisateurs()["bob"];
  EXPECT_EQ(Joined(bob.Password(), bob.PasswordDecrypted(), bob.PasswordCrypted()),
            "[***][abc][\u017E\u009D\u0153]");
  bob.PutPasswordCrypted("x");
  bob.PutPermission(-5);
  EXPECT_EQ(Joined(bob.Permission(), bob.PasswordCrypted()), "[-5][x]");
  const client::Variable rate = sales.Variables()["Rate"];
  EXPECT_EQ(Joined(rate.VarType(), rate.DataType(), rate.Value(), rate.Init()), "[V][6][2.5][1.5]");

  night.PutVariables(backup.Variables());
  night.PutTraitements(backup.Traitements());
  night.PutUtilisateurs(root.Utilisateurs());
  night.PutTraitementsSelected(nullptr);
  EXPECT_TRUE(night.Variables() == backup.Variables() && night.Traitements() == backup.Traitements());
  EXPECT_EQ(KeysOf(night.Utilisateurs()) + Joined(night.TraitementsSelected().Count()), "alice bob[2]");
  empty.PutVariables(sales.Variables());
  empty.PutScenarios(sales.Scenarios());
  EXPECT_TRUE(empty.Variables() == sales.Variables() && empty.Scenarios() == sales.Scenarios());
  root.PutUtilisateurs(backup.Utilisateurs());
  root.PutScenarios(sales.Scenarios());
  root.PutDomaines(nullptr);
  EXPECT_TRUE(root.Utilisateurs() == backup.Utilisateurs() && root.Scenarios() == sales.Scenarios());
  EXPECT_TRUE(root.Domaines().Contains("Sales") && root.Domaines()["Sales"] != sales) << "loaded afresh";
}

TEST_F(ClientTest, CreatesUpdatesAndDeletes) {
  const client::Root root;
  const client::Domaines domains = root.Domaines();
  const client::Domaine domain = domains.NewDomain("New", {});
  EXPECT_TRUE(domain.Update(7));
  const client::Variables variables = domain.Variables();
  const client::Variable count = variables.NewVariable("N", "V", MXVariableDataType_Num, 5, {}, domain);
  EXPECT_TRUE(count.Update("C", MXVariableDataType_Alpha, "five", u"one", domain));
  EXPECT_TRUE(count.Duplicate("Copy", domain));
  EXPECT_TRUE(count.Update1("V", MXVariableDataType_Boolean, true, false, nullptr, "New_d"));
  EXPECT_TRUE(count.Initialize(domain) && count.Initialize1("Scenarios\\Idle"));
  EXPECT_TRUE(count.Update1("V", MXVariableDataType_Num, 1, 2, root.Scenarios()["Backup"]));
  EXPECT_EQ(ConfigurationAt("Domain\\New") + ConfigurationAt("Scenarios\\Backup\\Var\\N") +
                ConfigurationAt("Scenarios\\Idle\\Var\\N"),
            Tidy(R"(Domain\New           Comment=7   Domain\New\Var
                    Domain\New\Var\Copy  Value=five  Init=one  Type=dword:0  V/C=C
                    Domain\New\Var\N     Value=0     Init=0    Type=dword:2  V/C=V
                    Scenarios\Backup\Var\N  Value=dword:1  Init=dword:2  Type=dword:1  V/C=V
                    Scenarios\Idle\Var\N    Value=0)"));
  EXPECT_TRUE(variables.DeleteVariable(count, domain));
  EXPECT_FALSE(variables.DeleteVariable(count, domain)) << "it is gone";
  EXPECT_TRUE(domains.DeleteDomain(domain, 1) && domains.Contains("New")) << "until it is removed";
  domains.Remove("New");
  EXPECT_FALSE(domains.Contains("New") || domains.Contains(3) || Exists("Domain\\New"));
  domains.Add(domain);
  EXPECT_EQ(KeysOf(domains), "Empty Sales New");

  const client::Utilisateurs users = root.Utilisateurs();
  const client::User carl = users.NewUser("carl", "one", "one", 1);
  EXPECT_TRUE(carl.Update(0) && carl.Update(-1, "one", "two", "two") && carl.Check("two"));
  EXPECT_EQ(ConfigurationAt("User\\carl"), "User\\carl  AccessPerm=dword:-1  Password=hidden:two\n");
  EXPECT_FALSE(users.DeleteUser(carl) || Exists("User\\carl")) << "the status is always false";

  const client::Scenario night = domains["Sales"].Scenarios()["Night"];
  const client::Traitements tasks = night.Traitements();
  const client::Collection order = night.TraitementsSelected();
  EXPECT_TRUE(tasks["Check"].Initialize("Night", MXTraitementState_Retry));
  EXPECT_TRUE(night.Initialize(MXScenarioModeInit_AfterError, 0));
  EXPECT_EQ(Joined(tasks["Load"].State(), tasks["Check"].State()), "[4][4]");
  EXPECT_TRUE(tasks.DeleteTraitement(tasks["Check"], "Night"));
  order.Remove("3");
  order.Add("Last");
  order.Add(tasks[1].get(), "own");
  EXPECT_EQ(KeysOf(tasks) + Joined(order["2"], order[2]), "Load[Load][Last]");
  EXPECT_EQ(order["own"].pdispVal, tasks[1].get());
  EXPECT_TRUE(domains["Sales"].Scenarios().DeleteScenario(night, -1));
  EXPECT_FALSE(Exists("Scenarios\\Night"));
}

TEST_F(ClientTest, RefusalsAreErrorsWithNumberSourceAndDescription) {
  const client::Root root;
  const client::Domaines domains = root.Domaines();
  const client::Domaine sales = domains["Sales"];
  const client::User alice = root.Utilisateurs()["alice"];
  const client::Variable rate = sales.Variables()["Rate"];
  Variant unknown(u"Nowhere");
  const std::string pointer = std::to_string(E_POINTER);
  const struct {
    std::function<void()> call;
    std::string failure;
  } rows[] = {
      {[&] { domains.NewDomain("", {}); }, "-2147219903 Domaines:NewDomain: Enter domain name"},
      {[&] { domains.NewDomain("Sales", {}); }, "-2147219904 Domaine:Validate: This Domain already exists"},
      {[&] { domains.DeleteDomain(sales, 0); },
       "-2147219902 Domaines:DeleteDomain: This domain content variables or scenarios"},
      {[&] { sales.Scenarios().DeleteScenario(sales.Scenarios()["Night"], 0); },
       "-2147219802 Scenarios:DeleteScenario: This scenario content variables or processes"},
      {[&] { root.Utilisateurs().NewUser("bea", {}, "a", 2); },
       "-2147220504 User:NewUser: Incorrect password"},
      {[&] { alice.Check("Secret"); }, "-2147220504 User:Update: Incorrect password"},
      {[&] { alice.Update(1, "secret", "secret", "x"); }, "-2147220503 User:Update: Enter new password"},
      {[&] { alice.PutPermission(2); },
       "-2147220501 User:Permission Property Let: You don't have the permission ..."},
      {[&] { rate.Update("V", MXVariableDataType{5}, 1, 1, sales); },
       "-2147220003 Variable:DataType Property Let: Incorrect type"},
      {[&] { rate.Update("V", MXVariableDataType_Real, "abc", 1, sales); }, "13 MOXEL: Type mismatch"},
      {[&] { rate.Duplicate("Rate", sales); },
       "-2147220001 Variable:Duplicate: This variable already exists"},
      {[&] { domains["Nowhere"].key(); }, "5 MOXEL: Invalid procedure call or argument"},
      {[&] { domains.Remove(3); }, "9 MOXEL: Subscript out of range"},
      {[&] { domains.Contains({}); }, "13 MOXEL: Type mismatch"},
      {[&] { domains.Add(sales); },
       "457 MOXEL: This key is already associated with an element of this collection"},
      {[&] { KeysOf(client::Domaines()); }, pointer + " MOXEL: No object"},
      {[&] { domains.get()->raw_Remove(&unknown), domains.DeleteDomain(nullptr, 1); },
       pointer + " MOXEL: Automation error"},  // not what the call before it left
  };
  for (const auto& row : rows) EXPECT_EQ(FailureOf(row.call), row.failure);
  Configure("Configuration  Lang=dword:0");
  EXPECT_EQ(FailureOf([&] { domains.NewDomain("Sales", {}); }),
            "-2147219904 Domaine:Validate: Ce Domaine est d\u00E9j\u00E0 pr\u00E9sent");
}

TEST_F(ClientTest, ObjectsOutliveTheirParentsAndNoneIsAValue) {
  client::Variable rate = client::Root().Domaines()["Sales"].Variables()["Rate"];
  EXPECT_EQ(DllCanUnloadNow(), S_FALSE) << "the variable keeps the component";
  EXPECT_EQ(rate.Value().ToR8(), 2.5);
  auto position = client::Root().Domaines().begin();
  EXPECT_EQ((*++position).key(), "Sales") << "a walk keeps its collection";
  const client::Variable copy = rate;
  rate = client::RootVar().RecupVariable("Sales", "Night", "rate");
  EXPECT_TRUE(!rate && rate == nullptr && copy && copy != rate) << "names are compared exactly";
  EXPECT_EQ(client::RootVar().RecupVariable({}, u"Night", "Tries").Value().ToI4(), 3);
}

TEST_F(ClientTest, TextsComeBackAsTheyWereGiven) {
  const client::Domaines domains = client::Root().Domaines();
  const struct {
    client::Text given;
    std::u16string wide;
    std::string utf8;
  } rows[] = {
      {"\u00CEle \u20AC \U0001F600", u"\u00CEle \u20AC \U0001F600", "\u00CEle \u20AC \U0001F600"},
      {std::string("a\0b", 3), std::u16string(u"a\0b", 3), std::string("a\0b", 3)},
      {std::string_view("\xFFx\xE2\x82"), u"\uFFFDx\uFFFD", "\uFFFDx\uFFFD"},
      {std::u16string_view(u"\xDC00x\xD800"), u"\xDC00x\xD800", "\uFFFDx\uFFFD"},
      {u"", u"", ""},
  };
  for (const auto& [given, wide, utf8] : rows) {
    domains[1].PutKey(given);
    EXPECT_TRUE(domains[1].key16() == wide) << utf8;
    EXPECT_EQ(domains[1].key(), utf8);
  }
  const client::Domaine named = domains.NewDomain(u"\u00E9t\u00E9", "\u00E0 c\u00F4t\u00E9");
  EXPECT_EQ(domains["\u00C9T\u00C9"], named);
  EXPECT_EQ(client::Root().Domaines()["\u00E9t\u00E9"].Comment().ToUtf8(), "\u00E0 c\u00F4t\u00E9");
}

}  // namespace
}  // namespace moxel::test
