#include "moxel/tool.h"

#include <CLI/CLI.hpp>
#include <exception>
#include <memory>
#include <string>

#include "moxel/automation_error.h"
#include "moxel/command_line.h"
#include "moxel/error.h"
#include "moxel/style.h"
#include "moxel/text.h"

namespace moxel {
namespace {

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

int Run(int argc, const char* const* argv, tool::Console& console) {
  const std::unique_ptr<CLI::App> app = tool::DescribeCommandLine(console);
  int result = 0;
  try {
    app->parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    result = ReportUsage(*app, error, console);
  }
  if (!console.out.flush()) throw tool::ToolError("standard output: cannot be written");
  return result;
}

}  // namespace

int RunTool(int argc, const char* const* argv, tool::Console console) {
  try {
    return Run(argc, argv, console);
  } catch (const tool::MalformedFile& error) {
    console.err << error.what() << '\n';
    return error.exit_code();
  } catch (const tool::ToolError& error) {
    console.err << "moxel: " << OneLine(error.what()) << '\n';
    return error.exit_code();
  } catch (const AutomationError& error) {
    console.err << "moxel: " << tool::Painted("error", tool::Style::kFailed, console.ColorsErr()) << ' '
                << error.number() << ", " << ToUtf8(error.source()) << ": "
                << OneLine(ToUtf8(error.description())) << '\n';
    return 1;
  } catch (const std::exception& error) {
    console.err << "moxel: " << OneLine(error.what()) << '\n';
    return 1;
  }
}

}  // namespace moxel
