// A scenario's live state, and the collections it owns.
#include "tests/scenarios/scenario_test.h"

namespace moxel::test {
namespace {

// What is read, or the number of the error.
template <class Read>
std::string Answer(Read&& read) {
  std::string text;
  const std::int32_t error = NumberRaisedBy([&] { text = Shown(Variant(read())); });
  return error == 0 ? text : "error " + std::to_string(error);
}

std::string LiveIn(Scenario& scenario, Traitement& task) {
  return Answer([&] { return scenario.State(); }) + "|" + Answer([&] { return task.State(); }) + "|" +
         Answer([&] { return scenario.Hwnd(); }) + "|" + Answer([&] { return scenario.Port(); });
}

// The data of all values; the states of scenario and task, the window and the port that are read.
constexpr const char* kLive = R"(
    dword:2    | I2 2     | I4 2     | I4 2         | 2           | I2 2    | I4 2           | '2'
    3000000000 | error 6  | error 6  | '3000000000' | -2000000000 | error 6 | I4 -2000000000 | '-2000000000'
    x          | error 13 | error 13 | 'x'          |             | I2 0    | I4 0           | ''
    2.5        | I2 2     | I4 2     | '2.5'        | nothing:    | I2 0    | I4 0           | ''
    dword:-1   | I2 -1    | I4 -1    | I4 -1        | dword:32768 | error 6 | I4 32768       | I4 32768)";

TEST_F(ScenarioTest, StateWindowAndPortAreReadAtEveryCall) {
  ObjectPtr<Scenario> scenario = ScenarioNamed("S");
  ObjectPtr<Traitement> task = TaskNamed("A", u"S");
  EXPECT_EQ(LiveIn(*scenario, *task), "I2 0|I2 0|I4 0|''") << "no keys";
  const std::vector<std::string> cells = Cells(kLive);
  for (std::size_t i = 0; i < cells.size(); i += 4) {
    const std::string& data = cells[i];
    const std::string path = "  Scenarios\\S", etat = "  Etat=" + data;
    Configure(path + etat + "  Hwnd=" + data + "  SockNum=" + data + path + "\\Taches\\A" + etat);
    EXPECT_EQ(LiveIn(*scenario, *task),
              cells[i + 1] + "|" + cells[i + 1] + "|" + cells[i + 2] + "|" + cells[i + 3])
        << data;
  }
}

TEST_F(ScenarioTest, AnotherProcessRunsTheScenario) {
  Configure("Scenarios\\S  Etat=dword:0  Hwnd=dword:0  Scenarios\\S\\Taches\\A  Etat=dword:0");
  ObjectPtr<Scenario> scenario = ScenarioNamed("S");
  ObjectPtr<Traitement> task = scenario->Traitements()->Item(u"A");
  EXPECT_EQ(LiveIn(*scenario, *task), "I2 0|I2 0|I4 0|''");
  Child engine([] {
    Configure(R"(Scenarios\S           Etat=dword:1  Hwnd=dword:-2  SockNum=dword:99
        Scenarios\S\Taches\A  Etat=dword:3)");
    return "done";
  });
  EXPECT_EQ(engine.Answer(), "done");
  EXPECT_EQ(LiveIn(*scenario, *task), "I2 1|I2 3|I4 -2|I4 99");
  RegDeleteKeyTree(u"Scenarios", u"S");
  EXPECT_EQ(LiveIn(*scenario, *task), "I2 0|I2 0|I4 0|''");
}

TEST_F(ScenarioTest, CollectionsAreLoadedOnceAndAgainWhenNoneIsPut) {
  ObjectPtr<Scenario> scenario = ScenarioNamed("S");
  auto loaded = [&] {
    return KeysOf(*scenario->Traitements()) + "|" + KeysOf(*scenario->Variables()) + "|" +
           KeysOf(*scenario->Utilisateurs()) + "|" + NamesIn(*scenario->TraitementsSelected());
  };
  auto put = [&](Traitements* tasks, Variables* variables, Utilisateurs* users, Collection* order) {
    scenario->PutTraitements(tasks);
    scenario->PutVariables(variables);
    scenario->PutUtilisateurs(users);
    scenario->PutTraitementsSelected(order);
  };
  EXPECT_EQ(loaded(), "|||");
  EXPECT_FALSE(Exists("Scenarios")) << "reading creates nothing";
  put(nullptr, nullptr, nullptr, nullptr);
  Configure(R"(Scenarios\S\Ordre  tsk1=1  Scenarios\S\User  1=1  Scenarios\S\Taches\1  Scenarios\S\Var\1)");
  EXPECT_EQ(loaded(), "1|1|1|1");
  Configure(R"(Scenarios\S\Ordre  tsk2=2  Scenarios\S\User  2=2  Scenarios\S\Taches\2  Scenarios\S\Var\2)");
  EXPECT_EQ(loaded(), "1|1|1|1");
  ObjectPtr<Traitements> kept = scenario->Traitements();
  put(nullptr, nullptr, nullptr, nullptr);
  EXPECT_EQ(loaded(), "1 2|1 2|1 2|1 2");
  EXPECT_EQ(KeysOf(*kept), "1");
  put(kept.get(), Variables::Create().get(), Utilisateurs::Create().get(), Collection::Create().get());
  EXPECT_EQ(loaded(), "1|||") << "collections put are not loaded";
}

TEST_F(ScenarioTest, CollectionsAndTasksOutliveTheirOwner) {
  Configure("Scenarios\\S\\Taches\\A  Etat=dword:2");
  ObjectPtr<Scenario> scenario = ScenarioNamed("S");
  ObjectPtr<Traitements> tasks = scenario->Traitements();
  scenario = nullptr;
  ObjectPtr<Traitement> task = tasks->Item(u"A");
  tasks = nullptr;
  EXPECT_EQ(task->State(), 2);
}

}  // namespace
}  // namespace moxel::test
