// What the tool does for a terminal and for nothing else: colours, and a progress bar.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "tests/support/temp_registry.h"
#include "tests/tools/run_tool.h"

namespace moxel::test {
namespace {

std::string WithoutColours(std::string text) {
  for (size_t at; (at = text.find("\x1B[")) != std::string::npos;)
    text.erase(at, text.find('m', at) + 1 - at);
  return text;
}

class ConsoleTest : public RegistryTest {
 protected:
  ConsoleTest() {
    Moxel({"registry", "import", MOXEL_EXAMPLES "/configuration.reg"});
    SetTerminal("xterm", "");
  }

  static void SetTerminal(const char* kind, const char* no_color) {
    ::setenv("TERM", kind, 1);
    ::setenv("NO_COLOR", no_color, 1);
  }

  static ToolRun AtTerminal(const Arguments& arguments, const std::string& input = "") {
    return Moxel(arguments, input,
                 [](tool::Console& console) { console.out_is_terminal = console.err_is_terminal = true; });
  }
};

TEST_F(ConsoleTest, ColoursMarkHeadingsAndStatesAndNeverMoveAnything) {
  const struct {
    Arguments arguments;
    std::vector<std::string> painted;
  } cases[] = {
      {{"scenario", "list"},
       {"\x1B[1mSTATE\x1B[0m", "\x1B[31mwith error\x1B[0m  ", "\x1B[33mprocessing\x1B[0m"}},
      {{"scenario", "show", "Night"}, {"State      \x1B[31mwith error\x1B[0m\n"}},
      {{"task", "list", "Rounds"}, {"\x1B[32mprocessed\x1B[0m   1", "\x1B[33mprocessing\x1B[0m  5"}},
      {{"tree"}, {"task Load, number 2: \x1B[31mwith error\x1B[0m\n", "Backup: not processed\n"}},
      {{"scenario", "list", "--json", "--color", "always"}, {}},
      {{"registry", "query", "-s"}, {}},
  };
  for (const auto& c : cases) {
    const std::string out = AtTerminal(c.arguments).out;
    for (const std::string& text : c.painted) EXPECT_NE(out.find(text), std::string::npos) << text << out;
    EXPECT_EQ(out.find('\x1B') == std::string::npos, c.painted.empty()) << out;
    EXPECT_EQ(WithoutColours(out), Moxel(c.arguments).out);
  }
  EXPECT_TRUE(AtTerminal({"domain", "create", "Sales"}).err.starts_with("moxel: \x1B[31merror\x1B[0m -"));
}

TEST_F(ConsoleTest, ColoursAreForTerminalsThatWantThemOrForWhoAsks) {
  const struct {
    const char* terminal;
    const char* no_color;
    const char* when;
    bool at_terminal;
    bool elsewhere;
  } cases[] = {{"xterm", "", "auto", true, false},   {"dumb", "", "auto", false, false},
               {"", "", "auto", false, false},       {"xterm", "1", "auto", false, false},
               {"xterm", "", "never", false, false}, {"dumb", "1", "always", true, true}};
  for (const auto& c : cases) {
    SetTerminal(c.terminal, c.no_color);
    const Arguments arguments = {"scenario", "list", "--color", c.when};
    EXPECT_EQ(AtTerminal(arguments).out.find('\x1B') != std::string::npos, c.at_terminal)
        << c.terminal << c.when;
    EXPECT_EQ(Moxel(arguments).out.find('\x1B') != std::string::npos, c.elsewhere) << c.terminal << c.when;
  }
}

// What a terminal of one line shows in the end.
std::string Screen(const std::string& written) {
  std::string line(200, ' ');
  size_t column = 0;
  for (const char c : written) {
    if (c == '\r')
      column = 0;
    else
      line.at(column++) = c;
  }
  return line.substr(0, line.find_last_not_of(' ') + 1);
}

// A clock that goes on by some milliseconds at every look.
ToolRun Import(const std::string& values, bool terminal, int milliseconds) {
  return Moxel({"registry", "import", "-"}, "REGEDIT4\n[HKEY_LOCAL_MACHINE\\K]\n" + values,
               [&](tool::Console& console) {
                 console.err_is_terminal = terminal;
                 console.now = [milliseconds, time = std::chrono::steady_clock::time_point()]() mutable {
                   return time += std::chrono::milliseconds(milliseconds);
                 };
               });
}

TEST_F(ConsoleTest, OnlyALongImportShowsItsProgressOnlyOnATerminalAndTakesItAway) {
  std::string values;
  for (int i = 0; i < 400; ++i) values += '"' + std::to_string(i) + "\"=\"x\"\n";
  const ToolRun shown = Import(values, true, 10);
  EXPECT_EQ(std::count(shown.err.begin(), shown.err.end(), '%'), 31);  // 4 s, less the first, ten a second
  EXPECT_NE(shown.err.find("]  24 %\r["), std::string::npos) << shown.err;
  EXPECT_NE(shown.err.find("]  99 %\r "), std::string::npos) << shown.err;
  EXPECT_EQ(Screen(shown.err), "");
  EXPECT_EQ(shown.out, "keys: 1 set, 0 deleted; values: 400 set, 0 deleted\n");

  const ToolRun failed = Import(values + '"' + std::string(20000, 'n') + "\"=\"x\"\n", true, 10);
  EXPECT_EQ(failed.exit_code, 1);
  EXPECT_EQ(failed.err.find("moxel: "), failed.err.rfind('\r') + 1);

  EXPECT_EQ(Import(values, true, 2).err, "");
  EXPECT_EQ(Import(values, false, 10).err, "");
  SetTerminal("dumb", "");
  EXPECT_EQ(Import(values, true, 10).err, "");
}

}  // namespace
}  // namespace moxel::test
