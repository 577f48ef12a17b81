#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tests/support/registry_access.h"
#include "tests/support/temp_registry.h"
#include "tests/tools/run_tool.h"

namespace moxel::test {
namespace {

using Arguments = std::vector<std::string>;

std::string Section(const std::string& path, const std::string& values) {
  return "[HKEY_LOCAL_MACHINE\\SOFTWARE\\MOXEL\\" + path + "]\n" + values + "\n";
}

class VariableCommandsTest : public RegistryTest {
 protected:
  static void Import(const std::string& sections) {
    const ToolRun run =
        Moxel({"registry", "import", "-"}, "Windows Registry Editor Version 5.00\n" + sections);
    ASSERT_EQ(run.exit_code, 0) << run.err;
  }

  static ToolRun RunGet(Arguments arguments) {
    arguments.insert(arguments.begin(), {"variable", "get"});
    return Moxel(arguments);
  }

  static void ExpectFailure(const ToolRun& run, int exit_code, const std::string& message) {
    EXPECT_EQ(run.exit_code, exit_code) << run.err;
    EXPECT_EQ(run.out, "");
    EXPECT_TRUE(run.err.starts_with("moxel: ")) << run.err;
    EXPECT_EQ(run.err.find('\n'), run.err.size() - 1) << run.err;
    EXPECT_NE(run.err.find(message), std::string::npos) << run.err;
  }
};

TEST_F(VariableCommandsTest, ValuesOfEveryTypeArePrinted) {
  const struct {
    const char* name;
    std::string values;
    std::string printed;
    nlohmann::json described;  // kind, data type, value, initial value
  } cases[] = {
      {"Region",
       "\"Value\"=\"\xC3\x8Ele-de-France\"\n\"Init\"=\"\"\n\"Type\"=dword:00000000\n\"V/C\"=\"V\"",
       "\xC3\x8Ele-de-France",
       {"variable", "text", "\xC3\x8Ele-de-France", ""}},
      {"Docks",
       "\"Value\"=dword:fffffff4\n\"Init\"=\"12\"\n\"Type\"=dword:00000001\n\"V/C\"=\"C\"",
       "-12",
       {"constant", "number", -12, "12"}},
      {"Open",
       "\"Value\"=\"1\"\n\"Init\"=\"0\"\n\"Type\"=dword:00000002\n\"V/C\"=\"V\"",
       "1",
       {"variable", "boolean", "1", "0"}},
      {"Ftp",
       "\"Value\"=hex(1):7e,01,9d,00,53,01,00,00\n\"Init\"=hex(1):53,01,00,00\n\"Type\"=dword:00000003\n\"V/"
       "C\"=\"C\"",
       "abc",
       {"constant", "password", "abc", "c"}},
      {"Day",
       "\"Value\"=\"2024-03-29 18:00:00.000\"\n\"Init\"=\"2024-01-31 "
       "18:00:00.000\"\n\"Type\"=dword:00000004\n"
       "\"V/C\"=\"V\"",
       "2024-03-29 18:00:00.000",
       {"variable", "date", "2024-03-29 18:00:00.000", "2024-01-31 18:00:00.000"}},
      {"Rate",
       "\"Value\"=hex(4):00,00,00,00,00,00,04,c0\n\"Init\"=hex(4):00,00,00,00,00,00,e0,3f\n"
       "\"Type\"=dword:00000006\n\"V/C\"=\"V\"",
       "-2.5",
       {"variable", "real", -2.5, 0.5}},
  };
  const struct {
    const char* owner;
    const char* option;
    std::string path;
  } owners[] = {{"domain", "--domain", "Domain\\Sales\\Var\\"},
                {"scenario", "--scenario", "Scenarios\\Sales\\Var\\"}};
  for (const auto& owner : owners)
    for (const auto& c : cases) {
      Import(Section(owner.path + c.name, c.values));
      const ToolRun run = RunGet({owner.option, "Sales", c.name});
      EXPECT_EQ(run.exit_code, 0) << c.name << ": " << run.err;
      EXPECT_EQ(run.out, c.printed + "\n") << c.name;
      EXPECT_EQ(run.err, "") << c.name;
      const nlohmann::json found =
          nlohmann::json::parse(RunGet({owner.option, "Sales", c.name, "--json"}).out);
      const nlohmann::json expected{
          {"owner", owner.owner},          {"ownerName", "Sales"},       {"name", c.name},
          {"kind", c.described[0]},        {"dataType", c.described[1]}, {"value", c.described[2]},
          {"initialValue", c.described[3]}};
      EXPECT_EQ(found, expected) << found;
    }
}

TEST_F(VariableCommandsTest, WhatIsMissingIsNamed) {
  Import(Section("Domain\\Sales\\Var\\Region", "\"Value\"=\"x\"\n\"Type\"=dword:00000000\n\"V/C\"=\"V\""));
  const struct {
    Arguments arguments;
    const char* message;
  } cases[] = {
      {{"--domain", "Sales", "None"}, "variable \"None\" of domain \"Sales\": not found"},
      {{"--domain", "Sales", "REGION"}, "variable \"REGION\" of domain \"Sales\": not found"},
      {{"--scenario", "Sales", "Region"}, "variable \"Region\" of scenario \"Sales\": not found"},
      {{"--domain", "None", "Region", "--json"}, "variable \"Region\" of domain \"None\": not found"},
      {{"--domain", "Sales", "\xE9"}, "is not UTF-8"},
  };
  for (const auto& c : cases) ExpectFailure(RunGet(c.arguments), 1, c.message);
}

TEST_F(VariableCommandsTest, WrongUsageIsRefused) {
  const struct {
    Arguments arguments;
    const char* message;
  } cases[] = {
      {{}, "VARIABLE"},
      {{"Region"}, "Exactly 1 option from [--domain,--scenario] is required"},
      {{"--domain", "Sales"}, "VARIABLE"},
      {{"--domain", "Sales", "--scenario", "Night", "Region"},
       "Exactly 1 option from [--domain,--scenario] is required"},
      {{"--domain", "Sales", "Region", "Other"}, "Other"},
      {{"--domain", "Sales", "Region", "--bogus"}, "--bogus"},
  };
  for (const auto& c : cases) ExpectFailure(RunGet(c.arguments), 2, c.message);
}

TEST_F(VariableCommandsTest, ALanguageThatIsNoNumberIsReported) {
  Import(Section("Configuration", "\"Lang\"=\"English\"") +
         Section("Domain\\Sales\\Var\\Region", "\"Value\"=\"x\"\n\"Type\"=dword:00000000\n\"V/C\"=\"V\""));
  ToolRun run;
  OnAnotherThread([&] {
    run = RunGet({"--domain", "Sales", "Region"});
  });  // one that has read no language yet
  ExpectFailure(run, 1, "error 13, MOXEL: Type mismatch");
}

}  // namespace
}  // namespace moxel::test
