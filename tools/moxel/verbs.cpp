#include "moxel/verbs.h"

namespace moxel::tool {
namespace {

const CLI::App& ToolOf(const CLI::App& verb) {
  const CLI::App* app = &verb;
  while (app->get_parent()) app = app->get_parent();
  return *app;
}

}  // namespace

void RequireVerb(CLI::App& group) {
  group.require_subcommand(0, 1);
  group.final_callback([&group] {
    if (group.get_subcommands().empty()) throw CLI::RequiredError("A subcommand");
  });
}

std::vector<const CLI::App*> VerbsOf(const CLI::App& group) {
  return group.get_subcommands(
      [](const CLI::App* verb) { return !verb->get_name().empty() && !verb->get_group().empty(); });
}

void VisitVerbs(const CLI::App& app, const std::function<void(const CLI::App&)>& visit) {
  visit(app);
  for (const CLI::App* verb : VerbsOf(app)) VisitVerbs(*verb, visit);
}

std::string PathOf(const CLI::App& verb) {
  return verb.get_parent() ? PathOf(*verb.get_parent()) + ' ' + verb.get_name() : verb.get_name();
}

std::vector<const CLI::Option*> OptionsOf(const CLI::App& verb) {
  std::vector<const CLI::Option*> options = verb.get_options([&verb](const CLI::Option* option) {
    return option != verb.get_help_ptr() && !option->get_group().empty();
  });
  for (const CLI::App* group : verb.get_subcommands({})) {
    if (!group->get_name().empty()) continue;
    const std::vector<const CLI::Option*> grouped = OptionsOf(*group);
    options.insert(options.end(), grouped.begin(), grouped.end());
  }
  return options;
}

std::vector<const CLI::Option*> GlobalOptionsOf(const CLI::App& verb) {
  std::vector<const CLI::Option*> options;
  for (const CLI::Option* option : OptionsOf(ToolOf(verb)))
    if (TakesValue(*option)) options.push_back(option);
  return options;
}

bool TakesValue(const CLI::Option& option) { return option.get_items_expected_max() > 0; }

std::vector<std::string> ChoicesOf(const CLI::Option& option) {
  const std::string type = option.get_type_name();
  const size_t begin = type.find('{');
  const size_t end = type.find('}');
  if (begin == std::string::npos || end == std::string::npos) return {};
  return CLI::detail::split(type.substr(begin + 1, end - begin - 1), ',');
}

std::string LabelOf(const CLI::Option& option) {
  const std::string type = option.get_type_name();
  return type.substr(0, type.find_first_of(":{"));
}

}  // namespace moxel::tool
