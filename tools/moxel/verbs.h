// The tree of groups and verbs: how it is made and how help, manual page and completion walk it.
#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <string>
#include <vector>

namespace moxel::tool {

// Makes `group` take exactly one of its verbs. An unknown verb is named in the refusal, which CLI11's own
// requirement would not do.
void RequireVerb(CLI::App& group);

// What is hidden from help is left out of everything below.

// The verbs of a group, or the groups of the whole tool.
std::vector<const CLI::App*> VerbsOf(const CLI::App& group);
// Visits the tool, its groups and their verbs, each before what it contains.
void VisitVerbs(const CLI::App& app, const std::function<void(const CLI::App&)>& visit);
// As it is typed: "moxel registry import".
std::string PathOf(const CLI::App& verb);

// Options and arguments, but the one that asks for help; those of option groups come last.
std::vector<const CLI::Option*> OptionsOf(const CLI::App& verb);
// The options of the tool that may stand behind every verb as well.
std::vector<const CLI::Option*> GlobalOptionsOf(const CLI::App& verb);

bool TakesValue(const CLI::Option& option);
// The values that an option with fixed choices takes; none for any other.
std::vector<std::string> ChoicesOf(const CLI::Option& option);
// What a value stands for, in capitals: "FILE", or "TEXT" where nothing better was said.
std::string LabelOf(const CLI::Option& option);

}  // namespace moxel::tool
