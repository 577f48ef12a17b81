#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "moxel/component_library.h"
#include "moxel/error.h"
#include "moxel/files.h"
#include "moxel/tool.h"
#include "tests/support/temp_registry.h"
#include "tests/tools/run_tool.h"

namespace moxel::test {
namespace {

using namespace std::string_literals;
using nlohmann::json;
using tool::ReadFile, tool::WriteFile;

std::string Registry(const std::string& line) { return Do(Words("registry " + line)); }
json Query(const std::string& line) { return json::parse(Registry("query --json " + line)); }

// Exit codes: 1 refused or failed, 2 wrong usage; one line on the error stream.
void ExpectFailure(const Arguments& arguments, int exit_code, const std::string& message) {
  const ToolRun run = Moxel(arguments);
  EXPECT_EQ(std::pair(run.exit_code, run.out), std::pair(exit_code, ""s)) << run.err;
  EXPECT_TRUE(run.err.starts_with("moxel: ") && run.err.find('\n') == run.err.size() - 1) << run.err;
  EXPECT_NE(run.err.find(message), std::string::npos) << run.err << ::testing::PrintToString(arguments);
}

// Commands that begin alike and the message of each, as "command = message; command = message".
void ExpectFailures(int exit_code, const std::string& begin, const std::string& commands) {
  std::istringstream in(commands);
  for (std::string command; std::getline(in, command, ';');) {
    const size_t equals = command.find("= ");
    ExpectFailure(Words(begin + command.substr(0, equals)), exit_code, command.substr(equals + 2));
  }
}

class RegistryCommandsTest : public RegistryTest {};

TEST_F(RegistryCommandsTest, AFailureSaysWhyInOneLineAndChangesNothing) {
  ExpectFailures(2, "", "= subcommand; bogus = bogus; --registry '' registry check = empty file name");
  ExpectFailures(2, "registry ", R"(
      = subcommand; bogus = bogus; bogus set K x = bogus; import = FILE; set K = DATA; delete = KEY;
      export --format regedit6 = regedit6; query K -s -v x = exclude; delete HKLM -f = hive;
      query hkcu = only HKEY_LOCAL_MACHINE; query \K = begins with a backslash)");
  ExpectFailure({"registry", "query", std::string(256, 'k')}, 2, "over 255");
  ExpectFailures(2, "registry set K -t ", R"(
      REG_WORD x = not one of REG_SZ; REG_DWORD 12x = 32 bits; REG_DWORD '' = 32 bits; REG_DWORD 0x = 32 bits;
      REG_DWORD 1.5 = 32 bits; REG_DWORD 4294967296 = 32 bits; REG_DWORD -2147483649 = 32 bits;
      REG_QWORD 18446744073709551616 = 64 bits; REG_QWORD -9223372036854775809 = 64 bits;
      real 1,5 = not a real number; real 1e400 = not a real number; real nan = not a real number;
      REG_BINARY 123 = pairs of hexadecimal; REG_BINARY 1g = pairs; REG_MULTI_SZ a\0\0b = empty text)");
  ExpectFailure({"registry", "set", "K", " 1", "-t", "REG_DWORD"}, 2, "32 bits");
  ExpectFailures(1, "registry ", R"(
      set K Ж = U+0416 is not in code page 1252; set K x -v Ж = U+0416; set Ж x = U+0416;
      export K = HKEY_LOCAL_MACHINE\SOFTWARE\MOXEL\K: not found; query HKLM -v x = value "x";
      query HKCR\K = HKEY_CLASSES_ROOT\K: not found; delete K = not found; delete K -v x = not found;
      import /missing/file.reg = /missing/file.reg: No such file)");
  ExpectFailure({"registry", "set", "K", "\xE9"}, 1, "not valid UTF-8");
  EXPECT_FALSE(std::filesystem::exists(file()));
}

TEST_F(RegistryCommandsTest, ImportAppliesAFileInItsOrderAndNothingOfAMalformedOne) {
  const std::string k = "HKEY_LOCAL_MACHINE\\K", set = "[" + k + "]\n\"x\"=\"1\"\n\"y\"=\"2\"\n";
  Do(Words("registry import -"), "REGEDIT4\n[" + k + "\\B\\C]\n" + set);
  const std::string begin = "REGEDIT4\n[-" + k + "\\B]\n[-" + k + "\\Missing\\Deep]\n" + set;
  const std::string end = "[" + k + "\\B]\n@=\"5\"\n[-" + k + "\\b]\n";
  EXPECT_EQ(Do(Words("registry import -"), begin + "\"y\"=-\n\"missing\"=-\n\"X\"=\"3\"\n" + end),
            "keys: 2 set, 3 deleted; values: 4 set, 1 deleted\n");
  EXPECT_EQ(Registry("query HKLM\\K -s"), "HKEY_LOCAL_MACHINE\\K\n    x    REG_SZ    3\n");

  const std::string path = folder() / "bad.reg";
  WriteFile(path, "REGEDIT4\r\n[HKEY_LOCAL_MACHINE\\New]\r\n\"x\"=\"1\"\r\n\"y\"=dword:xyz\r\n");
  const ToolRun run = Moxel({"registry", "import", path});
  EXPECT_EQ(std::pair(run.exit_code, run.out), std::pair(2, ""s));
  EXPECT_TRUE(run.err.starts_with(path + ":4: ")) << run.err;
  ExpectFailure(Words("registry query HKLM\\New"), 1, "not found");
}

TEST_F(RegistryCommandsTest, StoredDataIsWhatTheArgumentSaysAndIsPrintedReadably) {
  // Type and argument, the form in a .reg file, as printed and in JSON.
  const std::tuple<std::string, std::string, std::string, std::string, json> cases[] = {
      {"REG_SZ", "-v", "\"-v\"", "REG_SZ    -v", "-v"},
      {"REG_SZ", "[a,b]", "\"[a,b]\"", "REG_SZ    [a,b]", "[a,b]"},
      {"reg_sz", "import", "\"import\"", "REG_SZ    import", "import"},
      {"REG_SZ", "\n\x1B[\xC2\x9D", "hex(1):0a,1b,5b,9d,00", "REG_SZ    \\n\\x1B[\\x9D", "\n\x1B[\xC2\x9D"},
      {"REG_MULTI_SZ", "a\\0b", "hex(7):61,00,62,00,00", "REG_MULTI_SZ    a\\0b", {"a", "b"}},
      {"REG_MULTI_SZ", "", "hex(7):00", "REG_MULTI_SZ    ", json::array()},
      {"REG_DWORD", "4294967295", "dword:ffffffff", "REG_DWORD    -1 (0xffffffff)", -1},
      {"REG_DWORD", "-2147483648", "dword:80000000", "-2147483648 (0x80000000)", -2147483648},
      {"REG_QWORD", "0x2710", "hex(b):10,27,00,00,00,00,00,00", "REG_QWORD    10000 (0x2710)", 10000},
      {"REG_BINARY", "9E 9d,9C", "hex:9e,9d,9c", "REG_BINARY    9e 9d 9c", "9e 9d 9c"},
      {"real", "-1e-3", "hex(4):fc,a9,f1,d2,4d,62,50,bf", "real    -0.001", -0.001}};
  for (const auto& [type, argument, form, printed, data] : cases) {
    Do({"registry", "set", "HKLM\\K", "-t", type, "-v", "n", "--", argument});
    EXPECT_EQ(Registry("export HKLM\\K --format regedit4"),
              "REGEDIT4\r\n\r\n[HKEY_LOCAL_MACHINE\\K]\r\n\"n\"=" + form + "\r\n\r\n");
    EXPECT_TRUE(Registry("query HKLM\\K -v N").ends_with("    " + printed + "\n")) << printed;
    EXPECT_EQ(Query("HKLM\\K -v n")["data"], data);
  }
}

TEST_F(RegistryCommandsTest, QueryPrintsAKeyItsSubkeysAndItsTree) {
  const std::string domain = "HKEY_LOCAL_MACHINE\\SOFTWARE\\MOXEL\\Domain";
  Do(Words("registry import -"), "REGEDIT4\n[" + domain + "\\Sales]\n@=\"d\"\n\"t\"=hex(2a):01,ff\n");
  EXPECT_EQ(Registry("query DOMAIN\\"), domain + "\n\n" + domain + "\\Sales\n");
  EXPECT_EQ(Registry("query Domain -s"),
            domain + "\n\n" + domain + "\\Sales\n    (Default)    REG_SZ    d\n    t    hex(2a)    01 ff\n");
  const json tree = Query("-s");
  EXPECT_EQ(tree.at(0)["subkeys"], json({"Domain"}));
  EXPECT_EQ(tree.at(2)["key"], domain + "\\Sales");
  EXPECT_EQ(tree.at(2)["values"][1], (json{{"name", "t"}, {"type", "hex(2a)"}, {"data", "01 ff"}}));
}

TEST_F(RegistryCommandsTest, DeleteTakesATreeOnlyByForce) {
  for (const char* set : {"A\\B\\C x", "A d", "A 1 -v x"}) Registry("set "s + set);
  Registry("delete a -v ''");
  EXPECT_EQ(Query("A")["values"].size(), 1u);
  ExpectFailure(Words("registry delete A"), 1, "--force");
  Registry("delete A\\B\\C");
  Registry("delete A --force");
  EXPECT_EQ(Query("")["subkeys"].size(), 0u);
}

TEST_F(RegistryCommandsTest, ExportReplacesTheFileInOneStepAndADeviceNever) {
  Registry("set K x");
  const std::filesystem::path target = folder() / "out" / "x.reg", link = folder() / "out" / "link.reg";
  std::filesystem::create_directory(target.parent_path());
  WriteFile(target, "old");
  ASSERT_EQ(::chmod(target.c_str(), 0640), 0);
  std::filesystem::create_symlink("x.reg", link);
  EXPECT_EQ(Do({"registry", "export", "-o", link}), "");
  EXPECT_TRUE(std::filesystem::is_symlink(link));
  EXPECT_EQ(std::filesystem::status(target).permissions(), static_cast<std::filesystem::perms>(0640));

  // A failed export leaves the old file, and nothing beside it.
  ExpectFailure({"registry", "export", "Missing", "-o", target}, 1, "not found");
  EXPECT_EQ(ReadFile(target), Registry("export"));
  ExpectFailure({"registry", "export", "-o", folder() / "none" / "x"}, 1, "none/x");
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(target.parent_path()), {}), 2);
  Registry("export -o /dev/null");
  EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));
  ExpectFailure(Words("registry export -o /dev/full"), 1, "/dev/full: No space left");
}

TEST_F(RegistryCommandsTest, CheckTellsASoundFileFromAnotherAndWhenItCannotSay) {
  const std::string foreign = folder() / "foreign.db", fresh = folder() / "fresh.db";
  EXPECT_EQ(Registry("check"), file().string() + ": sound\n");
  std::ofstream full("/dev/full");
  std::istringstream in;
  std::ostringstream err;
  const char* arguments[] = {"moxel", "registry", "check"};
  EXPECT_EQ(RunTool(3, arguments, {in, full, err}), 1);
  EXPECT_NE(err.str().find("standard output"), std::string::npos);
  Do({"--registry", fresh, "registry", "set", "K", "x"});
  EXPECT_EQ(Do({"registry", "check", "--registry", fresh}), fresh + ": sound\n");
  ExpectFailure({"registry", "query", "K", "--registry", file()}, 1, "not found");
  WriteFile(foreign, std::string(4096, 'x'));
  for (const char* line :
       {"registry check", "registry query", "registry export", "registry set K x", "registry delete K -f",
        "registry backup x.db", "tree", "domain list", "user list", "variable get --domain D V"})
    ExpectFailure(Words("--registry " + foreign + " " + line), 1, foreign + ": ");
  EXPECT_EQ(ReadFile(foreign), std::string(4096, 'x'));
}

TEST_F(RegistryCommandsTest, ABackupRestores) {
  const std::string backup = folder() / "backup.db";
  Registry("set Kept x");
  const std::string before = Registry("export");
  Do({"registry", "backup", backup});
  Do(Words("registry set Later x"));
  Do({"registry", "restore", backup});
  EXPECT_EQ(Registry("export"), before);
  ExpectFailure({"registry", "restore", folder() / "none.db"}, 1, "none.db: there is no such backup");
  ExpectFailure({"registry", "backup", folder() / "none" / "b.db"}, 1, "none/b.db");
  EXPECT_EQ(Do({"registry", "export", "--registry", backup}), before);
}

TEST(ComponentLibraryTest, AMissingLibraryOrExportIsNamed) {
  const auto message = [](const char* library) -> std::string {
    try {
      return tool::ComponentLibrary(library).Call("DllRegisterServer"), "";
    } catch (const tool::ToolError& error) {
      return error.what();
    }
  };
  EXPECT_NE(message("/missing/libmoxel.so").find("/missing/libmoxel.so: cannot open"), std::string::npos);
  EXPECT_NE(message("libc.so.6").find("DllRegisterServer"), std::string::npos);
}

}  // namespace
}  // namespace moxel::test
