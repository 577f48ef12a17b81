// Resetting a scenario before a new run.
#include <sstream>

#include "tests/scenarios/scenario_test.h"

namespace moxel::test {
namespace {

class ScenarioInitializeTest : public ScenarioTest {};

// A scenario with four tasks in its order and one outside, a constant and three variables; a digit each: its
// own state and flag, the states of its tasks, the values of the variables, whose initial ones are 7, 8, 9.
std::string Night(const std::string& own, const std::string& tasks, const std::string& values) {
  std::string text = std::string("Scenarios\\Night  Etat=dword:") + own[0] + "  Admin=dword:" + own[1];
  text += R"(  Dir=C:\
      Scenarios\Night\Ordre      tsk1=A  tsk2=B  tsk3=c  tsk5=D
      Scenarios\Night\Taches)";
  for (std::size_t i = 0; i < tasks.size(); ++i)
    text += std::string("\n Scenarios\\Night\\Taches\\") + "ABCDE"[i] + "  Etat=dword:" + tasks[i];
  text += R"(
      Scenarios\Night\Var
      Scenarios\Night\Var\Fixed  Value=now  Init=start  Type=dword:0  V/C=C)";
  for (std::size_t i = 0; i < values.size(); ++i)
    text += std::string("  Scenarios\\Night\\Var\\") + "XYZ"[i] + "  Value=dword:" + values[i] +
            "  Init=dword:" + "789"[i] + "  Type=dword:1  V/C=V";
  return text;
}

std::string Changed(std::string text, const std::string& part, const std::string& by) {
  const std::size_t at = text.find(part);
  return at == text.npos ? text : text.replace(at, part.size(), by);
}

// What is changed beforehand, mode and flag, the error, and what the scenario is afterwards.
constexpr const char* kResets = R"(
    - - 0  0   0  00 00003 555    tsk2=B tsk2=Z 0 1   5  31 02343 555
    - - 0  1   0  00 00003 789    tsk2=B tsk2=Z 2 1   5  31 42343 555
    - - 0 -1   0  00 00003 555    tsk2=B tsk2=Z 1 1   0  00 12343 789
    - - 0  2   0  00 00003 555    Etat=dword:2 Etat=x     2 1  13  31 42343 555
    - - 1  0   0  00 12343 555    Etat=dword:2 Etat=x     0 1   0  00 00003 789
    - - 1  1   0  00 12343 789    Etat=dword:2 Etat=70000 2 1   6  31 42343 555
    - - 2  0   0  00 42443 555    Init=dword:8 Init=3000000000 2 1  1507  00 42443 755
    - - 2  1   0  00 42443 789    Init=dword:8 Init=3000000000 1 1  1507  00 12343 755
    - - 3  0   0  31 12343 555    Init=dword:8 Init=3000000000 0 0     0  00 00003 555
    - - 9  1   0  31 12343 789    - - -1 0   0  31 12343 555)";

TEST_F(ScenarioInitializeTest, WhatWasResetBeforeAFailureStaysReset) {
  std::istringstream rows(kResets);
  std::int16_t mode, with_variables;
  std::int32_t error;
  std::string part, by, own, tasks, values;
  while (rows >> part >> by >> mode >> with_variables >> error >> own >> tasks >> values) {
    SCOPED_TRACE(by + ", " + std::to_string(mode) + ", " + std::to_string(with_variables));
    Configure(Changed(Night("31", "12343", "555"), part, by));
    Status status = 0;
    EXPECT_EQ(NumberRaisedBy([&] { status = ScenarioNamed("Night")->Initialize(mode, with_variables); }),
              error > 1000 ? kApplication + error : error);
    EXPECT_EQ(status, error ? VARIANT_FALSE : VARIANT_TRUE);
    EXPECT_EQ(ConfigurationAt("Scenarios\\Night"), Tidy(Changed(Night(own, tasks, values), part, by)));
    RegDeleteKeyTree(u"Scenarios", u"Night");
  }
}

// Objects loaded before go by what they hold, not by what the registry says meanwhile; only states are live.
TEST_F(ScenarioInitializeTest, WhatIsLoadedStaysWhatItWas) {
  Configure(Night("31", "12343", "555"));
  ObjectPtr<Scenario> scenario = ScenarioNamed("Night");
  scenario->TraitementsSelected();
  scenario->Variables();
  Configure(R"(Scenarios\Night\Ordre     tsk6=E
      Scenarios\Night\Var\Z     Init=dword:4
      Scenarios\Night\Taches\B  Etat=dword:3)");
  scenario->Initialize(MXScenarioModeInit_AfterError, 1);
  const std::string expected = Changed(Night("00", "44443", "789"), "Init=dword:9", "Init=dword:4");
  EXPECT_EQ(ConfigurationAt("Scenarios\\Night"), Tidy(Changed(expected, "tsk5=D", "tsk5=D  tsk6=E")));
}

TEST_F(ScenarioInitializeTest, MoreThanA16BitCounterHoldsIsRefusedBeforeAnyIsTouched) {
  Configure("Scenarios\\S  Etat=dword:3  Scenarios\\S\\Taches\\A  Etat=dword:3");
  ObjectPtr<Collection> order = Collection::Create();
  ObjectPtr<Variables> variables = Variables::Create();
  for (int i = 0; i < 32768; ++i) {  // only the first would change anything
    order->Add(i == 0 ? u"A" : u"no task", Variant::Missing());
    ObjectPtr<Variable> variable = Keyed<Variable>(Wide(std::to_string(i)));
    variable->SetVarType(i == 0 ? u"V" : u"C");
    variables->Add(*variable);
  }
  ObjectPtr<Scenario> scenario = ScenarioNamed("S");
  scenario->PutTraitementsSelected(order.get());
  scenario->PutVariables(variables.get());
  // The error, the states of scenario and task, and whether the variable was written.
  auto reset = [&](std::int16_t mode) {
    const std::int32_t error = NumberRaisedBy([&] { scenario->Initialize(mode, 1); });
    return std::to_string(error) + ": " + std::to_string(scenario->State()) + " " +
           std::to_string(scenario->Traitements()->Item(u"A")->State()) +
           (Exists("Scenarios\\S\\Var\\0") ? " written" : "");
  };
  EXPECT_EQ(reset(MXScenarioModeInit_All) + ", " + reset(MXScenarioModeInit_AfterError), "6: 3 3, 6: 3 3");
  EXPECT_EQ(reset(MXScenarioModeInit_Scenario), "6: 0 3") << "reset before the variables are counted";
  order->Remove(std::int16_t{2});
  variables->Remove(std::int16_t{2});
  EXPECT_EQ(reset(MXScenarioModeInit_AfterError), "5: 0 4") << "as many as fit are counted";
  EXPECT_EQ(reset(MXScenarioModeInit_Scenario), "0: 0 4 written");
}

}  // namespace
}  // namespace moxel::test
