#include "moxel/reg_transfer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "moxel/files.h"
#include "moxel/reg_reader.h"
#include "moxel/registry_key.h"
#include "tests/support/temp_registry.h"

namespace moxel::tool {
namespace {

using namespace std::string_literals;

using Tree = std::vector<std::pair<std::string, std::vector<std::pair<std::string, RegData>>>>;

class RegTransferTest : public test::RegistryTest {
 protected:
  void UseFreshFile() {
    ::setenv("MOXEL_REGISTRY", (folder() / ("copy" + std::to_string(++copies_) + ".db")).c_str(), 1);
  }

  static Tree ReadTree(const KeyPath& root) {
    Tree tree;
    WalkTree(root, [&](const RegistryKey& key) {
      tree.emplace_back(key.path().FullName(), std::vector<std::pair<std::string, RegData>>());
      for (const RegistryValue& value : key.Values()) tree.back().second.emplace_back(value.name, value.data);
    });
    return tree;
  }

  static Tree ReadTree() { return ReadTree({HKEY_LOCAL_MACHINE, ""}); }

  void ExpectRoundTrip() {
    const Tree before = ReadTree();
    for (const RegFormat format : {RegFormat::kRegedit4, RegFormat::kRegedit5}) {
      const std::string file = ExportTree({HKEY_LOCAL_MACHINE, ""}, format).value();
      UseFreshFile();
      ImportDocument(ReadRegFile(file));
      EXPECT_EQ(ReadTree(), before);
      EXPECT_EQ(ExportTree({HKEY_LOCAL_MACHINE, ""}, format), file);
    }
  }

 private:
  int copies_ = 0;
};

std::string AllBytes(int from) {
  std::string bytes;
  for (int code = from; code < 256; ++code) bytes += static_cast<char>(code);
  return bytes;
}

TEST_F(RegTransferTest, ExportThenImportKeepsEveryTypeAndEveryByte) {
  const std::vector<std::string> contents{"",
                                          "\0"s,
                                          "a\0"s,
                                          "a",
                                          "a\0b\0"s,
                                          "a\0\0"s,
                                          "\n\0"s,
                                          "a\r\nb\0"s,
                                          "\"\\\0"s,
                                          ";]=\0"s,
                                          "\x81\xFF\0"s,
                                          "\xC3\xA9\0"s,
                                          "abcd",
                                          "12345678",
                                          AllBytes(0),
                                          AllBytes(1) + '\0',
                                          std::string(20000, 'x') + '\0'};
  RegistryTransaction transaction;
  const RegistryKey key = RegistryKey::Create({HKEY_LOCAL_MACHINE, "SOFTWARE\\Types"});
  for (const DWORD type : {0u, 1u, 2u, 3u, 4u, 5u, 7u, 11u, 0x2Au, 0xFFFFFFFFu}) {
    for (size_t i = 0; i < contents.size(); ++i) {
      key.SetValue(std::to_string(type) + "/" + std::to_string(i), {type, contents[i]});
    }
  }
  transaction.Commit();
  ExpectRoundTrip();
}

TEST_F(RegTransferTest, ExportThenImportKeepsEveryName) {
  std::vector<std::string> names{"",
                                 " ",
                                 "@",
                                 "\"",
                                 "\\",
                                 "\\n",
                                 "a\nb",
                                 "\r",
                                 "a=\"b\"",
                                 "[x]",
                                 ";",
                                 "-",
                                 std::string(5000, 'n'),
                                 AllBytes(1)};
  for (int code = 1; code < 256; ++code) names.push_back("code " + std::string(1, static_cast<char>(code)));
  RegistryTransaction transaction;
  const RegistryKey values = RegistryKey::Create({HKEY_LOCAL_MACHINE, "SOFTWARE\\Values"});
  for (const std::string& name : names) values.SetValue(name, {REG_SZ, "x\0"s});
  for (int code = 1; code < 256; ++code) {
    const std::string c(1, static_cast<char>(code));
    if (c == "\\" || c == "\n" || c == "\r") continue;
    std::string name = c;
    name.append("] ; b]").append(c).append(200, 'k');
    RegistryKey::Create(KeyPath{HKEY_LOCAL_MACHINE, "SOFTWARE\\Keys"}.Child(c).Child(name));
  }
  transaction.Commit();
  ExpectRoundTrip();
}

// Its bytes are UTF-8 as well as code page 1252, and a reader has to take them for the latter.
TEST_F(RegTransferTest, Regedit4WhoseTextLooksLikeUtf8StaysInItsCodePage) {
  const KeyPath path{HKEY_LOCAL_MACHINE, "K\xC3\xA9"};
  RegistryKey::Create(path).SetValue("\xC2\x81", {REG_SZ, "\xC3\xA9\0"s});
  ExpectRoundTrip();
}

TEST_F(RegTransferTest, RefusesToExportAKeyNameWithALineBreak) {
  RegistryKey::Create({HKEY_LOCAL_MACHINE, "K\\a\nb"});
  EXPECT_THROW(ExportTree({HKEY_LOCAL_MACHINE, "K"}, RegFormat::kRegedit5), ToolError);
}

TEST_F(RegTransferTest, ExportsInTheFormOfThePlatformsTools) {
  const RegistryKey key = RegistryKey::Create({HKEY_LOCAL_MACHINE, "Software\\Demo"});
  RegistryKey::Create({HKEY_LOCAL_MACHINE, "Software\\Demo\\Sub"});
  key.SetValue("", {REG_SZ, "C:\\\"x\"\0"s});
  key.SetValue("n", {REG_DWORD, "\x10\x27\0\0"s});
  key.SetValue("list", {REG_MULTI_SZ, "\x80\0\0"s});
  key.SetValue("bytes", {REG_BINARY, std::string(50, '\x1F')});
  const std::string four = ExportTree({HKEY_LOCAL_MACHINE, "SOFTWARE\\demo"}, RegFormat::kRegedit4).value();
  EXPECT_EQ(four,
            "REGEDIT4\r\n"
            "\r\n"
            "[HKEY_LOCAL_MACHINE\\Software\\Demo]\r\n"
            "@=\"C:\\\\\\\"x\\\"\"\r\n"
            "\"n\"=dword:00002710\r\n"
            "\"list\"=hex(7):80,00,00\r\n"
            "\"bytes\"=hex:1f,1f,1f,1f,1f,1f,1f,1f,1f,1f,1f,1f,1f,1f,1f,1f,1f,1f,1f,1f,1f,1f,\\\r\n"
            "  1f,1f,1f,1f,1f,1f,1f,1f,1f,1f,1f,1f,1f,1f,1f,1f,1f,1f,1f,1f,1f,1f,1f,1f,1f,\\\r\n"
            "  1f,1f,1f\r\n"
            "\r\n"
            "[HKEY_LOCAL_MACHINE\\Software\\Demo\\Sub]\r\n"
            "\r\n");
  const std::string five = ExportTree({HKEY_LOCAL_MACHINE, "SOFTWARE\\demo"}, RegFormat::kRegedit5).value();
  EXPECT_EQ(five.substr(0, 6), "\xFF\xFEW\0i\0"s);
  std::string ascii;
  for (size_t i = 2; i < five.size(); i += 2) ascii += five[i];
  EXPECT_NE(ascii.find("\"list\"=hex(7):ac,20,00,00,00,00\r\n"), std::string::npos) << ascii;
}

TEST_F(RegTransferTest, AppliesChangesInTheOrderOfTheFile) {
  ImportDocument(ReadRegFile(
      "REGEDIT4\n[HKEY_LOCAL_MACHINE\\A\\B\\C]\n[HKEY_LOCAL_MACHINE\\A]\n\"x\"=\"1\"\n\"y\"=\"2\"\n"));
  const ImportCounts counts =
      ImportDocument(ReadRegFile("REGEDIT4\n"
                                 "[-HKEY_LOCAL_MACHINE\\A\\B]\n"
                                 "[-HKEY_LOCAL_MACHINE\\A\\Missing\\Deep]\n"
                                 "[HKEY_LOCAL_MACHINE\\A]\n\"y\"=-\n\"missing\"=-\n\"X\"=\"3\"\n\"x\"=\"4\"\n"
                                 "[HKEY_LOCAL_MACHINE\\A\\B]\n@=\"5\"\n"
                                 "[-HKEY_LOCAL_MACHINE\\A\\b]\n"));
  EXPECT_EQ(counts.keys_set, 2u);
  EXPECT_EQ(counts.values_set, 3u);
  EXPECT_EQ(counts.keys_deleted, 3u);
  EXPECT_EQ(counts.values_deleted, 1u);
  EXPECT_EQ(ReadTree(),
            (Tree{{"HKEY_LOCAL_MACHINE", {}}, {"HKEY_LOCAL_MACHINE\\A", {{"x", {REG_SZ, "4\0"s}}}}}));
}

TEST_F(RegTransferTest, AnImportThatFailsHalfwayLeavesNothingBehind) {
  ImportDocument(ReadRegFile("REGEDIT4\n[HKEY_LOCAL_MACHINE\\A\\B]\n\"x\"=\"1\"\n"));
  const Tree before = ReadTree();
  const RegDocument document{{{HKEY_LOCAL_MACHINE, "A\\B"}, true, {}},
                             {{HKEY_LOCAL_MACHINE, "New"}, false, {{"x", RegData{REG_SZ, "1\0"s}}}},
                             {{HKEY_LOCAL_MACHINE, "New"},
                              false,
                              {{std::string(100000, 'n'), RegData{REG_SZ, "no such long name\0"s}}}}};
  EXPECT_THROW(ImportDocument(document), ToolError);
  EXPECT_EQ(ReadTree(), before);
}

TEST_F(RegTransferTest, ClassesRootIsPartOfTheLocalMachine) {
  ImportDocument(ReadRegFile("REGEDIT4\n[HKEY_CLASSES_ROOT\\Demo.Class]\n@=\"x\"\n"));
  EXPECT_EQ(ReadTree({HKEY_LOCAL_MACHINE, "SOFTWARE\\Classes\\Demo.Class"}).size(), 1u);
  EXPECT_EQ(ReadTree({HKEY_CLASSES_ROOT, ""}).back().first, "HKEY_CLASSES_ROOT\\Demo.Class");
  ImportDocument(ReadRegFile("REGEDIT4\n[-HKEY_CLASSES_ROOT\\Demo.Class]\n"));
  EXPECT_TRUE(ReadTree({HKEY_LOCAL_MACHINE, "SOFTWARE\\Classes\\Demo.Class"}).empty());
}

TEST_F(RegTransferTest, TheExampleConfigurationIsWhatAnExportOfItSays) {
  const std::filesystem::path here(__FILE__);
  const RegDocument example = ReadRegFile(
      ReadFile(here.parent_path().parent_path().parent_path() / "examples" / "configuration.reg"));
  ImportDocument(example);
  EXPECT_EQ(ReadRegFile(ExportTree(ProductRoot(), RegFormat::kRegedit5).value()), example);
  const Tree bob = ReadTree(ProductRoot().Child("User\\bob"));
  ASSERT_EQ(bob.size(), 1u);
  EXPECT_EQ(bob[0].second.back(), std::pair("Password"s, RegData{REG_SZ, "\x9E\x9D\x9C\0"s}));
}

}  // namespace
}  // namespace moxel::tool
