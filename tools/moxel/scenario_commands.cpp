#include "moxel/scenario_commands.h"

#include <memory>
#include <string>

#include "moxel/descriptions.h"
#include "moxel/enumerations.h"
#include "moxel/verbs.h"

namespace moxel::tool {
namespace {

struct Options {
  std::string name;
  std::string domain;
  std::string mode = "all";
  bool json = false;
  bool variables = false;
  bool force = false;
};

CLI::App* AddVerb(CLI::App& group, const char* name, const char* help, const char* example) {
  return group.add_subcommand(name, help)->footer(std::string("Example:\n  moxel scenario ") + example);
}

void AddName(CLI::App* verb, Options& options) {
  verb->add_option("SCENARIO", options.name, "Name of the scenario")->required();
}

void List(const Options& options, bool of_one_domain, const Console& console) {
  const ObjectModel model;
  Json scenarios = Json::array();
  for (const PlacedScenario& placed :
       of_one_domain ? model.ScenariosOfDomain(model.Domain(options.domain)) : model.AllScenarios())
    scenarios.push_back(SummarizeScenario(placed));
  if (options.json) return PrintJson(scenarios, console);
  PrintTable({{"NAME", "name"}, {"DOMAIN", "domain"}, kStateColumn, {"MODE", "mode"}}, scenarios, console);
}

void Show(const Options& options, const Console& console) {
  const ObjectModel model;
  const Json scenario = DescribeScenario(model.Scenario(options.name));
  if (options.json) return PrintJson(scenario, console);
  PrintFields({{"Scenario", "name"},
               {"Domain", "domain"},
               {"State", "state", StyleOfState},
               {"Mode", "mode"},
               {"Directory", "directory"},
               {"Socket", "useSocket"},
               {"Port", "port"},
               {"Window", "hwnd"},
               {"Last run", "lastRun"}},
              scenario, console);
  PrintSection("Users", {{"NAME", "name"}, {"PERMISSION", "permission"}}, scenario["users"], console);
  PrintSection("Variables", kVariableColumns, scenario["variables"], console);
  PrintSection("Tasks", kTaskColumns, scenario["tasks"], console);
}

std::int32_t ModeOf(const std::string& name) {
  if (name == "all") return MXScenarioModeInit_All;
  return name == "scenario" ? MXScenarioModeInit_Scenario : MXScenarioModeInit_AfterError;
}

// The component's flag asks for a reset when it is 1, whatever its name says.
void Reset(const Options& options) {
  const ObjectModel model;
  const PlacedScenario placed = model.Scenario(options.name);
  Change([&] {
    CallMethod(placed.scenario.get(), u"Initialize", {ModeOf(options.mode), options.variables ? 1 : 0});
  });
}

void Delete(const Options& options) {
  const ObjectModel model;
  const PlacedScenario placed = model.Scenario(options.name);
  Change([&] {
    const Variant deleted = CallMethod(placed.collection.get(), u"DeleteScenario",
                                       {placed.scenario.get(), options.force ? 1 : 0});
    if (deleted.ToI2() == 0) throw ToolError(Named("scenario", options.name) + ": cannot be deleted");
  });
}

void AddList(CLI::App& group, Console& console) {
  CLI::App* verb =
      AddVerb(group, "list", "List all scenarios, those of domains first", "list --domain Sales");
  auto options = std::make_shared<Options>();
  CLI::Option* domain =
      verb->add_option("--domain", options->domain, "Only the scenarios of this domain")->type_name("DOMAIN");
  verb->add_flag("--json", options->json, "Print the list as JSON");
  verb->callback([options, domain, &console] { List(*options, domain->count() > 0, console); });
}

void AddShow(CLI::App& group, Console& console) {
  CLI::App* verb = AddVerb(
      group, "show", "Show a scenario, its users, its variables (passwords masked) and its tasks in order",
      "show Night");
  auto options = std::make_shared<Options>();
  AddName(verb, *options);
  verb->add_flag("--json", options->json, "Print the scenario as JSON");
  verb->callback([options, &console] { Show(*options, console); });
}

void AddReset(CLI::App& group) {
  CLI::App* verb =
      AddVerb(group, "reset", "Reset a scenario before a new run", "reset Night --mode after-error");
  auto options = std::make_shared<Options>();
  AddName(verb, *options);
  verb->add_option(
          "--mode", options->mode,
          "all: it and all its tasks; scenario: it alone; after-error: it, and tasks that failed or were "
          "running are to be retried")
      ->check(CLI::IsMember({"all", "scenario", "after-error"}))
      ->capture_default_str();
  verb->add_flag("--variables", options->variables, "Give its variables their initial values");
  verb->callback([options] { Reset(*options); });
}

void AddDelete(CLI::App& group) {
  CLI::App* verb = AddVerb(group, "delete", "Delete a scenario", "delete Backup --force");
  auto options = std::make_shared<Options>();
  AddName(verb, *options);
  verb->add_flag("-f,--force", options->force, "Delete its variables and its tasks with it");
  verb->callback([options] { Delete(*options); });
}

}  // namespace

void AddScenarioCommands(CLI::App& app, Console& console) {
  CLI::App* group = app.add_subcommand("scenario", "List, show, reset and delete scenarios");
  RequireVerb(*group);
  group->footer("Example:\n  moxel scenario show Night");
  AddList(*group, console);
  AddShow(*group, console);
  AddReset(*group);
  AddDelete(*group);
}

}  // namespace moxel::tool
