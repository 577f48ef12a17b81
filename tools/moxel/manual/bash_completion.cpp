#include "moxel/manual/bash_completion.h"

#include <map>
#include <vector>

#include "moxel/verbs.h"

namespace moxel::tool {
namespace {

// Keys are paths of verbs, in `takes` with an option or the number of an argument behind them.
struct Tables {
  std::map<std::string, std::string> verbs;
  std::map<std::string, std::string> options;
  std::map<std::string, std::string> takes;
};

std::string Key(const std::string& path, const std::string& name) { return path + ' ' + name; }

std::vector<std::string> NamesOf(const CLI::Option& option) {
  std::vector<std::string> names;
  for (const std::string& name : option.get_lnames()) names.push_back("--" + name);
  for (const std::string& name : option.get_snames()) names.push_back("-" + name);
  return names;
}

// What completes a value: its choices, or what it names, or nothing, which is "-".
std::string KindOf(const CLI::Option& option) {
  const std::vector<std::string> choices = ChoicesOf(option);
  if (!choices.empty()) return CLI::detail::join(choices, " ");
  for (const std::string& label : {option.get_name(true), LabelOf(option)})
    for (const char* known : {"FILE", "DOMAIN", "SCENARIO", "USER", "TASK", "VARIABLE"})
      if (label == known) return known;
  return "-";
}

void AddOption(const CLI::Option& option, const std::string& path, Tables& tables) {
  for (const std::string& name : NamesOf(option)) {
    tables.options[path] += name + ' ';
    if (TakesValue(option)) tables.takes[Key(path, name)] = KindOf(option);
  }
}

void AddVerb(const CLI::App& verb, Tables& tables) {
  const std::string path = PathOf(verb);
  for (const CLI::App* each : VerbsOf(verb)) tables.verbs[path] += each->get_name() + ' ';
  int arguments = 0;
  for (const CLI::Option* option : OptionsOf(verb)) {
    AddOption(*option, path, tables);
    if (option->get_positional()) tables.takes[Key(path, std::to_string(++arguments))] = KindOf(*option);
  }
  AddOption(*verb.get_help_ptr(), path, tables);
  if (!verb.get_parent()) return;
  for (const CLI::Option* option : GlobalOptionsOf(verb))
    for (const std::string& name : NamesOf(*option)) tables.options[path] += name + ' ';
}

std::string Quoted(const std::string& text) {
  return '\'' + CLI::detail::find_and_replace(text, "'", "'\\''") + '\'';
}

std::string Declaration(const char* name, const std::map<std::string, std::string>& table) {
  std::string text = std::string("declare -gA ") + name + "=(\n";
  for (const auto& [key, value] : table) text += "  [" + Quoted(key) + "]=" + Quoted(value) + '\n';
  return text + ")\n";
}

}  // namespace

std::string BashCompletion(const CLI::App& app, const std::string& functions) {
  Tables tables;
  VisitVerbs(app, [&tables](const CLI::App& verb) { AddVerb(verb, tables); });
  return "# Completion of moxel for bash, made with the tool.\n" + Declaration("_moxel_verbs", tables.verbs) +
         Declaration("_moxel_options", tables.options) + Declaration("_moxel_takes", tables.takes) +
         functions;
}

}  // namespace moxel::tool
