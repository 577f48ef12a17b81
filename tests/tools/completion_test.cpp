// The completion of bash, called as the shell calls it.
#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>
#include <string>

#include "tests/support/temp_registry.h"
#include "tests/tools/run_tool.h"
#include "tests/tools/shell.h"

namespace moxel::test {
namespace {

// The words of a command line are parted by | and the cursor stands at ^; the replies are parted by |. File
// names are left to the shell, which is answered "files".
std::string Complete(const std::string& line) {
  std::string words, cursor;
  std::istringstream in(line);
  int index = 1;
  for (std::string word; std::getline(in, word, '|'); ++index) {
    if (word.ends_with('^')) {
      word.pop_back();
      cursor = std::to_string(index);
    }
    words += ' ' + ShellWord(word);
  }
  const std::string tool = ShellWord(BuildFolder() / "bin/moxel");
  const std::string script =
      "LC_ALL=C.UTF-8; source " + ShellWord(BuildFolder() / "share/bash-completion/completions/moxel") +
      "; compopt() { [[ $* == '-o default' ]] && COMPREPLY=(files); }; COMP_WORDS=(" + tool + words +
      "); COMP_CWORD=" + cursor + "; _moxel " + tool + "; IFS='|'; printf %s \"${COMPREPLY[*]}\"";
  return ShellOutput("bash --norc -c " + ShellWord(script));
}

class CompletionTest : public RegistryTest {
 protected:
  CompletionTest() { Moxel({"registry", "import", MOXEL_EXAMPLES "/configuration.reg"}); }
};

TEST_F(CompletionTest, EveryPlaceOfACommandLineIsCompletedByWhatMayStandThere) {
  const struct {
    const char* line;
    const char* replies;
  } cases[] = {
      {"dom^", "domain"},
      {"reg^", "registry|register"},
      {"nam^", ""},
      {"domain|sh^", "show"},
      {"--registry|^", "files"},
      {"registry|export|--^", "--output|--format|--help|--registry|--color"},
      {"registry|export|--registry|x|-o|^", "files"},
      {"registry|import|ex^", "files"},
      {"registry|export|--format|^", "regedit4|regedit5"},
      {"registry|set|K|1|-t|REG_B^", "REG_BINARY"},
      {"tree|--color|n^", "never"},
      {"tree|^", "--json|--help|-h|--registry|--color"},
      {"domain|create|^", ""},
      {"domain|create|--comment|^", ""},
      {"domain|show|^", "Finance|Logistics|Sales"},
      {"domain|show|--json|S^", "Sales"},
      {"domain|sh^|--json", "show"},
      {"user|check|^", "alice|bob|Émile"},
      {"scenario|list|--domain|L^", "Logistics"},
      {"scenario|list|--domain|=|L^", "Logistics"},
      {"scenario|reset|--mode|=^", "all|scenario|after-error"},
      {"scenario|reset|Night|--mode|=|a^", "all|after-error"},
      {"scenario|show|He^", "Health\\ check"},
      {"scenario|show|Health\\ c^", "Health\\ check"},
      {"scenario|show|'Health c^", "Health check"},
      {"task|reset|^", "Backup|Health\\ check|Invoices|Night|Rounds|Stocktaking|User"},
      {"task|reset|Night|N^", "Notify"},
      {"task|reset|--state|retry|--|Night|N^", "Notify"},
      {"variable|get|--domain|Sales|R^", "Region|RunDate"},
      {"variable|get|R^|--domain|Sales", "Region|RunDate"},
      {"variable|get|--scenario|\"Night\"|Gr^", "Greeting"},
      {"variable|get|^", ""},
  };
  for (const auto& c : cases) EXPECT_EQ(Complete(c.line), c.replies) << c.line;
}

TEST_F(CompletionTest, NamesComeFromTheRegistryFileOfTheLineAndWhereItFailsNoneDo) {
  const std::string other = folder() / "other.db", missing = folder() / "missing.db";
  Moxel({"domain", "create", "Elsewhere", "--registry", other});
  ::setenv("MOXEL_REGISTRY", missing.c_str(), 1);
  EXPECT_EQ(Complete("domain|show|^"), "");
  EXPECT_EQ(Complete("--registry|" + other + "|domain|show|^"), "Elsewhere");
  EXPECT_EQ(Complete("domain|show|^|--registry|=|" + other), "Elsewhere");
  EXPECT_EQ(Complete("domain|show|--registry|/dev/null|^"), "");
  EXPECT_FALSE(std::filesystem::exists(missing));
}

TEST_F(CompletionTest, NothingTypedAndNoNameIsEverRun) {
  const std::string trap = "$(touch " + (folder() / "run").string() + ")";
  for (const std::string& name : {"Z" + trap, std::string("Z'"), std::string("Z\x1B")})
    Moxel({"domain", "create", name});
  std::string quoted = Complete("domain|show|Z^");
  EXPECT_TRUE(quoted.starts_with("Z\\$\\(touch\\ ") && quoted.ends_with("|Z\\'")) << quoted;
  EXPECT_EQ(Complete("domain|show|\"Z^"), "");
  for (const std::string& line :
       {trap + '^', "domain|show|" + trap + '^', "--registry|" + trap + "|user|check|^",
        trap + "|" + trap + "|--" + trap + '^', "variable|get|--domain|" + trap + "|^",
        "task|reset|\"" + trap + "\"|^", "tree|a[" + trap + "]|--" + trap + "|^"})
    Complete(line);
  EXPECT_FALSE(std::filesystem::exists(folder() / "run"));
}

}  // namespace
}  // namespace moxel::test
