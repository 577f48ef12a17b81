#include "moxel/command_line.h"

#include <stdlib.h>

#include <string>

#include "moxel/component_commands.h"
#include "moxel/domain_commands.h"
#include "moxel/error.h"
#include "moxel/names_command.h"
#include "moxel/registry_commands.h"
#include "moxel/scenario_commands.h"
#include "moxel/task_commands.h"
#include "moxel/tree_commands.h"
#include "moxel/typelib_command.h"
#include "moxel/user_commands.h"
#include "moxel/variable_commands.h"
#include "moxel/verbs.h"

namespace moxel::tool {
namespace {

constexpr const char* kFooter = R"(Exit codes:
  0  success
  1  refused or failed
  2  wrong usage or malformed file

Environment:
  MOXEL_REGISTRY  the registry file; /var/lib/moxel/registry.db when it is not set
  NO_COLOR        no colours, unless --color asks for them, when it is not empty

Example:
  moxel registry import site.reg)";

// A verb's help also shows the options of the tool, which may stand behind it.
class HelpFormatter : public CLI::Formatter {
 public:
  std::string make_subcommands(const CLI::App* app, CLI::AppFormatMode mode) const override {
    std::string subcommands = Formatter::make_subcommands(app, mode);
    if (!app->get_parent()) return subcommands;
    return subcommands + make_group("Options of every verb", false, GlobalOptionsOf(*app));
  }

  // An option group.
  std::string make_expanded(const CLI::App* group) const override {
    const bool exactly_one = group->get_require_option_min() == 1 && group->get_require_option_max() == 1;
    return make_group(group->get_group() + (exactly_one ? " (exactly one)" : ""), false, OptionsOf(*group));
  }
};

void UseRegistryFile(const std::string& path) {
  if (path.empty()) throw ToolError::Usage("--registry: empty file name");
  ::setenv("MOXEL_REGISTRY", path.c_str(), 1);
}

ColorUse ColorUseOf(const std::string& when) {
  if (when == "auto") return ColorUse::kAuto;
  return when == "always" ? ColorUse::kAlways : ColorUse::kNever;
}

void AddGlobalOptions(CLI::App& app, Console& console) {
  app.set_version_flag("--version", kVersion);
  app.add_option_function<std::string>(
         "--registry", UseRegistryFile,
         "Registry file to work on instead of the one that MOXEL_REGISTRY names")
      ->type_name("FILE");
  app.add_option_function<std::string>(
         "--color", [&console](const std::string& when) { console.color = ColorUseOf(when); },
         "Colours in tables, trees and refusals; auto: on a terminal")
      ->check(CLI::IsMember({"auto", "always", "never"}))
      ->type_name("WHEN")
      ->default_str("auto");
}

}  // namespace

std::unique_ptr<CLI::App> DescribeCommandLine(Console& console) {
  auto app = std::make_unique<CLI::App>("Administers the MOXEL configuration.", "moxel");
  RequireVerb(*app);
  app->fallthrough();  // inherited: what AddGlobalOptions adds may stand behind the verb
  app->formatter(std::make_shared<HelpFormatter>());
  AddGlobalOptions(*app, console);
  AddTreeCommand(*app, console);
  AddDomainCommands(*app, console);
  AddScenarioCommands(*app, console);
  AddTaskCommands(*app, console);
  AddUserCommands(*app, console);
  AddVariableCommands(*app, console);
  AddRegistryCommands(*app, console);
  AddComponentCommands(*app, console);
  AddTypelibCommand(*app, console);
  AddNamesCommand(*app, console);
  app->footer(kFooter);  // last: a verb takes over the footer of what it is added to
  return app;
}

}  // namespace moxel::tool
