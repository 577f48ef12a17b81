// The order of a scenario's tasks, and the one mark that its loading leaves.
#include <sstream>

#include "tests/scenarios/scenario_test.h"

namespace moxel::test {
namespace {

class TaskOrderTest : public ScenarioTest {};

// The names that an order holds under keys.
std::string NamesAt(const Collection& order, const std::string& keys) {
  std::istringstream each(keys);
  std::string names;
  for (std::string key; each >> key;) names += " " + Narrow(order.Item(Wide(key)).ToText());
  return names.substr(names.empty() ? 0 : 1);
}

// The values of the order, the names and keys they make, and the tasks with a mark. A prefix is cut wherever
// it stands in a name; a name without position takes that of the value before it.
constexpr const char* kOrders = R"(
    tsk1=A  tsk3=B          | A B   | 2 4   | B:4     |  tsk0=A                  |     |            |
    tsk3=A  tsk2=C  tsk1=B  | B C A | 2 3 4 | B:4     |  tsk1=A  tsk0=B          | A   | 2          | B:2
    tsk2=A  tsk02=B         | B     | 3     | B:3     |  tsk2=A  tskX=B          | B   | 3          | B:3
    tskX=A  tsk2=B          | B     | 3     | B:3     |  tsk1=A  tsk-2=B  tskX=C | A   | 2          | C:2
    5=A                     | A     | 6     | A:6     |  tsk2=A  TSK3=B          | B   | 3          | B:3
    1tsk2=A                 | A     | 13    | A:13    |  tsktsk1=A               | A   | 2          | A:2
    tsk2=A  tstskk3=B       | B     | 3     | B:3     |  tsk 1=A                 | A   | 2          | A:2
    tsk2.5=A  tsk3.5=B      | A B   | 3 5   | B:5     |  tsk1=A  tsk32767=B      | A B | 2 32768    | B:2
    tsk32766=A              | A     | 32767 | A:32767 |  tsk1=A  tsk2147483647=B | A   | 2          | B:2
    tsk1=A  tsk2147483648=B | B     | 2     | B:2     |  tsk2147483646=A         | A   | 2147483647 |
    tsk1e3=A                | A     | 1001  | A:1001  |  tsk1=A  tsk3=B  =C      | A C | 2 4        | C:4
    tsk1=A  tsk2=nothing:   | A A   | 2 3   | A:3     |  tsk1=nothing:  tsk2=B   | B   | 3          | B:3
    tsk1=A  tsk2=           | A     | 2     |         |  tsk1=A  tsk2=B  tsk02=  | A   | 2          |
    tsk1=A  tsk2=b          | A b   | 2 3   | B:3     |  tsk1=A  tsk2=A          | A A | 2 3        | A:3
    tsk1=A  tsk2=dword:-12  | A -12 | 2 3   |         |  tsk1=Z  tsk2=A          | Z A | 2 3        | A:3)";

TEST_F(TaskOrderTest, PositionsNamesAndTheMark) {
  std::vector<std::string> cells = Cells(kOrders);
  const std::string too_long = "tsk1=A  tsk2=" + std::string(2047, 'x') + "  tsk3=B";
  const std::string long_name = "tsk1=A  " + std::string(255, '0') + "=dword:1  tsk3=B";
  for (const std::string& end_of_reading : {too_long, long_name})
    cells.insert(cells.end(), {end_of_reading, "A", "2", "A:2"});
  for (std::size_t i = 0; i < cells.size(); i += 4) {
    const std::string name = "S" + std::to_string(i), path = "  Scenarios\\" + name;
    Configure(path + "\\Taches\\A" + path + "\\Taches\\B" + path + "\\Taches\\C" + path + "\\Ordre  " +
              cells[i]);
    ObjectPtr<Scenario> scenario = ScenarioNamed(name);
    ObjectPtr<Traitements> tasks = scenario->Traitements();
    EXPECT_EQ(NamesIn(*scenario->TraitementsSelected()), cells[i + 1]) << cells[i];
    EXPECT_EQ(NamesAt(*scenario->TraitementsSelected(), cells[i + 2]), cells[i + 1]) << cells[i];
    EXPECT_EQ(MarksOf(*tasks), cells[i + 3]) << cells[i];
  }
}

TEST_F(TaskOrderTest, OnlyTasksReadBeforeTheOrderGetTheMark) {
  Configure(R"(Scenarios\S\Ordre  tsk1=A  tsk2=B
      Scenarios\S\Taches\A  Scenarios\S\Taches\B)");
  ObjectPtr<Scenario> scenario = ScenarioNamed("S");
  EXPECT_EQ(NamesIn(*scenario->TraitementsSelected()), "A B");
  EXPECT_EQ(MarksOf(*scenario->Traitements()), "");
  scenario->TraitementsSelected();
  EXPECT_EQ(MarksOf(*scenario->Traitements()), "") << "the order is loaded once";
  scenario->PutTraitementsSelected(nullptr);
  scenario->TraitementsSelected();
  EXPECT_EQ(MarksOf(*scenario->Traitements()), "B:3");

  scenario = ScenarioNamed("S");
  scenario->Initialize(MXScenarioModeInit_All, 0);
  EXPECT_EQ(MarksOf(*scenario->Traitements()), "") << "a reset reads the order first";

  scenario = ScenarioNamed("S");
  ObjectPtr<Traitements> tasks = Traitements::Create();
  tasks->Add(*TaskNamed("b"));
  scenario->PutTraitements(tasks.get());
  scenario->TraitementsSelected();
  EXPECT_EQ(MarksOf(*tasks), "b:3") << "tasks put get it as well";
}

}  // namespace
}  // namespace moxel::test
