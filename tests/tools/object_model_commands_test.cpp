// The verbs over the object model, on the configuration that comes as an example.
#include <gtest/gtest.h>
#include <pty.h>
#include <signal.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <filesystem>
#include <iostream>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "moxel/files.h"
#include "tests/support/temp_registry.h"
#include "tests/tools/run_tool.h"

namespace moxel::test {
namespace {

using nlohmann::json;

class ObjectModelCommandsTest : public RegistryTest {
 protected:
  ObjectModelCommandsTest() { Do({"registry", "import", MOXEL_EXAMPLES "/configuration.reg"}); }

  static json Json(const Arguments& arguments) { return json::parse(Do(arguments + Arguments{"--json"})); }

  static void ExpectFailure(const ToolRun& run, int exit_code, const std::string& error) {
    EXPECT_EQ(run.exit_code, exit_code);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, "moxel: " + error + "\n");
  }

  static std::string Export(const std::string& key = "") {
    return Do({"registry", "export", key, "--format", "regedit4"});
  }

  static void Import(const std::string& sections) {
    Do({"registry", "import", "-"}, "REGEDIT4\n" + sections);
  }

  static json Names(const json& objects) {
    json names = json::array();
    for (const json& object : objects) names.push_back(object.at("name"));
    return names;
  }

  // The field of the object of that name in a list.
  static json Field(const json& objects, const std::string& name, const std::string& field) {
    for (const json& object : objects)
      if (object.at("name") == name) return object.at(field);
    return "no " + name;
  }
};

constexpr const char* kProduct = "[HKEY_LOCAL_MACHINE\\SOFTWARE\\MOXEL\\";

// ---- What is printed

TEST_F(ObjectModelCommandsTest, TheTreeHasOneLineAnObject) {
  const std::string tree = Do({"tree"});
  for (const char* line :
       {"Configuration\n├─ user alice, permission 1\n",
        "├─ domain Sales (Orders, invoices and the daily figures in €)\n",
        "│  ├─ variable MailPassword = *********\n",
        "│  └─ scenario Night: with error\n│     ├─ user alice, permission 1\n",
        "│     ├─ constant Ratio = 0.5\n", "│     ├─ task Load, number 2: with error\n",
        "│     └─ task Notify, number 3: not processed\n├─ scenario Backup: not processed\n"})
    EXPECT_NE(tree.find(line), std::string::npos) << line << tree;
  const json whole = Json({"tree"});
  EXPECT_EQ(Names(whole["users"]), json({"alice", "bob", "Émile"}));
  EXPECT_EQ(Names(whole["domains"]), json({"Finance", "Logistics", "Sales"}));
  EXPECT_EQ(Names(whole["domains"][2]["scenarios"]), json({"Invoices", "Night"}));
  EXPECT_EQ(Names(whole["domains"][2]["scenarios"][1]["tasks"]), json({"Extract", "Load", "Notify"}));
  EXPECT_EQ(Field(whole["scenarios"], "Health check", "state"), "not processed");
}

TEST_F(ObjectModelCommandsTest, AnEmptyRegistryIsListedAsEmpty) {
  Do({"registry", "delete", "HKLM\\SOFTWARE\\MOXEL", "--force"});
  EXPECT_EQ(Do({"tree"}), "Configuration\n");
  EXPECT_EQ(Json({"domain", "list"}), json::array());
  EXPECT_EQ(Json({"scenario", "list"}), json::array());
  EXPECT_EQ(Do({"user", "list"}), "NAME  PERMISSION  PASSWORD\n");
}

TEST_F(ObjectModelCommandsTest, TablesAreAlignedByCharacters) {
  EXPECT_EQ(Do({"user", "list"}),
            "NAME   PERMISSION  PASSWORD\n"
            "alice  1           ******\n"
            "bob    0           ***\n"
            "Émile  0\n");
  EXPECT_EQ(Do({"domain", "show", "Sales"}),
            "Domain   Sales\n"
            "Comment  Orders, invoices and the daily figures in €\n"
            "\n"
            "Variables\n"
            "  NAME          KIND      TYPE      VALUE                    INITIAL VALUE\n"
            "  Average       variable  real      2.5                      0\n"
            "  Invoices      variable  number    12                       0\n"
            "  MailPassword  variable  password  *********                *****\n"
            "  Printed       variable  boolean   1                        0\n"
            "  Region        variable  text      Île-de-France            France\n"
            "  RunDate       variable  date      2024-03-15 08:30:00.000  2024-01-01 00:00:00.000\n"
            "  Signature     constant  text      The sales team           The sales team\n"
            "\n"
            "Scenarios\n"
            "  NAME      STATE          MODE\n"
            "  Invoices  not processed  1\n"
            "  Night     with error     0\n");
  EXPECT_EQ(Do({"task", "list", "Rounds"}),
            "NO  NAME  STATE       TYPE  ACTIONS  LAST RUN\n"
            "1   Plan  processed   1     SS       2024-03-15 05:00:00.300\n"
            "2   Send  processing  5        P     2024-03-15 05:10:00.000\n");
}

TEST_F(ObjectModelCommandsTest, EveryScenarioIsListedWithItsDomain) {
  json domains;
  for (const json& scenario : Json({"scenario", "list"}))
    domains[scenario["domain"].get<std::string>()].push_back(scenario["name"]);
  EXPECT_EQ(domains["Logistics"], json({"Rounds", "Stocktaking"}));
  EXPECT_EQ(domains["Sales"], json({"Invoices", "Night"}));
  EXPECT_EQ(domains[""][0], "Backup");
  EXPECT_EQ(Json({"scenario", "list", "--domain", "Logistics"}),
            json({{{"name", "Rounds"}, {"domain", "Logistics"}, {"state", "processing"}, {"mode", 0}},
                  {{"name", "Stocktaking"}, {"domain", "Logistics"}, {"state", "pause"}, {"mode", 2}}}));
}

TEST_F(ObjectModelCommandsTest, AScenarioIsShownWhole) {
  const json night = Json({"scenario", "show", "night"});
  EXPECT_EQ(night["name"], "Night");
  EXPECT_EQ(night["useSocket"], true);
  EXPECT_EQ(night["port"], 5001);
  EXPECT_EQ(night["users"],
            json({{{"name", "alice"}, {"permission", 1}}, {{"name", "bob"}, {"permission", 0}}}));
  EXPECT_EQ(Field(night["variables"], "Token", "value"), "*******");
  EXPECT_EQ(Field(night["variables"], "Attempts", "value"), 3);
  EXPECT_EQ(night["tasks"][1], json({{"position", 2},
                                     {"name", "Load"},
                                     {"state", "with error"},
                                     {"type", 2},
                                     {"lastRun", "2024-03-15 02:04:10.500"},
                                     {"actions", "ANOE"}}));
  EXPECT_NE(Do({"scenario", "show", "Night"}).find("Last run   2024-03-15 02:00:00.000\n\nUsers\n"),
            std::string::npos);
}

TEST_F(ObjectModelCommandsTest, OddRecordsAreShownAndHideNothing) {
  const std::string night = std::string(kProduct) + "Scenarios\\Night";
  Import(night + "]\n\"Etat\"=dword:00000007\n" + night + "\\Ordre]\n\"tsk2\"=\"Gone\"\n" + night +
         "\\Taches\\Notify]\n\"Etat\"=\"x\"\n");
  EXPECT_EQ(Field(Json({"scenario", "list"}), "Night", "state"), 7);
  const json tasks = Json({"task", "list", "Night"});
  EXPECT_EQ(Names(tasks), json({"Extract", "Gone", "Notify", "Load"}));
  EXPECT_EQ(tasks[1]["state"], "missing");
  EXPECT_EQ(tasks[2]["state"], "unreadable");
  EXPECT_EQ(tasks[3]["position"], nullptr);
  Import(std::string(kProduct) + "Domain\\Sales]\n\"Comment\"=hex(1):1b,5b,32,4a,0a,41\n");
  EXPECT_NE(Do({"domain", "list"}).find("\\x1B[2J\\nA"), std::string::npos);
}

// ---- Domains, scenarios, tasks

TEST_F(ObjectModelCommandsTest, DomainsAreCreatedChangedAndDeleted) {
  Do({"domain", "create", "Été", "--comment", "à faire"});
  EXPECT_EQ(Field(Json({"domain", "list"}), "Été", "comment"), "à faire");
  Do({"domain", "update", "Été", "--comment", ""});
  EXPECT_EQ(Field(Json({"domain", "list"}), "Été", "comment"), "");
  Do({"domain", "delete", "Été"});
  EXPECT_EQ(Names(Json({"domain", "list"})), json({"Finance", "Logistics", "Sales"}));
  Do({"domain", "delete", "Logistics", "--force"});
  EXPECT_EQ(Names(Json({"domain", "list"})), json({"Finance", "Sales"}));
  EXPECT_EQ(Field(Json({"scenario", "list"}), "Rounds", "name"), "no Rounds");
}

TEST_F(ObjectModelCommandsTest, ADomainIsResetAsFarAsAsked) {
  const auto region = [] { return Do({"variable", "get", "--domain", "Sales", "Region"}); };
  const auto attempts = [] { return Do({"variable", "get", "--scenario", "Night", "Attempts"}); };
  Do({"domain", "reset", "Sales"});
  EXPECT_EQ(Field(Json({"scenario", "list"}), "Night", "state"), "not processed");
  EXPECT_EQ(Field(Json({"task", "list", "Night"}), "Load", "state"), "not processed");
  EXPECT_EQ(region() + attempts(), "Île-de-France\n3\n");
  Do({"domain", "reset", "Sales", "--variables"});
  EXPECT_EQ(region() + attempts(), "France\n3\n");
  Do({"domain", "reset", "Sales", "--scenario-variables"});
  EXPECT_EQ(region() + attempts(), "France\n0\n");
  EXPECT_EQ(Field(Json({"scenario", "list"}), "Rounds", "state"), "processing");
}

TEST_F(ObjectModelCommandsTest, AScenarioIsResetInItsModes) {
  const struct {
    Arguments options;
    json states;
    int attempts;
  } cases[] = {{{"--mode", "scenario"}, {"processed", "with error", "not processed"}, 3},
               {{"--mode", "after-error"}, {"processed", "retry", "not processed"}, 3},
               {{"--variables"}, {"not processed", "not processed", "not processed"}, 0}};
  for (const auto& c : cases) {
    Do(Arguments{"scenario", "reset", "Night"} + c.options);
    const json night = Json({"scenario", "show", "Night"});
    EXPECT_EQ(night["state"], "not processed");
    EXPECT_EQ(Field(night["variables"], "Attempts", "value"), c.attempts);
    for (size_t i = 0; i < 3; ++i) EXPECT_EQ(night["tasks"][i]["state"], c.states[i]) << c.options.back();
  }
}

TEST_F(ObjectModelCommandsTest, ScenariosAndTasksAreDeleted) {
  Do({"scenario", "delete", "Backup", "--force"});
  Do({"scenario", "delete", "Rounds", "--force"});
  const json left = Names(Json({"scenario", "list"}));
  EXPECT_EQ(left, json({"Stocktaking", "Invoices", "Night", "Health check", "User"}));

  Do({"task", "reset", "Night", "Load"});
  EXPECT_EQ(Field(Json({"task", "list", "Night"}), "Load", "state"), "not processed");
  Do({"task", "reset", "Night", "Load", "--state", "retry"});
  EXPECT_EQ(Field(Json({"task", "list", "Night"}), "Load", "state"), "retry");
  const ToolRun run = Moxel({"task", "delete", "Night", "load"});
  EXPECT_EQ(run.exit_code, 0);
  EXPECT_NE(run.err.find("the order of scenario \"Night\" still names task \"Load\""), std::string::npos);
  EXPECT_EQ(Field(Json({"task", "list", "Night"}), "Load", "state"), "missing");
  const std::string before = Export();
  ExpectFailure(Moxel({"scenario", "reset", "Night"}), 1,
                "error 5, MOXEL: Invalid procedure call or argument");
  EXPECT_EQ(Export(), before);
}

// ---- Users

TEST_F(ObjectModelCommandsTest, UsersAreCreatedCheckedChangedAndDeleted) {
  Do({"user", "create", "zoé", "--permission", "1"}, "clé 1\nclé 1\n");
  EXPECT_EQ(Field(Json({"user", "list"}), "zoé", "permission"), 1);
  EXPECT_EQ(Field(Json({"user", "list"}), "zoé", "password"), "*****");
  Do({"user", "check", "zoé"}, "clé 1");
  Do({"user", "update", "zoé", "--permission", "0"});
  Do({"user", "update", "zoé", "--password"}, "clé 1\nnew\n");
  EXPECT_EQ(Field(Json({"user", "list"}), "zoé", "permission"), 0);
  Do({"user", "check", "zoé"}, "new\r\n");
  Do({"user", "delete", "zoé"});
  Do({"user", "delete", "bob"});
  EXPECT_EQ(Names(Json({"user", "list"})), json({"alice", "Émile"}));
  EXPECT_EQ(Names(Json({"scenario", "show", "Night"})["users"]), json({"alice"}));
}

TEST_F(ObjectModelCommandsTest, AUserWhoCannotBeDeletedIsReported) {
  Import(std::string(kProduct) + "User\\bob\\Below]\n");
  const std::string before = Export();
  ExpectFailure(Moxel({"user", "delete", "bob"}), 1, "user \"bob\": cannot be deleted");
  EXPECT_EQ(Export(), before);
}

// ---- Variables

// As other programs of the product leave them.
TEST_F(ObjectModelCommandsTest, VariablesOfEveryTypeAreRead) {
  const struct {
    const char* name;
    int type;
    std::string value, initial;
    std::string printed;
    json described;  // kind, type, value, initial value
  } cases[] = {
      {"Text", 0, "\"\xCEle\"", "\"\"", "Île", {"variable", "text", "Île", ""}},
      {"Number", 1, "dword:fffffff4", "\"12\"", "-12", {"constant", "number", -12, "12"}},
      {"Boolean", 2, "\"1\"", "\"0\"", "1", {"variable", "boolean", "1", "0"}},
      {"Password", 3, "hex(1):9e,9d,9c,00", "hex(1):9c,00", "abc", {"constant", "password", "abc", "c"}},
      {"Date",
       4,
       "\"2024-03-29 18:00:00.000\"",
       "\"2024-01-31 18:00:00.000\"",
       "2024-03-29 18:00:00.000",
       {"variable", "date", "2024-03-29 18:00:00.000", "2024-01-31 18:00:00.000"}},
      {"Real",
       6,
       "hex(4):00,00,00,00,00,00,04,c0",
       "hex(4):00,00,00,00,00,00,e0,3f",
       "-2.5",
       {"variable", "real", -2.5, 0.5}}};
  for (const std::string owner : {"domain", "scenario"})
    for (const auto& c : cases) {
      Import(kProduct + std::string(owner == "domain" ? "Domain" : "Scenarios") + "\\Sales\\Var\\" + c.name +
             "]\n\"Value\"=" + c.value + "\n\"Init\"=" + c.initial + "\n\"Type\"=dword:" +
             std::to_string(c.type) + "\n\"V/C\"=\"" + (c.described[0] == "constant" ? "C" : "V") + "\"\n");
      const Arguments get{"variable", "get", "--" + owner, "Sales", c.name};
      EXPECT_EQ(Do(get), c.printed + "\n");
      EXPECT_EQ(Json(get), json({{"owner", owner},
                                 {"ownerName", "Sales"},
                                 {"name", c.name},
                                 {"kind", c.described[0]},
                                 {"dataType", c.described[1]},
                                 {"value", c.described[2]},
                                 {"initialValue", c.described[3]}}));
    }
}

TEST_F(ObjectModelCommandsTest, VariablesOfEveryTypeAreCreated) {
  const struct {
    Arguments options;
    std::string input;
    json expected;  // kind, type, value, initial value
  } cases[] = {
      {{}, "", {"variable", "text", "", ""}},
      {{"été", "--init", "a b", "--kind", "constant"}, "", {"constant", "text", "été", "a b"}},
      {{"-5", "--type", "number"}, "", {"variable", "number", -5, 0}},
      {{"True", "--type", "boolean", "--init", "False"}, "", {"variable", "boolean", "1", "0"}},
      {{"--value", "2.5", "--type", "real"}, "", {"variable", "real", 2.5, 0.0}},
      {{"2.5", "--type", "real", "--kind", "constant", "--init", "x"}, "", {"constant", "real", 2.5, "x"}},
      {{"2024-03-15 08:30:00.000", "--type", "date", "--init", "2024-01-01 00:00:00.000"},
       "",
       {"variable", "date", "2024-03-15 08:30:00.000", "2024-01-01 00:00:00.000"}},
      {{"--type", "password"}, "new\nold\n", {"variable", "password", "new", "old"}},
      {{"--type", "password", "--password-stdin"}, "new\n", {"variable", "password", "new", ""}},
  };
  for (const Arguments& owner : {Arguments{"--domain", "Finance"}, Arguments{"--scenario", "Backup"}})
    for (size_t i = 0; i < std::size(cases); ++i) {
      const std::string name = "New" + std::to_string(i);
      const Arguments create = Arguments{"variable", "create"} + owner + Arguments{name};
      EXPECT_EQ(Do(create + cases[i].options, cases[i].input), "");
      const json found = Json({"variable", "get", owner[0], owner[1], name});
      EXPECT_EQ(json({found["kind"], found["dataType"], found["value"], found["initialValue"]}),
                cases[i].expected);
    }
}

TEST_F(ObjectModelCommandsTest, SettingAVariableKeepsWhatIsNotGiven) {
  const struct {
    Arguments arguments;
    std::string input;
    json expected;
  } cases[] = {
      {{"--scenario", "Night", "Attempts", "-7"}, "", {"variable", "number", -7, 0}},
      {{"--scenario", "Night", "attempts", "--init", "2"}, "", {"variable", "number", -7, 2}},
      {{"--scenario", "Night", "Attempts", "--kind", "constant"}, "", {"constant", "number", -7, "2"}},
      {{"--scenario", "Night", "Attempts", "--type", "text"}, "", {"constant", "text", "-7", "2"}},
      {{"--domain", "Sales", "MailPassword"}, "new\n", {"variable", "password", "new", "start"}},
      {{"--domain", "Sales", "MailPassword"}, "newer\nfirst\n", {"variable", "password", "newer", "first"}},
      {{"--domain", "Sales", "MailPassword", "a", "--init", "b", "--type", "text"},
       "",
       {"variable", "text", "a", "b"}},
      // Not what the component would hand out, which comes from the variable before it.
      {{"--domain", "Finance", "VatRate", "20"}, "", {"constant", "real", 20.0, "19.6"}},
      {{"--domain", "Finance", "VatRate", "--kind", "variable"}, "", {"variable", "real", 20.0, 19.6}},
  };
  for (const auto& c : cases) {
    Do(Arguments{"variable", "set"} + c.arguments, c.input);
    const json variables = Json({"variable", "list", c.arguments[0], c.arguments[1]});
    const std::string name = c.arguments[2] == "attempts" ? "Attempts" : c.arguments[2];
    const json found = Json({"variable", "get", c.arguments[0], c.arguments[1], name});
    EXPECT_EQ(json({found["kind"], found["dataType"], found["value"], found["initialValue"]}), c.expected);
    EXPECT_EQ(Field(variables, name, "kind"), c.expected[0]);
  }
}

TEST_F(ObjectModelCommandsTest, VariablesAreResetCopiedAndDeleted) {
  Do({"variable", "reset", "--domain", "Sales", "Region"});
  EXPECT_EQ(Do({"variable", "get", "--domain", "Sales", "Region"}), "France\n");
  ExpectFailure(Moxel({"variable", "reset", "--domain", "Sales", "Signature"}), 1,
                "variable \"Signature\" of domain \"Sales\": a constant is never reset");

  // A real constant that follows a password: its copy must have its own initial value, not the password.
  Import(std::string(kProduct) + "Domain\\Sales\\Var\\N]\n\"Value\"=hex(4):00,00,00,00,00,00,04,40\n" +
         "\"Init\"=\"7\"\n\"Type\"=dword:00000006\n\"V/C\"=\"C\"\n");
  Do({"variable", "duplicate", "--domain", "Sales", "N", "N2"});
  const json variables = Json({"variable", "list", "--domain", "Sales"});
  EXPECT_EQ(Field(variables, "N", "initialValue"), "7");
  EXPECT_EQ(Field(variables, "N2", "initialValue"), "7");
  EXPECT_EQ(Field(variables, "N2", "value"), 2.5);

  Do({"variable", "delete", "--domain", "Sales", "N2"});
  EXPECT_EQ(Field(Json({"variable", "list", "--domain", "Sales"}), "N2", "value"), "no N2");
  Import(std::string(kProduct) + "Domain\\Sales\\Var\\N\\Below]\n");
  ExpectFailure(Moxel({"variable", "delete", "--domain", "Sales", "N"}), 1,
                "variable \"N\" of domain \"Sales\": cannot be deleted");
}

// ---- Refusals

TEST_F(ObjectModelCommandsTest, TheComponentsRefusalsAreNumberedInBothLanguages) {
  const struct {
    const char *command, *input;
    std::string where, english, french;
  } cases[] = {
      {"domain create Sales", "", "-2147219904, Domaine:Validate", "This Domain already exists",
       "Ce Domaine est déjà présent"},
      {"domain create ''", "", "-2147219903, Domaines:NewDomain", "Enter domain name",
       "Renseigner le nom du domaine"},
      {"domain delete Sales", "", "-2147219902, Domaines:DeleteDomain",
       "This domain content variables or scenarios", "Ce domaine contient des variables ou des scénarios"},
      {"scenario delete Night", "", "-2147219802, Scenarios:DeleteScenario",
       "This scenario content variables or processes",
       "Ce scénario contient des variables ou des traitements"},
      {"user create alice --permission 1", "k9x\n", "-2147220500, User:Validate", "User already exists",
       "Cet utilisateur existe déjà..."},
      {"user create carol --permission 1", "k9x\nk9y\n", "-2147220502, User:NewUser",
       "Please confirm your password", "Veuillez confirmer votre Mot de passe"},
      {"user create carol --permission 2", "k9x\n", "-2147220501, User:Permission Property Let",
       "You don't have the permission ...", "Permission Incorrecte"},
      {"user check alice", "k9x\n", "-2147220504, User:Update", "Incorrect password",
       "Mot de passe Incorrect"},
      {"user update alice --password", "k9x\nk9y\n", "-2147220504, User:Update", "Incorrect password",
       "Mot de passe Incorrect"},
      {"variable create --domain Sales Region x", "", "-2147220001, Variable:Validate",
       "This variable already exists", "Cette variable est déjà présente"},
      {"variable create --domain Sales A(1)", "", "-2147220000, Variables:NewVariable", "Enter variable name",
       "Renseigner le nom de la variable"},
      {"variable set --domain Sales Invoices many", "", "-2147220002, Variable:Value Property Let",
       "Incorrect value", "Valeur incorrecte"},
      {"variable set --domain Sales Invoices 4294967296", "", "6, MOXEL", "Overflow", "Overflow"},
      {"variable duplicate --domain Sales Region Printed", "", "-2147220001, Variable:Duplicate",
       "This variable already exists", "Cette variable est déjà présente"},
  };
  const std::string before = Export("Domain") + Export("Scenarios") + Export("User");
  for (const auto& c : cases)
    ExpectFailure(Moxel(Words(c.command), c.input), 1, "error " + c.where + ": " + c.english);
  Import(std::string(kProduct) + "Configuration]\n\"Lang\"=dword:00000000\n");
  for (const auto& c : cases)
    ExpectFailure(Moxel(Words(c.command), c.input), 1, "error " + c.where + ": " + c.french);
  EXPECT_EQ(Export("Domain") + Export("Scenarios") + Export("User"), before);
}

TEST_F(ObjectModelCommandsTest, WhatIsNotThereIsNamed) {
  const struct {
    const char* command;
    const char* error;
  } cases[] = {
      {"domain show None", "domain \"None\": not found"},
      {"domain update None --comment x", "domain \"None\": not found"},
      {"domain reset None", "domain \"None\": not found"},
      {"domain delete None --force", "domain \"None\": not found"},
      {"scenario list --domain None", "domain \"None\": not found"},
      {"scenario show 1", "scenario \"1\": not found"},
      {"scenario reset None", "scenario \"None\": not found"},
      {"scenario delete ''", "scenario \"\": not found"},
      {"task list None", "scenario \"None\": not found"},
      {"task reset Night None", "task \"None\" of scenario \"Night\": not found"},
      {"task delete None Load", "scenario \"None\": not found"},
      {"user update None --permission 1", "user \"None\": not found"},
      {"user check None", "user \"None\": not found"},
      {"user delete None", "user \"None\": not found"},
      {"variable list --domain None", "domain \"None\": not found"},
      {"variable get --domain Sales REGION", "variable \"REGION\" of domain \"Sales\": not found"},
      {"variable get --scenario Sales Region", "variable \"Region\" of scenario \"Sales\": not found"},
      {"variable get --domain None Region --json", "variable \"Region\" of domain \"None\": not found"},
      {"variable set --scenario Night None 1", "variable \"None\" of scenario \"Night\": not found"},
      {"variable delete --domain Sales None", "variable \"None\" of domain \"Sales\": not found"},
      {"domain create Ω", "\"Ω\": character U+03A9 is not in code page 1252"},
      {"domain show \xE9", "\"\xE9\" is not UTF-8"},
      {"user check alice", "no password on standard input"},
  };
  const std::string before = Export();
  for (const auto& c : cases) ExpectFailure(Moxel(Words(c.command)), 1, c.error);
  ExpectFailure(Moxel({"user", "check", "alice"}, "k9xΩ"), 1,
                "password: a character of it is not in code page 1252");
  EXPECT_EQ(Export(), before);
}

TEST_F(ObjectModelCommandsTest, ALanguageThatIsNoNumberIsReported) {
  Import(std::string(kProduct) + "Configuration]\n\"Lang\"=\"English\"\n");
  std::thread([] {  // one that has read no language yet
    ExpectFailure(Moxel(Words("variable get --domain Sales Region")), 1, "error 13, MOXEL: Type mismatch");
  })
      .join();
}

TEST_F(ObjectModelCommandsTest, WrongUsageIsRefused) {
  std::istringstream commands(R"(domain; domain show; domain update Sales; scenario reset Night --mode some;
      task reset Night; task reset Night Load --state 1; user create carol; user create carol --permission x;
      user create carol --permission 70000; user update alice; user check alice secret; variable list;
      variable get Region; variable get --domain Sales; variable get --domain Sales --scenario Night Region;
      variable get --domain Sales Region Other; variable get --domain Sales Region --bogus;
      variable set --domain Sales Region; variable create --domain Sales X --type integer;
      variable set --domain Sales MailPassword k9x; variable set --domain Sales MailPassword --init k9x;
      variable set --domain Sales MailPassword --type text)");
  for (std::string command; std::getline(commands, command, ';');) {
    const ToolRun run = Moxel(Words(command), "k9x\n");
    EXPECT_EQ(run.exit_code, 2) << command << run.err;
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err.find('\n'), run.err.size() - 1) << run.err;
    EXPECT_EQ(run.err.find("k9x"), std::string::npos) << run.err;
  }
}

TEST_F(ObjectModelCommandsTest, PasswordsAreNeitherShownNorKeptInClear) {
  const std::string secret = "q7Kz#w";
  Do({"user", "create", "carol", "--permission", "1"}, secret);
  for (const Arguments& owner : {Arguments{"--domain", "Sales"}, Arguments{"--scenario", "Night"}})
    Do({"variable", "create", owner[0], owner[1], "Key", "--type", "password"}, secret + "\n" + secret);
  // A real constant right behind them: the component answers their initial value for its own.
  for (const char* owner : {"Domain\\Sales", "Scenarios\\Night"})
    Import(std::string(kProduct) + owner + "\\Var\\Keyed]\n\"Type\"=dword:00000006\n\"V/C\"=\"C\"\n");
  for (const std::string line :
       {"tree", "user list", "domain list", "domain show Sales", "scenario show Night",
        "variable list --domain Sales", "variable list --scenario Night"})
    for (const char* form : {"", " --json"})
      EXPECT_EQ(Do(Words(line + form)).find(secret), std::string::npos) << line << form;
  Do({"variable", "duplicate", "--domain", "Sales", "Keyed", "Copy"});
  EXPECT_EQ(Export().find(secret), std::string::npos);
  EXPECT_EQ(Do({"variable", "get", "--domain", "Sales", "Key"}), secret + "\n");
  Do({"variable", "reset", "--domain", "Sales", "Key"});
  // Nor after they were replaced, with what the log and unused pages still hold.
  Do({"user", "update", "carol", "--password"}, secret + "\n" + secret + "2\n" + secret + "2");
  Do({"variable", "set", "--domain", "Sales", "Key"}, secret + "3\n" + secret + "4");
  std::string kept;
  for (const auto& entry : std::filesystem::directory_iterator(folder()))
    kept += tool::ReadFile(entry.path());
  EXPECT_NE(kept.find("carol"), std::string::npos);
  std::string wide;
  for (const char c : secret) wide += {c, '\0'};
  for (const std::string& clear : {secret, wide}) EXPECT_EQ(kept.find(clear), std::string::npos);
}

// ---- A terminal

// The tool in a process of its own at a terminal of its own; ends with the test.
class AtTerminal {
 public:
  explicit AtTerminal(const Arguments& arguments) {
    process_ = ::forkpty(&terminal_, nullptr, nullptr, nullptr);
    if (process_ != 0) return;
    std::vector<const char*> argv{"moxel"};
    for (const std::string& argument : arguments) argv.push_back(argument.c_str());
    ::_exit(RunTool(static_cast<int>(argv.size()), argv.data(), {std::cin, std::cout, std::cerr}));
  }
  ~AtTerminal() {
    if (process_ > 0) {
      ::kill(process_, SIGKILL);
      ::waitpid(process_, nullptr, 0);
    }
    ::close(terminal_);
  }

  // Waits for a text; gives all that has been shown so far.
  const std::string& ShownUntil(const std::string& text) {
    char buffer[256];
    while (shown_.find(text, seen_) == std::string::npos) {
      const ssize_t count = ::read(terminal_, buffer, sizeof buffer);
      if (count <= 0) break;
      shown_.append(buffer, static_cast<size_t>(count));
    }
    seen_ = shown_.size();
    return shown_;
  }

  // Echo is off a moment after the prompt was shown, and what was typed before is dropped.
  void Type(const std::string& text) {
    for (int i = 0; i < 500 && Echoes(); ++i) ::usleep(10000);
    ASSERT_EQ(::write(terminal_, text.data(), text.size()), static_cast<ssize_t>(text.size()));
  }

  bool Echoes() const {
    termios state{};
    return ::tcgetattr(terminal_, &state) == 0 && (state.c_lflag & ECHO) != 0;
  }

  int Wait() {
    int status = 0;
    ShownUntil("\1");  // never shown: all that is left
    ::waitpid(process_, &status, 0);
    process_ = -1;
    return status;
  }

 private:
  int terminal_ = -1;
  pid_t process_ = -1;
  std::string shown_;
  size_t seen_ = 0;
};

TEST_F(ObjectModelCommandsTest, PasswordsAreTypedTwiceWithoutEcho) {
  AtTerminal create({"user", "create", "carol", "--permission", "0"});
  create.ShownUntil("Password: ");
  create.Type("q7Kz\n");
  create.ShownUntil("Password again: ");
  create.Type("q7Kz\n");
  EXPECT_EQ(create.Wait(), 0);
  EXPECT_EQ(create.ShownUntil("\1").find("q7Kz"), std::string::npos);
  Do({"user", "check", "carol"}, "q7Kz");
}

TEST_F(ObjectModelCommandsTest, AnInterruptGivesTheTerminalItsEchoBack) {
  AtTerminal check({"user", "check", "alice"});
  check.ShownUntil("Password: ");
  check.Type("\x03");
  int status = check.Wait();
  EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGINT) << status;
  EXPECT_TRUE(check.Echoes());
}

}  // namespace
}  // namespace moxel::test
