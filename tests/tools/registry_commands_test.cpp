#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <string>
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
using tool::ReadFile;
using tool::WriteFile;
using Arguments = std::vector<std::string>;

class RegistryCommandsTest : public RegistryTest {
 protected:
  // Runs a command that has to succeed in silence on the error stream; gives what it printed.
  static std::string Do(const Arguments& arguments, const std::string& input = "") {
    const ToolRun run = Moxel(arguments, input);
    EXPECT_EQ(run.exit_code, 0) << ::testing::PrintToString(arguments);
    EXPECT_EQ(run.err, "") << ::testing::PrintToString(arguments);
    return run.out;
  }

  static std::string Import(const std::string& sections) {
    return Do({"registry", "import", "-"}, "REGEDIT4\n" + sections);
  }

  static nlohmann::json Query(const Arguments& arguments) {
    Arguments whole{"registry", "query", "--json"};
    whole.insert(whole.end(), arguments.begin(), arguments.end());
    return nlohmann::json::parse(Do(whole));
  }
};

// ---- Exit codes: 1 refused or failed, 2 wrong usage; one line on the error stream

struct Failing {
  Arguments arguments;
  int exit_code;
  std::string message;
};

void PrintTo(const Failing& failing, std::ostream* out) {
  *out << ::testing::PrintToString(failing.arguments);
}

class FailingCommand : public RegistryTest, public ::testing::WithParamInterface<Failing> {};

TEST_P(FailingCommand, SaysWhyInOneLineAndChangesNothing) {
  const ToolRun run = Moxel(GetParam().arguments);
  EXPECT_EQ(run.exit_code, GetParam().exit_code);
  EXPECT_EQ(run.out, "");
  EXPECT_TRUE(run.err.starts_with("moxel: ")) << run.err;
  EXPECT_EQ(run.err.find('\n'), run.err.size() - 1);
  EXPECT_NE(run.err.find(GetParam().message), std::string::npos) << run.err;
  EXPECT_FALSE(std::filesystem::exists(file()));
}

INSTANTIATE_TEST_SUITE_P(
    Usage, FailingCommand,
    ::testing::Values(Failing{{}, 2, "subcommand"}, Failing{{"bogus"}, 2, "bogus"},
                      Failing{{"registry"}, 2, "subcommand"}, Failing{{"registry", "bogus"}, 2, "bogus"},
                      Failing{{"registry", "bogus", "set", "K", "x"}, 2, "bogus"},
                      Failing{{"registry", "import"}, 2, "FILE"},
                      Failing{{"registry", "set", "K"}, 2, "DATA"}, Failing{{"registry", "delete"}, 2, "KEY"},
                      Failing{{"registry", "export", "--format", "regedit6"}, 2, "regedit6"},
                      Failing{{"registry", "query", "K", "-s", "-v", "x"}, 2, "exclude"},
                      Failing{{"--registry", "", "registry", "check"}, 2, "empty file name"},
                      Failing{{"registry", "delete", "HKLM", "-f"}, 2, "hive"},
                      Failing{{"registry", "query", "HKEY_CURRENT_USER\\K"}, 2, "only HKEY_LOCAL_MACHINE"},
                      Failing{{"registry", "query", "hkcu"}, 2, "only HKEY_LOCAL_MACHINE"},
                      Failing{{"registry", "query", "\\K"}, 2, "begins with a backslash"},
                      Failing{{"registry", "set", std::string(256, 'k'), "x"}, 2, "over 255"}));

INSTANTIATE_TEST_SUITE_P(
    Data, FailingCommand,
    ::testing::Values(
        Failing{{"registry", "set", "K", "x", "-t", "REG_WORD"}, 2, "not one of REG_SZ"},
        Failing{{"registry", "set", "K", "12x", "-t", "REG_DWORD"}, 2, "not a whole number of 32 bits"},
        Failing{{"registry", "set", "K", "", "-t", "REG_DWORD"}, 2, "32 bits"},
        Failing{{"registry", "set", "K", " 1", "-t", "REG_DWORD"}, 2, "32 bits"},
        Failing{{"registry", "set", "K", "1.5", "-t", "REG_DWORD"}, 2, "32 bits"},
        Failing{{"registry", "set", "K", "0x", "-t", "REG_DWORD"}, 2, "32 bits"},
        Failing{{"registry", "set", "K", "4294967296", "-t", "REG_DWORD"}, 2, "32 bits"},
        Failing{{"registry", "set", "K", "-2147483649", "-t", "REG_DWORD"}, 2, "32 bits"},
        Failing{{"registry", "set", "K", "18446744073709551616", "-t", "REG_QWORD"}, 2, "64 bits"},
        Failing{{"registry", "set", "K", "-9223372036854775809", "-t", "REG_QWORD"}, 2, "64 bits"},
        Failing{{"registry", "set", "K", "1,5", "-t", "real"}, 2, "not a real number"},
        Failing{{"registry", "set", "K", "1e400", "-t", "real"}, 2, "not a real number"},
        Failing{{"registry", "set", "K", "nan", "-t", "real"}, 2, "not a real number"},
        Failing{{"registry", "set", "K", "123", "-t", "REG_BINARY"}, 2, "pairs of hexadecimal"},
        Failing{{"registry", "set", "K", "1g", "-t", "REG_BINARY"}, 2, "pairs of hexadecimal"},
        Failing{{"registry", "set", "K", "a\\0\\0b", "-t", "REG_MULTI_SZ"}, 2, "empty text"},
        Failing{{"registry", "set", "K", "\xD0\x96"}, 1, "U+0416 is not in code page 1252"},
        Failing{{"registry", "set", "K", "x", "-v", "\xD0\x96"}, 1, "U+0416 is not in code page 1252"},
        Failing{{"registry", "set", "\xD0\x96", "x"}, 1, "U+0416 is not in code page 1252"},
        Failing{{"registry", "set", "K", "\xE9"}, 1, "not valid UTF-8"}));

INSTANTIATE_TEST_SUITE_P(
    Missing, FailingCommand,
    ::testing::Values(
        Failing{{"registry", "export", "K"}, 1, "HKEY_LOCAL_MACHINE\\SOFTWARE\\MOXEL\\K: not found"},
        Failing{{"registry", "query", "HKCR\\K"}, 1, "HKEY_CLASSES_ROOT\\K: not found"},
        Failing{{"registry", "query", "HKLM", "-v", "x"}, 1, "value \"x\""},
        Failing{{"registry", "delete", "K"}, 1, "not found"},
        Failing{{"registry", "delete", "K", "-v", "x"}, 1, "not found"},
        Failing{{"registry", "import", "/missing/file.reg"}, 1, "/missing/file.reg: No such file"}));

TEST_F(RegistryCommandsTest, AMalformedFileIsNamedByLineAndNothingOfItIsApplied) {
  const std::filesystem::path path = folder() / "bad.reg";
  WriteFile(path, "REGEDIT4\r\n[HKEY_LOCAL_MACHINE\\New]\r\n\"x\"=\"1\"\r\n\"y\"=dword:xyz\r\n");
  const ToolRun run = Moxel({"registry", "import", path.string()});
  EXPECT_EQ(run.exit_code, 2);
  EXPECT_TRUE(run.err.starts_with(path.string() + ":4: ")) << run.err;
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(Moxel({"registry", "query", "HKLM\\New"}).exit_code, 1);
}

TEST_F(RegistryCommandsTest, ImportCountsWhatItDid) {
  Import("[HKEY_LOCAL_MACHINE\\K\\L]\n\"x\"=\"1\"\n\"y\"=\"1\"\n");
  EXPECT_EQ(Import("[HKEY_LOCAL_MACHINE\\K\\L]\n\"x\"=-\n\"z\"=-\n[-HKEY_LOCAL_MACHINE\\K]\n"),
            "keys: 1 set, 2 deleted; values: 0 set, 1 deleted\n");
}

// ---- set and query

struct Stored {
  std::string type;
  std::string argument;
  std::string form;  // in a .reg file
  std::string printed;
  nlohmann::json json;
};

void PrintTo(const Stored& stored, std::ostream* out) { *out << stored.type << ' ' << stored.argument; }

class StoredData : public RegistryCommandsTest, public ::testing::WithParamInterface<Stored> {};

TEST_P(StoredData, IsWhatTheArgumentSaysAndIsPrintedReadably) {
  const Stored& stored = GetParam();
  Do({"registry", "set", "HKLM\\K", "-t", stored.type, "-v", "n", "--", stored.argument});
  EXPECT_EQ(Do({"registry", "export", "HKLM\\K", "--format", "regedit4"}),
            "REGEDIT4\r\n\r\n[HKEY_LOCAL_MACHINE\\K]\r\n\"n\"=" + stored.form + "\r\n\r\n");
  const std::string printed = Do({"registry", "query", "HKLM\\K", "-v", "N"});
  EXPECT_TRUE(printed.ends_with("    " + stored.printed + "\n")) << printed;
  EXPECT_EQ(Query({"HKLM\\K", "-v", "n"})["data"], stored.json);
}

INSTANTIATE_TEST_SUITE_P(
    Types, StoredData,
    ::testing::Values(
        Stored{"REG_SZ", "", "\"\"", "REG_SZ    ", ""},
        Stored{"REG_SZ", "-v", "\"-v\"", "REG_SZ    -v", "-v"},
        Stored{"reg_sz", "[a,b]", "\"[a,b]\"", "REG_SZ    [a,b]", "[a,b]"},
        Stored{"REG_SZ", "import", "\"import\"", "REG_SZ    import", "import"},
        Stored{"REG_SZ", "C:\\\xE2\x82\xAC", "\"C:\\\\\x80\"", "REG_SZ    C:\\\xE2\x82\xAC",
               "C:\\\xE2\x82\xAC"},
        Stored{"REG_SZ", "a\nb\x1B[1m\xC2\x9D", "hex(1):61,0a,62,1b,5b,31,6d,9d,00",
               "REG_SZ    a\\nb\\x1B[1m\\x9D", "a\nb\x1B[1m\xC2\x9D"},
        Stored{"REG_EXPAND_SZ", "%x%", "hex(2):25,78,25,00", "REG_EXPAND_SZ    %x%", "%x%"},
        Stored{"REG_MULTI_SZ", "a\\0b", "hex(7):61,00,62,00,00", "REG_MULTI_SZ    a\\0b", {"a", "b"}},
        Stored{"REG_MULTI_SZ", "", "hex(7):00", "REG_MULTI_SZ    ", nlohmann::json::array()},
        Stored{"REG_DWORD", "4294967295", "dword:ffffffff", "REG_DWORD    -1 (0xffffffff)", -1},
        Stored{"REG_DWORD", "-2147483648", "dword:80000000", "REG_DWORD    -2147483648 (0x80000000)",
               -2147483648},
        Stored{"REG_DWORD", "0x2710", "dword:00002710", "REG_DWORD    10000 (0x2710)", 10000},
        Stored{"REG_QWORD", "-2", "hex(b):fe,ff,ff,ff,ff,ff,ff,ff", "REG_QWORD    -2 (0xfffffffffffffffe)",
               -2},
        Stored{"REG_BINARY", "9E 9d,9C", "hex:9e,9d,9c", "REG_BINARY    9e 9d 9c", "9e 9d 9c"},
        Stored{"real", "2.5", "hex(4):00,00,00,00,00,00,04,40", "real    2.5", 2.5},
        Stored{"real", "-1e-3", "hex(4):fc,a9,f1,d2,4d,62,50,bf", "real    -0.001", -0.001}));

TEST_F(RegistryCommandsTest, QueryPrintsAKeyItsSubkeysAndItsTree) {
  Import("[HKEY_LOCAL_MACHINE\\SOFTWARE\\MOXEL\\Domain\\Sales]\n@=\"d\"\n\"t\"=hex(2a):01,ff\n");
  EXPECT_EQ(
      Do({"registry", "query", "DOMAIN\\"}),
      "HKEY_LOCAL_MACHINE\\SOFTWARE\\MOXEL\\Domain\n\nHKEY_LOCAL_MACHINE\\SOFTWARE\\MOXEL\\Domain\\Sales\n");
  EXPECT_EQ(Do({"registry", "query", "Domain", "-s"}),
            "HKEY_LOCAL_MACHINE\\SOFTWARE\\MOXEL\\Domain\n"
            "\n"
            "HKEY_LOCAL_MACHINE\\SOFTWARE\\MOXEL\\Domain\\Sales\n"
            "    (Default)    REG_SZ    d\n"
            "    t    hex(2a)    01 ff\n");
  const nlohmann::json tree = Query({"-s"});
  ASSERT_EQ(tree.size(), 3u);
  EXPECT_EQ(tree[0]["subkeys"], nlohmann::json({"Domain"}));
  EXPECT_EQ(tree[2]["key"], "HKEY_LOCAL_MACHINE\\SOFTWARE\\MOXEL\\Domain\\Sales");
  EXPECT_EQ(tree[2]["values"][1], (nlohmann::json{{"name", "t"}, {"type", "hex(2a)"}, {"data", "01 ff"}}));
}

TEST_F(RegistryCommandsTest, DeleteTakesATreeOnlyByForce) {
  Import(
      "[HKEY_LOCAL_MACHINE\\SOFTWARE\\MOXEL\\A\\B\\C]\n[HKEY_LOCAL_MACHINE\\SOFTWARE\\MOXEL\\A]\n@="
      "\"d\"\n\"x\"=\"1\"\n");
  Do({"registry", "delete", "a", "-v", ""});
  EXPECT_EQ(Query({"A"})["values"].size(), 1u);
  const ToolRun refused = Moxel({"registry", "delete", "A"});
  EXPECT_EQ(refused.exit_code, 1);
  EXPECT_NE(refused.err.find("--force"), std::string::npos);
  Do({"registry", "delete", "A\\B\\C"});
  EXPECT_EQ(Query({"A\\B"})["subkeys"].size(), 0u);
  Do({"registry", "delete", "A", "--force"});
  EXPECT_EQ(Query({})["subkeys"].size(), 0u);
}

// ---- Files and the tool as a whole

TEST_F(RegistryCommandsTest, TheRegistryFileMayBeNamedBeforeAndBehindTheVerb) {
  const std::string other = (folder() / "other.db").string();
  Do({"--registry", other, "registry", "set", "K", "x"});
  EXPECT_FALSE(std::filesystem::exists(file()));
  EXPECT_EQ(Query({"K", "--registry", other})["values"][0]["data"], "x");
}

TEST_F(RegistryCommandsTest, ExportReplacesTheFileInOneStep) {
  Do({"registry", "set", "K", "x"});
  const std::filesystem::path target = folder() / "out.reg";
  const std::filesystem::path link = folder() / "link.reg";
  WriteFile(target, "old");
  ASSERT_EQ(::chmod(target.c_str(), 0640), 0);
  std::filesystem::create_symlink("out.reg", link);
  EXPECT_EQ(Do({"registry", "export", "-o", link.string()}), "");
  EXPECT_TRUE(std::filesystem::is_symlink(link));
  EXPECT_EQ(ReadFile(target), Do({"registry", "export"}));
  EXPECT_EQ(std::filesystem::status(target).permissions(), static_cast<std::filesystem::perms>(0640));

  // A failed export leaves the old file, and nothing beside it.
  EXPECT_EQ(Moxel({"registry", "export", "Missing", "-o", target.string()}).exit_code, 1);
  EXPECT_EQ(ReadFile(target), Do({"registry", "export"}));
  EXPECT_EQ(Moxel({"registry", "export", "-o", (folder() / "none" / "x").string()}).exit_code, 1);
  for (const auto& entry : std::filesystem::directory_iterator(folder())) {
    const std::string name = entry.path().filename().string();
    EXPECT_TRUE(name == "out.reg" || name == "link.reg" || name.starts_with("registry.db")) << name;
  }
}

TEST_F(RegistryCommandsTest, ExportWritesIntoADeviceWithoutReplacingIt) {
  Do({"registry", "set", "K", "x"});
  Do({"registry", "export", "-o", "/dev/null"});
  EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));
  const ToolRun full = Moxel({"registry", "export", "-o", "/dev/full"});
  EXPECT_EQ(full.exit_code, 1);
  EXPECT_NE(full.err.find("/dev/full: No space left"), std::string::npos) << full.err;
}

TEST_F(RegistryCommandsTest, CheckTellsASoundFileFromAnother) {
  EXPECT_EQ(Do({"registry", "check"}), file().string() + ": sound\n");
  Do({"registry", "set", "K", "x"});
  EXPECT_EQ(Do({"registry", "check"}), file().string() + ": sound\n");

  const std::filesystem::path foreign = folder() / "foreign.db";
  WriteFile(foreign, std::string(4096, 'x'));
  for (const Arguments& arguments :
       {Arguments{"registry", "check"}, Arguments{"registry", "query"}, Arguments{"registry", "export"},
        Arguments{"registry", "set", "K", "x"}, Arguments{"registry", "delete", "K", "-f"}}) {
    Arguments with_file = arguments;
    with_file.insert(with_file.end(), {"--registry", foreign.string()});
    const ToolRun run = Moxel(with_file);
    EXPECT_EQ(run.exit_code, 1);
    EXPECT_NE(run.err.find(foreign.string() + ": "), std::string::npos) << run.err;
    EXPECT_EQ(run.out, "");
  }
  EXPECT_EQ(ReadFile(foreign), std::string(4096, 'x'));
}

TEST_F(RegistryCommandsTest, AnOutputThatTakesNothingIsAFailure) {
  std::ofstream full("/dev/full");
  std::istringstream in;
  std::ostringstream err;
  const char* arguments[] = {"moxel", "registry", "check"};
  EXPECT_EQ(RunTool(3, arguments, in, full, err), 1);
  EXPECT_NE(err.str().find("standard output"), std::string::npos);
}

TEST_F(RegistryCommandsTest, EveryVerbHasHelpWithAnExample) {
  EXPECT_EQ(Do({"--version"}), "1.4\n");
  for (const Arguments& verb :
       {Arguments{}, Arguments{"register"}, Arguments{"unregister"}, Arguments{"registry"},
        Arguments{"registry", "import"}, Arguments{"registry", "export"}, Arguments{"registry", "query"},
        Arguments{"registry", "set"}, Arguments{"registry", "delete"}, Arguments{"registry", "check"}}) {
    Arguments asking = verb;
    asking.push_back("--help");
    const std::string help = Do(asking);
    std::string example = "Example:\n  moxel";
    for (const std::string& word : verb) example += " " + word;
    EXPECT_NE(help.find(example), std::string::npos) << help;
  }
}

TEST(ComponentLibraryTest, AMissingLibraryOrExportIsNamed) {
  const auto message = [](const std::string& library) -> std::string {
    try {
      tool::ComponentLibrary(library).Call("DllRegisterServer");
    } catch (const tool::ToolError& error) {
      return error.what();
    }
    return "";
  };
  EXPECT_NE(message("/missing/libmoxel.so").find("/missing/libmoxel.so: cannot open"), std::string::npos);
  EXPECT_NE(message("libc.so.6").find("DllRegisterServer"), std::string::npos);
}

}  // namespace
}  // namespace moxel::test
