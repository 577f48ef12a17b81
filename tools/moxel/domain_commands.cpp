#include "moxel/domain_commands.h"

#include <memory>
#include <string>
#include <vector>

#include "moxel/descriptions.h"
#include "moxel/verbs.h"

namespace moxel::tool {
namespace {

struct Options {
  std::string name;
  std::string comment;
  bool json = false;
  bool variables = false;
  bool scenario_variables = false;
  bool force = false;
};

CLI::App* AddVerb(CLI::App& group, const char* name, const char* help, const char* example) {
  return group.add_subcommand(name, help)->footer(std::string("Example:\n  moxel domain ") + example);
}

void AddName(CLI::App* verb, Options& options) {
  verb->add_option("DOMAIN", options.name, "Name of the domain")->required();
}

void List(const Options& options, const Console& console) {
  const ObjectModel model;
  Json domains = Json::array();
  for (const Object& domain : ObjectsOf(model.Domains())) {
    const Json whole = DescribeDomain(model, domain);
    domains.push_back({{"name", whole["name"]},
                       {"comment", whole["comment"]},
                       {"variables", whole["variables"].size()},
                       {"scenarios", whole["scenarios"].size()}});
  }
  if (options.json) return PrintJson(domains, console);
  PrintTable(
      {{"NAME", "name"}, {"VARIABLES", "variables"}, {"SCENARIOS", "scenarios"}, {"COMMENT", "comment"}},
      domains, console);
}

void Show(const Options& options, const Console& console) {
  const ObjectModel model;
  const Json domain = DescribeDomain(model, model.Domain(options.name));
  if (options.json) return PrintJson(domain, console);
  PrintFields({{"Domain", "name"}, {"Comment", "comment"}}, domain, console);
  PrintSection("Variables", kVariableColumns, domain["variables"], console);
  PrintSection("Scenarios", kSummaryColumns, domain["scenarios"], console);
}

void Create(const Options& options) {
  const ObjectModel model;
  Change([&] {
    CallMethod(model.Domains().get(), u"NewDomain",
               {StoredArgument(options.name), StoredArgument(options.comment)});
  });
}

void Update(const Options& options) {
  const ObjectModel model;
  const Object domain = model.Domain(options.name);
  Change([&] { CallMethod(domain.get(), u"Update", {StoredArgument(options.comment)}); });
}

// The component's two flags ask for a reset when they are 1, whatever their names say.
void Reset(const Options& options) {
  const ObjectModel model;
  const Object domain = model.Domain(options.name);
  Change([&] {
    CallMethod(domain.get(), u"Initialize", {options.variables ? 1 : 0, options.scenario_variables ? 1 : 0});
  });
}

// The component does not say when it could not delete one of the scenarios.
void RequireDeleted(const ObjectModel& model, const std::vector<std::string>& scenarios) {
  for (const PlacedScenario& placed : model.ScenariosOfNoDomain())
    for (const std::string& name : scenarios)
      if (NameOf(placed.scenario) == name) throw ToolError(Named("scenario", name) + ": cannot be deleted");
}

void Delete(const Options& options) {
  ObjectModel model;
  const Object domains = model.Domains();
  const Object domain = model.Domain(options.name);
  std::vector<std::string> scenarios;
  for (const PlacedScenario& placed : model.ScenariosOfDomain(domain))
    scenarios.push_back(NameOf(placed.scenario));
  Change([&] {
    const Variant deleted = CallMethod(domains.get(), u"DeleteDomain", {domain.get(), options.force ? 1 : 0});
    if (deleted.ToI2() == 0) throw ToolError(Named("domain", options.name) + ": cannot be deleted");
    model.Reload();
    RequireDeleted(model, scenarios);
  });
}

void AddQueries(CLI::App& group, Console& console) {
  auto options = std::make_shared<Options>();
  CLI::App* list = AddVerb(group, "list", "List all domains", "list --json");
  list->add_flag("--json", options->json, "Print the list as JSON");
  list->callback([options, &console] { List(*options, console); });

  CLI::App* show = AddVerb(group, "show", "Show a domain, its variables (passwords masked) and its scenarios",
                           "show Sales");
  AddName(show, *options);
  show->add_flag("--json", options->json, "Print the domain as JSON");
  show->callback([options, &console] { Show(*options, console); });
}

void AddChanges(CLI::App& group) {
  auto options = std::make_shared<Options>();
  CLI::App* create =
      AddVerb(group, "create", "Create a domain", "create Purchasing --comment 'Orders to suppliers'");
  create->add_option("NAME", options->name, "Name of the new domain")->required();
  create->add_option("--comment", options->comment, "Comment on the domain")->type_name("TEXT");
  create->callback([options] { Create(*options); });

  CLI::App* update = AddVerb(group, "update", "Change the comment on a domain",
                             "update Sales --comment 'Orders and invoices'");
  AddName(update, *options);
  update->add_option("--comment", options->comment, "New comment")->type_name("TEXT")->required();
  update->callback([options] { Update(*options); });

  CLI::App* reset = AddVerb(group, "reset", "Reset the scenarios of a domain before a new run",
                            "reset Sales --variables --scenario-variables");
  AddName(reset, *options);
  reset->add_flag("--variables", options->variables, "Give the domain's variables their initial values");
  reset->add_flag("--scenario-variables", options->scenario_variables,
                  "Give the variables of its scenarios their initial values");
  reset->callback([options] { Reset(*options); });

  CLI::App* erase = AddVerb(group, "delete", "Delete a domain", "delete Logistics --force");
  AddName(erase, *options);
  erase->add_flag("-f,--force", options->force, "Delete its variables and its scenarios with it");
  erase->callback([options] { Delete(*options); });
}

}  // namespace

void AddDomainCommands(CLI::App& app, Console& console) {
  CLI::App* group = app.add_subcommand("domain", "List, show, create, change, reset and delete domains");
  RequireVerb(*group);
  group->footer("Example:\n  moxel domain show Sales");
  AddQueries(*group, console);
  AddChanges(*group);
}

}  // namespace moxel::tool
