#include "moxel/task_commands.h"

#include <memory>
#include <string>

#include "moxel/descriptions.h"
#include "moxel/enumerations.h"
#include "moxel/verbs.h"

namespace moxel::tool {
namespace {

struct Options {
  std::string scenario;
  std::string task;
  std::string state = "not-processed";
  bool json = false;
};

CLI::App* AddVerb(CLI::App& group, const char* name, const char* help, const char* example,
                  Options& options) {
  CLI::App* verb = group.add_subcommand(name, help);
  verb->footer(std::string("Example:\n  moxel task ") + example);
  verb->add_option("SCENARIO", options.scenario, "Name of the scenario")->required();
  return verb;
}

void AddName(CLI::App* verb, Options& options) {
  verb->add_option("TASK", options.task, "Name of the task")->required();
}

struct PlacedTask {
  Object scenario;
  Object collection;
  Object task;
};

PlacedTask FindTask(const ObjectModel& model, const Options& options) {
  const Object scenario = model.Scenario(options.scenario).scenario;
  const Object collection = ObjectProperty(scenario, u"Traitements");
  const Object task = Find(collection, options.task);
  if (!task)
    throw ToolError(Named("task", options.task) + " of " + Named("scenario", options.scenario) +
                    ": not found");
  return {scenario, collection, task};
}

void List(const Options& options, const Console& console) {
  const ObjectModel model;
  const Json tasks = DescribeTasks(model.Scenario(options.scenario).scenario);
  if (options.json) return PrintJson(tasks, console);
  PrintTable(kTaskColumns, tasks, console);
}

std::int32_t StateOf(const std::string& name) {
  if (name == "not-processed") return MXTraitementState_NotProcessed;
  return name == "processed" ? MXTraitementState_Processed : MXTraitementState_Retry;
}

void Reset(const Options& options) {
  const ObjectModel model;
  const PlacedTask placed = FindTask(model, options);
  const Variant scenario = GetProperty(placed.scenario.get(), u"key");
  Change([&] { CallMethod(placed.task.get(), u"Initialize", {scenario, StateOf(options.state)}); });
}

bool IsInOrder(const Object& scenario, const std::string& task) {
  for (const Json& each : DescribeTasks(scenario))
    if (each.at("name") == task && !each.at("position").is_null()) return true;
  return false;
}

void Delete(const Options& options, const Console& console) {
  const ObjectModel model;
  const PlacedTask placed = FindTask(model, options);
  const std::string task = NameOf(placed.task);
  const bool in_order = IsInOrder(placed.scenario, task);
  const Variant scenario = GetProperty(placed.scenario.get(), u"key");
  Change([&] {
    const Variant deleted =
        CallMethod(placed.collection.get(), u"DeleteTraitement", {placed.task.get(), scenario});
    if (deleted.ToI2() == 0) throw ToolError(Named("task", task) + ": cannot be deleted");
  });
  if (in_order)
    console.err << "moxel: note: the order of " << Named("scenario", TextOf(scenario)) << " still names "
                << Named("task", task) << ", so its tasks cannot be reset until it is taken out there\n";
}

void AddList(CLI::App& group, Console& console) {
  auto options = std::make_shared<Options>();
  CLI::App* verb =
      AddVerb(group, "list", "List the tasks of a scenario in their order, then those without place",
              "list Night", *options);
  verb->add_flag("--json", options->json, "Print the list as JSON");
  verb->callback([options, &console] { List(*options, console); });
}

void AddReset(CLI::App& group) {
  auto options = std::make_shared<Options>();
  CLI::App* verb =
      AddVerb(group, "reset", "Set the run state of a task", "reset Night Load --state retry", *options);
  AddName(verb, *options);
  verb->add_option("--state", options->state, "Run state to set")
      ->check(CLI::IsMember({"not-processed", "processed", "retry"}))
      ->capture_default_str();
  verb->callback([options] { Reset(*options); });
}

void AddDelete(CLI::App& group, Console& console) {
  auto options = std::make_shared<Options>();
  CLI::App* verb = AddVerb(group, "delete", "Delete a task; the scenario's order may still name it",
                           "delete Night Notify", *options);
  AddName(verb, *options);
  verb->callback([options, &console] { Delete(*options, console); });
}

}  // namespace

void AddTaskCommands(CLI::App& app, Console& console) {
  CLI::App* group = app.add_subcommand("task", "List, reset and delete the tasks of a scenario");
  RequireVerb(*group);
  group->footer("Example:\n  moxel task list Night");
  AddList(*group, console);
  AddReset(*group);
  AddDelete(*group, console);
}

}  // namespace moxel::tool
