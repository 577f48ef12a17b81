#include "moxel/tool.h"

#include <stdlib.h>

#include <CLI/CLI.hpp>
#include <exception>
#include <string>

#include "moxel/automation_error.h"
#include "moxel/component_commands.h"
#include "moxel/console.h"
#include "moxel/domain_commands.h"
#include "moxel/error.h"
#include "moxel/registry_commands.h"
#include "moxel/scenario_commands.h"
#include "moxel/task_commands.h"
#include "moxel/text.h"
#include "moxel/tree_commands.h"
#include "moxel/user_commands.h"
#include "moxel/variable_commands.h"
#include "moxel/verbs.h"

namespace moxel {
namespace {

constexpr const char* kVersion = "1.4";

void UseRegistryFile(const std::string& path) {
  if (path.empty()) throw tool::ToolError::Usage("--registry: empty file name");
  ::setenv("MOXEL_REGISTRY", path.c_str(), 1);
}

void Define(CLI::App& app, tool::Console& console) {
  tool::RequireVerb(app);
  app.fallthrough();  // inherited: --registry may stand behind the verb
  app.set_version_flag("--version", kVersion);
  app.add_option_function<std::string>(
         "--registry", UseRegistryFile,
         "Registry file to work on instead of the one that MOXEL_REGISTRY names")
      ->type_name("FILE");
  app.footer("Example:\n  moxel registry import site.reg");
  tool::AddTreeCommand(app, console);
  tool::AddDomainCommands(app, console);
  tool::AddScenarioCommands(app, console);
  tool::AddTaskCommands(app, console);
  tool::AddUserCommands(app, console);
  tool::AddVariableCommands(app, console);
  tool::AddRegistryCommands(app, console);
  tool::AddComponentCommands(app, console);
}

std::string OneLine(std::string message) {
  for (char& c : message) {
    if (c == '\n') c = ' ';
  }
  return message;
}

int ReportUsage(const CLI::App& app, const CLI::ParseError& error, const tool::Console& console) {
  if (error.get_exit_code() == 0) return app.exit(error, console.out, console.err);
  console.err << "moxel: " << OneLine(error.what()) << '\n';
  return 2;
}

}  // namespace

int RunTool(int argc, const char* const* argv, std::istream& in, std::ostream& out, std::ostream& err) {
  tool::Console console{in, out, err};
  try {
    CLI::App app("Administers the MOXEL configuration.", "moxel");
    Define(app, console);
    int result = 0;
    try {
      app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
      result = ReportUsage(app, error, console);
    }
    if (!out.flush()) throw tool::ToolError("standard output: cannot be written");
    return result;
  } catch (const tool::MalformedFile& error) {
    err << error.what() << '\n';
    return error.exit_code();
  } catch (const tool::ToolError& error) {
    err << "moxel: " << OneLine(error.what()) << '\n';
    return error.exit_code();
  } catch (const AutomationError& error) {
    err << "moxel: error " << error.number() << ", " << tool::Utf8FromUtf16(error.source()) << ": "
        << OneLine(tool::Utf8FromUtf16(error.description())) << '\n';
    return 1;
  } catch (const std::exception& error) {
    err << "moxel: " << OneLine(error.what()) << '\n';
    return 1;
  }
}

}  // namespace moxel
