#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "moxel/command_line.h"
#include "moxel/files.h"
#include "moxel/verbs.h"
#include "tests/support/temp_registry.h"
#include "tests/tools/run_tool.h"
#include "tests/tools/shell.h"

namespace moxel::test {
namespace {

class HelpTest : public RegistryTest {
 protected:
  // Gives the path of each verb and group with its description.
  void Visit(
      const std::function<void(const CLI::App& verb, const std::string& path, Arguments words)>& visit) {
    tool::VisitVerbs(*app_, [&](const CLI::App& verb) {
      const std::string path = tool::PathOf(verb);
      SCOPED_TRACE(path);
      const Arguments words = CLI::detail::split(path, ' ');
      visit(verb, path, {words.begin() + 1, words.end()});
    });
  }

 private:
  std::stringstream stream_;
  tool::Console console_{stream_, stream_, stream_};
  std::unique_ptr<CLI::App> app_ = tool::DescribeCommandLine(console_);
};

TEST_F(HelpTest, EveryVerbExplainsItselfAndItsOptions) {
  const std::string page = tool::ReadFile(BuildFolder() / "share/man/man1/moxel.1");
  Visit([&](const CLI::App& verb, const std::string& path, const Arguments& words) {
    EXPECT_NE(verb.get_description(), "");
    for (const CLI::Option* option : tool::OptionsOf(verb))
      EXPECT_NE(option->get_description(), "") << option->get_name();
    const std::string help = Moxel(words + Arguments{"--help"}).out;
    for (const char* text : {"Example:\n  ", "\n  --registry FILE ", "\n  --color WHEN"})
      EXPECT_NE(help.find(text), std::string::npos) << text << help;
    EXPECT_NE(help.find("Example:\n  " + path), std::string::npos) << "example of another verb" << help;
    EXPECT_TRUE(words.empty() || page.find(".SS " + path + "\n") != std::string::npos) << path;
    EXPECT_EQ(path.find("names"), std::string::npos) << "hidden";
  });
  const std::string help = Moxel({"--help"}).out;
  for (const char* text : {"0  success", "1  refused or failed", "2  wrong usage or malformed file",
                           "MOXEL_REGISTRY  ", "NO_COLOR  "})
    EXPECT_NE(help.find(text), std::string::npos) << help;
}

TEST_F(HelpTest, EveryVerbTakesTheOptionsOfTheToolBeforeAndBehindIt) {
  Visit([](const CLI::App& verb, const std::string&, const Arguments& words) {
    if (!tool::VerbsOf(verb).empty()) return;
    const Arguments option = {"--registry", ""};
    for (const Arguments& arguments : {option + words, words + option})
      EXPECT_EQ(Moxel(arguments).err, "moxel: --registry: empty file name\n");
  });
}

// What an example acts upon may be missing, but it is never wrong usage.
TEST_F(HelpTest, EveryExampleIsUnderstood) {
  Moxel({"registry", "import", MOXEL_EXAMPLES "/configuration.reg"});
  const std::string begin = "cd " + ShellWord(folder()) + " && moxel() { " +
                            ShellWord(BuildFolder() / "bin/moxel") + " \"$@\" < /dev/null; } && ";
  Visit([&](const CLI::App& verb, const std::string&, const Arguments&) {
    std::istringstream footer(verb.get_footer());
    for (std::string line; std::getline(footer, line);) {
      if (!line.starts_with("  moxel ")) continue;
      const std::string output = ShellOutput(begin + line + "\necho code $?");
      EXPECT_TRUE(output.ends_with("code 0\n") || output.ends_with("code 1\n")) << line << '\n' << output;
    }
  });
}

TEST_F(HelpTest, TheManualPageIsSound) {
  const std::string page = ShellWord(BuildFolder() / "share/man/man1/moxel.1");
  const std::string check = "if command -v mandoc > /dev/null; then mandoc -Tlint -Wwarning " + page +
                            "; elif command -v man > /dev/null; then man --warnings -l " + page +
                            " > /dev/null; else echo skip; fi";
  const std::string findings = ShellOutput(check);
  if (findings == "skip\n") GTEST_SKIP() << "neither mandoc nor man is installed";
  EXPECT_EQ(findings, "");
}

}  // namespace
}  // namespace moxel::test
