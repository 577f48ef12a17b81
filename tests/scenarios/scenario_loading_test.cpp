// What a scenario's tasks, variables and users are when they are first read.
#include <grp.h>
#include <sys/stat.h>

#include <map>

#include "tests/scenarios/scenario_test.h"

namespace moxel::test {
namespace {

class ScenarioLoadingTest : public ScenarioTest {};

std::string UsersOf(Scenario& scenario) {
  return Listed(*scenario.Utilisateurs(), [](const ObjectPtr<User>& user) {
    return "," + Narrow(user->key) + " " + std::to_string(user->Permission());
  });
}

TEST_F(ScenarioLoadingTest, Tasks) {
  Configure(R"(
      Scenarios\S\Taches\b                Etat=dword:2  Type=dword:7  ExecuteLe=01/02/2024
      Scenarios\S\Taches\b\Action\OnErr   Status=S
      Scenarios\S\Taches\b\Action\OnDec   Status=dword:5
      Scenarios\S\Taches\b\Action\ExeIf   Status=
      Scenarios\S\Taches\b\Action\Goto    Status=End
      Scenarios\S\Taches\C
      Scenarios\S\Taches\d                Etat=x  Type=dword:32768  ExecuteLe=
      Scenarios\S\Taches\d\Action\Goto    Status=x
      Scenarios\S\Taches\E                Etat=3  Type=12.5  ExecuteLe=dword:-1)");
  const std::string tasks = Listed(*ScenarioNamed("S")->Traitements(), [](const ObjectPtr<Traitement>& task) {
    return "\n" + Narrow(task->key) + " of " + Shown(task->Source()) + ", " +
           std::to_string(task->TypeTask()) + ", " + Shown(task->LastExe()) + ", " + Shown(task->StatusAct());
  });
  EXPECT_EQ(tasks,
            "b of 'S', 7, '01/02/2024', 'S5 End'\n"
            "C of 'S', 0, '', '    '\n"
            "d of 'S', 0, '', '   x'\n"
            "E of 'S', 12, I4 -1, '    '");
}

// The initial value of a real constant is not read: it receives what was read for the variable before it.
constexpr const char* kVariables = R"(
    First\Var\A     V/C=C  Type=dword:6  Value=real:2.5    Init=5            | 'C' 6 R8 2.5 empty
    Real\Var\A      V/C=V  Type=dword:6  Value=real:1      Init=real:1.5     | 'V' 6 R8 1 R8 1.5
    Real\Var\B      V/C=C  Type=dword:6  Value=real:2      Init=9            | 'C' 6 R8 2 R8 1.5
    Real\Var\C      V/C=C  Type=dword:6                                      | 'C' 6 R8 0 R8 1.5
    Real\Var\D      V/C=v  Type=dword:6                    Init=real:7       | empty 6 R8 0 R8 1.5
    Password\Var\A  V/C=V  Type=dword:3  Value=hidden:abc  Init=hidden:oprb~ | 'V' 3 'abc' 'oprb~'
    Password\Var\B  V/C=C  Type=dword:6                                      | 'C' 6 R8 0 'oprb~'
    Boolean\Var\A   V/C=V  Type=dword:2  Value=1           Init=Vrai         | 'V' 2 '1' I2 1
    Boolean\Var\B   V/C=C  Type=dword:6                                      | 'C' 6 R8 0 'Vrai'
    No init\Var\A   V/C=V  Type=dword:1  Value=dword:7                       | 'V' 1 I4 7 I2 0
    No init\Var\B   V/C=C  Type=dword:6                                      | 'C' 6 R8 0 ''
    Refused\Var\A   V/C=V  Type=dword:1  Value=x           Init=y            | 'V' 1 empty empty
    Refused\Var\B   V/C=C  Type=dword:6                                      | 'C' 6 R8 0 'y'
    No type\Var\A   V/C=V  Type=x        Value=a           Init=b            | 'V' 0 'a' 'b'
    No type\Var\B   V/C=V  Type=6        Value=real:0.5    Init=real:1.5     | 'V' 6 R8 0.5 R8 1.5
    No type\Var\C   V/C=V  Type=x        Value=real:2.5    Init=real:3.5     | 'V' 6 R8 2.5 R8 3.5
    No type\Var\D   V/C=V  Type=dword:70000  Value=real:4  Init=real:5       | 'V' 6 R8 4 R8 5
    No type\Var\E   V/C=V                Value=e           Init=f            | 'V' 0 'e' 'f'
    Unknown\Var\A   V/C=V  Type=dword:5  Value=a           Init=b            | 'V' 0 'a' 'b'
    Unknown\Var\B   V/C=C  Type=dword:1  Value=dword:-2    Init=text         | 'C' 1 I4 -2 'text'
    Empty\Var\A                                                              | empty 0 '' '')";

TEST_F(ScenarioLoadingTest, VariablesAndWhatARealConstantInherits) {
  std::map<std::string, std::string> expected;
  const std::vector<std::string> cells = Cells(kVariables);
  for (std::size_t i = 0; i < cells.size(); i += 2) {
    Configure("Scenarios\\" + cells[i]);
    expected[cells[i].substr(0, cells[i].find('\\'))] += "\n" + cells[i + 1];
  }
  auto fields = [](const ObjectPtr<Variable>& variable) { return "\n" + FieldsOf(*variable); };
  for (const auto& [scenario, lines] : expected)
    EXPECT_EQ("\n" + Listed(*ScenarioNamed(scenario)->Variables(), fields), lines) << scenario;
}

TEST_F(ScenarioLoadingTest, UsersHaveTheirPermissionFromOnePlaceForAllScenarios) {
  Configure(R"(
      Scenarios\S\User        any=bob  other=ann  3=eve  =root  number=dword:12  again=BOB  tom=tom  low=low
      Scenarios\User\bob      AccessPerm=dword:1
      Scenarios\S\User\ann    AccessPerm=dword:1
      User\ann                AccessPerm=dword:1  Password=hidden:abc
      Scenarios\User\eve      AccessPerm=dword:5
      Scenarios\User\root     AccessPerm=1
      Scenarios\User\tom      AccessPerm=x
      Scenarios\User\low      AccessPerm=dword:-3
      Scenarios\T\User        1=ann  2=bob  none=nothing:  4=)");
  EXPECT_EQ(UsersOf(*ScenarioNamed("S")), "bob 1,ann 0,eve 0,root 1,12 0,tom 0,low -3");
  ObjectPtr<Scenario> other = ScenarioNamed("T");
  EXPECT_EQ(UsersOf(*other), "ann 0,bob 1, 0");
  EXPECT_EQ(Shown(other->Utilisateurs()->Item(u"ann")->PasswordCrypted()), "empty");
}

TEST_F(ScenarioLoadingTest, AnAccountThatMayOnlyReadSeesNoUsers) {
  if (::geteuid() != 0) GTEST_SKIP() << "only root can act for another account";
  OnAnotherThread([] { Configure("Scenarios\\S\\User  1=bob  Scenarios\\S\\Var\\X  V/C=V  Value=x"); });
  ::chmod(folder().c_str(), 0755);
  ::chmod(file().c_str(), 0644);
  Child child([] {
    if (::setgroups(0, nullptr) != 0 || ::setgid(65534) != 0 || ::setuid(65534) != 0)
      return std::string("root");
    ObjectPtr<Scenario> scenario = ScenarioNamed("S");
    return UsersOf(*scenario) + "|" + KeysOf(*scenario->Variables());
  });
  EXPECT_EQ(child.Answer(), "|X");
  EXPECT_EQ(UsersOf(*ScenarioNamed("S")), "bob 0");
}

}  // namespace
}  // namespace moxel::test
