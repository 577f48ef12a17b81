#include "scenarios/scenarios.h"

#include "tests/scenarios/scenario_test.h"

namespace moxel::test {
namespace {

class ScenariosTest : public ScenarioTest {
 protected:
  ScenariosTest() {
    for (const char* name : {"R", "S"}) scenarios_->Add(*ScenarioNamed(name));
  }

  ObjectPtr<Scenarios> scenarios_ = Scenarios::Create();
};

const Failure kRefused{kApplication + 1702, u"Scenarios:DeleteScenario"};

TEST_F(ScenariosTest, ADeletedScenarioStaysInTheCollectionOneThatWasNotThereLeavesIt) {
  const struct {
    const char *what, *configuration;
    std::int16_t force;
    Failure failure;
    Status deleted;
    const char* held;  // afterwards
  } cases[] = {
      {"a task", "Scenarios\\S\\Taches\\A\\Action\\Goto", 0, kRefused, 0, "R S"},
      {"a variable", R"(Scenarios\S\Var\A)", 0, kRefused, 0, "R S"},
      {"users and an order", R"(Scenarios\S\User  1=bob  Scenarios\S\Ordre  tsk1=A)", 0, {}, -1, "R S"},
      {"nothing", R"(Scenarios\S)", 0, {}, -1, "R S"},
      {"forced", R"(Scenarios\S\Taches\A\Action\Goto  Scenarios\S\Var\A)", 2, {}, -1, "R S"},
      {"no key", R"(Scenarios\T)", 0, {}, 0, "R"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    RegDeleteKeyTree(u"Scenarios", u"");
    Configure(std::string("Scenarios\\R  Domain=D  ") + c.configuration);
    const std::string before = ConfigurationAt("Scenarios");
    ObjectPtr<Scenario> scenario = ScenarioNamed("S");
    if (scenarios_->Count() < 2) scenarios_->Add(*scenario);
    Status deleted = 0;
    EXPECT_EQ(FailureOf([&] { deleted = scenarios_->DeleteScenario(*scenario, c.force); }), c.failure);
    EXPECT_EQ(deleted, c.deleted);
    EXPECT_EQ(KeysOf(*scenarios_), c.held);
    EXPECT_EQ(ConfigurationAt("Scenarios"), deleted ? Tidy("Scenarios  Scenarios\\R  Domain=D") : before);
  }
}

TEST_F(ScenariosTest, TheCheckGoesByTheCollectionsOfTheObject) {
  Configure("Scenarios\\R  Scenarios\\S\\Taches\\A");
  ObjectPtr<Scenario> with_task = scenarios_->Item(u"S"), without = scenarios_->Item(u"R");
  without->PutTraitements(with_task->Traitements().get());
  EXPECT_EQ(FailureOf([&] { scenarios_->DeleteScenario(*without, 0); }), kRefused);
  with_task->PutTraitements(Traitements::Create().get());
  EXPECT_EQ(scenarios_->DeleteScenario(*with_task, 0), VARIANT_TRUE);
  EXPECT_EQ(ConfigurationAt("Scenarios"), Tidy("Scenarios  Scenarios\\R"));
}

TEST_F(ScenariosTest, AScenarioThatIsNotHeldAndOneWithoutName) {
  Configure("Scenarios\\T  Scenarios\\R\\Taches\\A  Scenarios\\User\\bob  User\\bob");
  EXPECT_EQ(scenarios_->DeleteScenario(*ScenarioNamed("T"), 0), VARIANT_TRUE);
  EXPECT_EQ(FailureOf([&] { scenarios_->DeleteScenario(*ScenarioNamed("T"), 0); }), Runtime(5));
  EXPECT_EQ(scenarios_->DeleteScenario(*ScenarioNamed(""), 1), VARIANT_TRUE);
  EXPECT_FALSE(Exists("Scenarios")) << "the empty name deletes every scenario";
  EXPECT_TRUE(Exists("User\\bob"));
  EXPECT_EQ(KeysOf(*scenarios_), "R S");
}

}  // namespace
}  // namespace moxel::test
