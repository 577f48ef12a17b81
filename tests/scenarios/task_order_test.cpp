// The order of a scenario's tasks, and the one mark that its loading leaves.
#include <sstream>

#include "tests/scenarios/scenario_test.h"

namespace moxel::test {
namespace {

class TaskOrderTest : public ScenarioTest {};

// What an order holds of the expected "key=name key=name": each by its position and by its key.
std::string Found(const Collection& order, const std::string& expected) {
  std::string found;
  std::istringstream entries(expected);
  std::int32_t position = 0;
  for (std::string entry; entries >> entry;) {
    const std::u16string key = Wide(entry.substr(0, entry.find('=')));
    std::u16string name = u"?";
    NumberRaisedBy([&] { name = order.Item(key).ToText(); });
    if (++position <= order.Count() && order.Item(position).ToText() == name)
      found += (position > 1 ? " " : "") + Narrow(key + u"=" + name);
  }
  for (; position < order.Count(); ++position) found += " and " + Narrow(order.Item(position + 1).ToText());
  return found;
}

// The values of the order, the entries they make, and the tasks with a mark. A prefix is cut wherever it
// stands in a name; a name without position takes that of the value before it.
constexpr const char* kOrders = R"(
    tsk1=A  tsk3=B              | 2=A 4=B       | B:4     |    tsk0=A                   | | |
    tsk3=A  tsk2=C  tsk1=B      | 2=B 3=C 4=A   | B:4     |    tsk1=A  tsk0=B           | 2=A         | B:2 |
    tsk2=A  tsk02=B             | 3=B           | B:3     |    tsk2=A  tskX=B           | 3=B         | B:3 |
    tskX=A  tsk1=B              | 2=B           | B:2     |    tsk1=A  tsk-2=B  tskX=C  | 2=A         | C:2 |
    5=A                         | 6=A           | A:6     |    tsk2=A  TSK3=B           | 3=B         | B:3 |
    1tsk2=A                     | 13=A          | A:13    |    tsktsk1=A                | 2=A         | A:2 |
    tsk2=A  tstskk3=B           | 3=B           | B:3     |    tsk 1=A                  | 2=A         | A:2 |
    tsk2.5=A  tsk3.5=B  tsk.5=C | 3=A 5=B       | C:5     |    tsk1=A  tsk32767=B       | 2=A 32768=B | B:2 |
    tsk32766=A                  | 32767=A       | A:32767 |    tsk1=A  tsk2147483647=B  | 2=A         | B:2 |
    tsk2147483646=A             | 2147483647=A  |         |    tsk1=A  tsk2147483648=B  | 2=B         | B:2 |
    tsk1e3=A                    | 1001=A        | A:1001  |    tsk1=A  tsk3=B  =C       | 2=A 4=C     | C:4 |
    tsk1=A  tsk2=nothing:       | 2=A 3=A       | A:3     |    tsk1=nothing:  tsk2=B    | 3=B         | B:3 |
    tsk1=A  tsk2=               | 2=A           |         |    tsk1=A  tsk2=B  tsk02=   | 2=A         |     |
    tsk1=A  tsk2=dword:-12      | 2=A 3=-12     |         |    tsk1=Z  tsk2=A           | 2=Z 3=A     | A:3 |
    tsk1=A  tsk2=b              | 2=A 3=b       | B:3     |    tsk1=A  tsk2=A           | 2=A 3=A     | A:3 |)";

TEST_F(TaskOrderTest, PositionsNamesAndTheMark) {
  std::vector<std::string> cells = Cells(kOrders);
  const std::string too_long = "tsk1=A  tsk2=" + std::string(2047, 'x') + "  tsk3=B";
  const std::string long_name = "tsk1=A  " + std::string(255, '0') + "=dword:1  tsk3=B";
  for (const std::string& end_of_reading : {too_long, long_name})
    cells.insert(cells.end(), {end_of_reading, "2=A", "A:2"});
  for (std::size_t i = 0; i < cells.size(); i += 3) {
    const std::string name = "S" + std::to_string(i), path = "  Scenarios\\" + name;
    Configure(path + "\\Taches\\A" + path + "\\Taches\\B" + path + "\\Taches\\C" + path + "\\Ordre  " +
              cells[i]);
    ObjectPtr<Scenario> scenario = ScenarioNamed(name);
    ObjectPtr<Traitements> tasks = scenario->Traitements();
    EXPECT_EQ(Found(*scenario->TraitementsSelected(), cells[i + 1]), cells[i + 1]) << cells[i];
    EXPECT_EQ(MarksOf(*tasks), cells[i + 2]) << cells[i];
  }
}

TEST_F(TaskOrderTest, OnlyTasksReadBeforeTheOrderGetTheMark) {
  Configure(R"(Scenarios\S\Ordre  tsk1=A  tsk2=B
      Scenarios\S\Taches\A  Scenarios\S\Taches\B)");
  ObjectPtr<Scenario> scenario = ScenarioNamed("S");
  for (int time = 0; time < 2; ++time) {  // the order is loaded once
    EXPECT_EQ(NamesIn(*scenario->TraitementsSelected()), "A B");
    EXPECT_EQ(MarksOf(*scenario->Traitements()), "");
  }
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
