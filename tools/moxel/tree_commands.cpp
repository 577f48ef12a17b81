#include "moxel/tree_commands.h"

#include <memory>

#include "moxel/descriptions.h"

namespace moxel::tool {
namespace {

std::string Label(const char* what, const Json& object) {
  return std::string(what) + ' ' + Readable(object.at("name"));
}

Cell StateCell(const Json& object) {
  const std::string state = Readable(object.at("state"));
  return {state, StyleOfState(state)};
}

TreeNode UserNode(const Json& user) {
  return {Label("user", user) + ", permission " + Readable(user.at("permission")), {}};
}

TreeNode VariableNode(const Json& variable) {
  const std::string kind = variable.at("kind");
  return {Label(kind.c_str(), variable) + " = " + Readable(variable.at("value")), {}};
}

TreeNode TaskNode(const Json& task) {
  const std::string place = Readable(task.at("position"));
  return {Label("task", task) + (place.empty() ? "" : ", number " + place), {}, StateCell(task)};
}

void Append(std::vector<TreeNode>& nodes, const Json& objects, TreeNode (*node)(const Json&)) {
  for (const Json& object : objects) nodes.push_back(node(object));
}

TreeNode ScenarioNode(const Json& scenario) {
  TreeNode node{Label("scenario", scenario), {}, StateCell(scenario)};
  Append(node.children, scenario.at("users"), UserNode);
  Append(node.children, scenario.at("variables"), VariableNode);
  Append(node.children, scenario.at("tasks"), TaskNode);
  return node;
}

TreeNode DomainNode(const Json& domain) {
  const std::string comment = Readable(domain.at("comment"));
  TreeNode node{Label("domain", domain) + (comment.empty() ? "" : " (" + comment + ")"), {}};
  Append(node.children, domain.at("variables"), VariableNode);
  Append(node.children, domain.at("scenarios"), ScenarioNode);
  return node;
}

TreeNode ConfigurationNode(const Json& configuration) {
  TreeNode node{"Configuration", {}};
  Append(node.children, configuration.at("users"), UserNode);
  Append(node.children, configuration.at("domains"), DomainNode);
  Append(node.children, configuration.at("scenarios"), ScenarioNode);
  return node;
}

Json DescribeAll(const std::vector<PlacedScenario>& scenarios) {
  Json described = Json::array();
  for (const PlacedScenario& placed : scenarios) described.push_back(DescribeScenario(placed));
  return described;
}

Json DescribeConfiguration(const ObjectModel& model) {
  Json users = Json::array();
  for (const Object& user : ObjectsOf(model.Users())) users.push_back(DescribeUser(user));
  Json domains = Json::array();
  for (const Object& domain : ObjectsOf(model.Domains())) {
    Json& each = domains.emplace_back(DescribeDomain(model, domain));
    each["scenarios"] = DescribeAll(model.ScenariosOfDomain(domain));
  }
  return {{"users", users}, {"domains", domains}, {"scenarios", DescribeAll(model.ScenariosOfNoDomain())}};
}

void Tree(bool json, const Console& console) {
  const ObjectModel model;
  const Json configuration = DescribeConfiguration(model);
  if (json) return PrintJson(configuration, console);
  PrintTree(ConfigurationNode(configuration), console);
}

}  // namespace

void AddTreeCommand(CLI::App& app, Console& console) {
  CLI::App* verb = app.add_subcommand("tree", "Draw the whole configuration with its states");
  auto json = std::make_shared<bool>(false);
  verb->add_flag("--json", *json, "Print the whole configuration as JSON");
  verb->footer("Example:\n  moxel tree");
  verb->callback([json, &console] { Tree(*json, console); });
}

}  // namespace moxel::tool
