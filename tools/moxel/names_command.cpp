#include "moxel/names_command.h"

#include <memory>
#include <string>

#include "moxel/ansi_text.h"
#include "moxel/descriptions.h"

namespace moxel::tool {
namespace {

struct Options {
  std::string kind;
  std::string domain;
  std::string scenario;
};

KeyPath KeyOf(const Options& options) {
  if (options.kind == "domain") return ProductRoot().Child("Domain");
  if (options.kind == "scenario") return ProductRoot().Child("Scenarios");
  if (options.kind == "user") return ProductRoot().Child("User");
  if (options.kind == "task")
    return ProductRoot().Child("Scenarios").Child(AnsiFromUtf8(options.scenario)).Child("Taches");
  return options.domain.empty() ? VariablesKeyOf("Scenarios", options.scenario)
                                : VariablesKeyOf("Domain", options.domain);
}

// A name that no terminal can show is left out: it could not be typed either.
void Print(const Options& options, const Console& console) {
  const std::optional<RegistryKey> key = RegistryKey::Open(KeyOf(options), KEY_READ);
  if (!key) return;
  for (const std::string& name : key->SubkeyNames()) {
    const std::string text = Utf8FromAnsi(name);
    if (PrintableFromAnsi(name) == text) console.out << text << '\n';
  }
}

}  // namespace

void AddNamesCommand(CLI::App& app, Console& console) {
  CLI::App* verb = app.add_subcommand("names", "Print the names of all objects of a kind")->group("");
  auto options = std::make_shared<Options>();
  verb->add_option("KIND", options->kind, "What is named")
      ->check(CLI::IsMember({"domain", "scenario", "user", "task", "variable"}))
      ->required();
  verb->add_option("--domain", options->domain, "Owner of the variables")->type_name("DOMAIN");
  verb->add_option("--scenario", options->scenario, "Owner of the tasks or variables")->type_name("SCENARIO");
  verb->footer("Example:\n  moxel names variable --domain Sales");
  verb->callback([options, &console] { Print(*options, console); });
}

}  // namespace moxel::tool
