// Setting the state of a task, and deleting one.
#include "scenarios/traitements.h"

#include "tests/scenarios/scenario_test.h"

namespace moxel::test {
namespace {

class TraitementsTest : public ScenarioTest {};

TEST_F(TraitementsTest, OnlyThreeStatesCanBeSetInTheScenarioThatIsNamed) {
  ObjectPtr<Traitement> task = TaskNamed("A", u"S");
  const std::string path = "Scenarios\\Other\\Taches\\A", stored = "9092949";  // by the states from -1 on
  for (std::int16_t state = -1; state <= 5; ++state) {
    Configure(path + "  Etat=dword:9");
    EXPECT_EQ(task->Initialize(u"Other", state), VARIANT_TRUE) << state;
    EXPECT_EQ(ConfigurationAt(path),
              path + "  Etat=dword:" + stored[static_cast<std::size_t>(state + 1)] + "\n");
  }
  EXPECT_EQ(task->State(), 0) << "the state is read where the task comes from";
  task->Initialize(std::int32_t{13}, 3);
  EXPECT_FALSE(Exists("Scenarios\\13")) << "a key is created for what is written";
  task->Initialize(std::int32_t{12}, 2);
  EXPECT_EQ(ConfigurationAt("Scenarios\\12\\Taches\\A"), Tidy("Scenarios\\12\\Taches\\A  Etat=dword:2"));
}

TEST_F(TraitementsTest, TheTaskLeavesTheCollectionWhateverBecomesOfItsKey) {
  const struct {
    const char* what;
    const char16_t* scenario;
    const char* renamed;  // before it is deleted
    std::int32_t error;
    Status deleted;
    const char *held, *keys;  // afterwards, of both scenarios
  } cases[] = {
      {"its key is there", u"S", "A", 0, VARIANT_TRUE, "B", "B C|A"},
      {"other letter case", u"s", "a", 0, VARIANT_TRUE, "B", "B C|A"},
      {"of another scenario", u"T", "A", 0, VARIANT_TRUE, "B", "A B C|"},
      {"of no scenario", u"U", "A", 0, VARIANT_FALSE, "B", "A B C|A"},
      {"renamed like another", u"S", "B", 0, VARIANT_TRUE, "A", "A C|A"},
      {"renamed to one not held", u"S", "C", 5, VARIANT_FALSE, "A B", "A B|A"},
      {"without name", u"S", "", 5, VARIANT_FALSE, "A B", "|A"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    RegDeleteKeyTree(u"Scenarios", u"");
    Configure(R"(Scenarios\S\Ordre   tsk1=A  tsk2=B
        Scenarios\S\Taches\A\Action\Goto  Scenarios\S\Taches\B  Scenarios\T\Taches\A)");
    ObjectPtr<Traitements> tasks = ScenarioNamed("S")->Traitements();
    Configure("Scenarios\\S\\Taches\\C");
    ObjectPtr<Traitement> task = tasks->Item(u"A");
    task->key = Wide(c.renamed);
    Status deleted = VARIANT_FALSE;
    EXPECT_EQ(NumberRaisedBy([&] { deleted = tasks->DeleteTraitement(*task, c.scenario); }), c.error);
    EXPECT_EQ(deleted, c.deleted);
    task->key = u"A";
    EXPECT_EQ(KeysOf(*tasks), c.held);
    ObjectPtr<Scenario> afresh = ScenarioNamed("S");
    EXPECT_EQ(KeysOf(*afresh->Traitements()) + "|" + KeysOf(*ScenarioNamed("T")->Traitements()), c.keys);
    EXPECT_EQ(NamesIn(*afresh->TraitementsSelected()), "A B") << "the order goes on naming it";
  }
}

}  // namespace
}  // namespace moxel::test
