// Resetting a scenario before a new run.
#include <map>
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

struct Change {
  std::string part, by;
};

std::string Changed(std::string text, const Change& change) {
  const std::size_t at = text.find(change.part);
  return at == text.npos ? text : text.replace(at, change.part.size(), change.by);
}

// What is wrong, mode and flag, the error, and what the scenario is afterwards.
constexpr const char* kResets = R"(
    nothing 0  0    0  00 00003 555      order 0 1    5  31 02343 555
    nothing 0  1    0  00 00003 789      order 2 1    5  31 42343 555
    nothing 0 -1    0  00 00003 555      order 1 1    0  00 12343 789
    nothing 0  2    0  00 00003 555      text  2 1   13  31 42343 555
    nothing 1  0    0  00 12343 555      text  0 1    0  00 00003 789
    nothing 1  1    0  00 12343 789      big   2 1    6  31 42343 555
    nothing 2  0    0  00 42443 555      init  2 1 1507  00 42443 755
    nothing 2  1    0  00 42443 789      init  1 1 1507  00 12343 755
    nothing 3  0    0  31 12343 555      init  0 0    0  00 00003 555
    nothing 9  1    0  31 12343 789      nothing -1 0 0  31 12343 555)";

TEST_F(ScenarioInitializeTest, WhatWasResetBeforeAFailureStaysReset) {
  std::map<std::string, Change> changes{{"nothing", {}},
                                        {"order", {"tsk2=B", "tsk2=Z"}},
                                        {"text", {"Taches\\B  Etat=dword:2", "Taches\\B  Etat=x"}},
                                        {"big", {"Taches\\B  Etat=dword:2", "Taches\\B  Etat=70000"}},
                                        {"init", {"Init=dword:8", "Init=3000000000"}}};
  std::istringstream rows(kResets);
  std::int16_t mode, with_variables;
  std::int32_t error;
  std::string wrong, own, tasks, values;
  while (rows >> wrong >> mode >> with_variables >> error >> own >> tasks >> values) {
    SCOPED_TRACE(wrong + ", " + std::to_string(mode) + ", " + std::to_string(with_variables));
    Configure(Changed(Night("31", "12343", "555"), changes[wrong]));
    Status status = 0;
    EXPECT_EQ(NumberRaisedBy([&] { status = ScenarioNamed("Night")->Initialize(mode, with_variables); }),
              error > 1000 ? kApplication + error : error);
    EXPECT_EQ(status, error ? VARIANT_FALSE : VARIANT_TRUE);
    EXPECT_EQ(ConfigurationAt("Scenarios\\Night"), Tidy(Changed(Night(own, tasks, values), changes[wrong])));
    RegDeleteKeyTree(u"Scenarios", u"Night");
  }
}

TEST_F(ScenarioInitializeTest, WithoutAnOrderOnlyTheScenarioItselfIsReset) {
  Configure("Scenarios\\S\\Taches\\A  Etat=dword:3");
  for (const char* name : {"S", "New"}) EXPECT_EQ(ScenarioNamed(name)->Initialize(0, 1), VARIANT_TRUE);
  EXPECT_EQ(ConfigurationAt("Scenarios"), Tidy(R"(Scenarios
      Scenarios\New        Etat=dword:0  Admin=dword:0
      Scenarios\S          Etat=dword:0  Admin=dword:0
      Scenarios\S\Taches
      Scenarios\S\Taches\A  Etat=dword:3)"));
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
  const std::string expected = Changed(Night("00", "44443", "789"), {"Init=dword:9", "Init=dword:4"});
  EXPECT_EQ(ConfigurationAt("Scenarios\\Night"), Tidy(Changed(expected, {"tsk5=D", "tsk5=D  tsk6=E"})));
}

TEST_F(ScenarioInitializeTest, MoreThanA16BitCounterHoldsIsRefusedBeforeAnyIsTouched) {
  Configure("Scenarios\\S  Etat=dword:3  Scenarios\\S\\Taches\\A  Etat=dword:3");
  ObjectPtr<Scenario> scenario = ScenarioNamed("S");
  ObjectPtr<Collection> order = Collection::Create();
  order->Add(u"A", Variant::Missing());
  for (int i = 1; i < 32768; ++i) order->Add(u"no task", Variant::Missing());
  scenario->PutTraitementsSelected(order.get());
  ObjectPtr<Variables> variables = Variables::Create();
  for (int i = 0; i < 32768; ++i) {
    ObjectPtr<Variable> variable = Variable::Create();
    variable->key = Wide(std::to_string(i));
    variable->SetVarType(i == 0 ? u"V" : u"C");
    variables->Add(*variable);
  }
  scenario->PutVariables(variables.get());
  auto reset = [&](std::int16_t mode, std::int16_t with_variables) {
    const std::int32_t error = NumberRaisedBy([&] { scenario->Initialize(mode, with_variables); });
    return std::to_string(error) + ": " + std::to_string(scenario->State()) +
           std::to_string(scenario->Traitements()->Item(u"A")->State());
  };
  EXPECT_EQ(reset(MXScenarioModeInit_All, 1) + ", " + reset(MXScenarioModeInit_AfterError, 1),
            "6: 33, 6: 33");
  EXPECT_EQ(reset(MXScenarioModeInit_Scenario, 1), "6: 03") << "reset before the variables are counted";
  EXPECT_FALSE(Exists("Scenarios\\S\\Var"));
  order->Remove(std::int16_t{2});
  variables->Remove(std::int16_t{2});
  EXPECT_EQ(reset(MXScenarioModeInit_AfterError, 0), "5: 04") << "as many as fit are counted";
  EXPECT_EQ(reset(MXScenarioModeInit_Scenario, 1), "0: 04");
  EXPECT_TRUE(Exists("Scenarios\\S\\Var"));
}

}  // namespace
}  // namespace moxel::test
