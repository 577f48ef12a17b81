#include "moxel/reg_transfer.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "moxel/files.h"
#include "moxel/reg_reader.h"
#include "moxel/registry_key.h"
#include "tests/support/temp_registry.h"

namespace moxel::tool {
namespace {

using namespace std::string_literals;

auto Texts(auto... texts) { return std::vector<std::string>{texts...}; }

class RegTransferTest : public test::RegistryTest {
 protected:
  const KeyPath root_{HKEY_LOCAL_MACHINE, ""};

  static RegDocument Held(const KeyPath& root) {
    RegDocument held;
    WalkTree(root, [&](const RegistryKey& key) {
      held.push_back({key.path(), false, {}});
      for (const RegistryValue& value : key.Values()) held.back().values.push_back({value.name, value.data});
    });
    return held;
  }

  void ExpectRoundTrip() {
    const RegDocument before = Held(root_);
    for (const RegFormat format : {RegFormat::kRegedit4, RegFormat::kRegedit5}) {
      const std::string file = ExportTree(root_, format).value();
      EXPECT_TRUE(ReadRegFile(file) == before);
      ::setenv("MOXEL_REGISTRY", (folder() / std::to_string(file.size())).c_str(), 1);
      ImportDocument(ReadRegFile(file));
      EXPECT_TRUE(Held(root_) == before);
    }
  }
};

TEST_F(RegTransferTest, ExportThenImportKeepsEveryTypeEveryNameAndEveryByte) {
  // UTF-8 as well as code page 1252, and a reader has to take it for the latter.
  RegistryKey::Create({HKEY_LOCAL_MACHINE, "K\xC3\xA9"}).SetValue("\xC2\x81", {REG_SZ, "\xC3\xA9\0"s});
  ExpectRoundTrip();

  std::string all;
  for (int code = 1; code < 256; ++code) all += static_cast<char>(code);
  const auto contents = Texts("", "\0"s, "a\0"s, "a", "a\0b\0"s, "a\0\0"s, "\n\0"s, "a\r\nb\0"s, "\"\\\0"s,
                              ";]=\0"s, "\x81\xFF\0"s, "\xC3\xA9\0"s, "abcd", "12345678", '\0' + all,
                              all + '\0', std::string(20000, 'x') + '\0');
  auto names = Texts("", "\\n", "a\nb", "a=\"b\"", "[x]", std::string(5000, 'n'), all);
  for (const char c : all) names.push_back("code "s + c);
  RegistryTransaction transaction;
  const RegistryKey key = RegistryKey::Create({HKEY_LOCAL_MACHINE, "SOFTWARE\\Values"});
  for (const std::string& name : names) key.SetValue(name, {REG_SZ, "x\0"s});
  for (const DWORD type : {0u, 1u, 2u, 3u, 4u, 5u, 7u, 11u, 0x2Au, 0xFFFFFFFFu}) {
    for (size_t i = 0; i < contents.size(); ++i)
      key.SetValue(std::to_string(type) + "/" + std::to_string(i), {type, contents[i]});
  }
  for (const char c : all) {
    if (c != '\\' && c != '\n' && c != '\r')
      RegistryKey::Create(root_.Child(std::string(1, c)).Child(c + "] ; b]"s + c + std::string(200, 'k')));
  }
  transaction.Commit();
  ExpectRoundTrip();
}

TEST_F(RegTransferTest, ExportsInTheFormOfThePlatformsToolsButNoKeyNameWithALineBreak) {
  RegistryKey::Create({HKEY_LOCAL_MACHINE, "K\\a\nb"});
  EXPECT_THROW(ExportTree({HKEY_LOCAL_MACHINE, "K"}, RegFormat::kRegedit5), ToolError);
  const RegistryKey key = RegistryKey::Create({HKEY_LOCAL_MACHINE, "Software\\Demo"});
  RegistryKey::Create({HKEY_LOCAL_MACHINE, "Software\\Demo\\Sub"});
  key.SetValue("bytes", {REG_BINARY, std::string(50, '\x1F')});
  EXPECT_EQ(ExportTree({HKEY_LOCAL_MACHINE, "SOFTWARE\\demo"}, RegFormat::kRegedit4),
            "REGEDIT4\r\n\r\n[HKEY_LOCAL_MACHINE\\Software\\Demo]\r\n"
            "\"bytes\"=hex:1f,1f,1f,1f,1f,1f,1f,1f,1f,1f,1f,1f,1f,1f,1f,1f,1f,1f,1f,1f,1f,1f,\\\r\n"
            "  1f,1f,1f,1f,1f,1f,1f,1f,1f,1f,1f,1f,1f,1f,1f,1f,1f,1f,1f,1f,1f,1f,1f,1f,1f,\\\r\n"
            "  1f,1f,1f\r\n\r\n[HKEY_LOCAL_MACHINE\\Software\\Demo\\Sub]\r\n\r\n");
}

TEST_F(RegTransferTest, AnImportThatFailsHalfwayLeavesNothingBehind) {
  ImportDocument(ReadRegFile("REGEDIT4\n[HKEY_LOCAL_MACHINE\\A\\B]\n\"x\"=\"1\"\n"));
  const RegDocument before = Held(root_);
  const RegData data{REG_SZ, "1\0"s};
  const RegDocument document{
      {{HKEY_LOCAL_MACHINE, "A\\B"}, true, {}},
      {{HKEY_LOCAL_MACHINE, "New"}, false, {{"x", data}, {std::string(100000, 'n'), data}}}};
  EXPECT_THROW(ImportDocument(document), ToolError);
  EXPECT_EQ(Held(root_), before);
}

TEST_F(RegTransferTest, TheExampleConfigurationIsHeldAsItSays) {
  const RegDocument example = ReadRegFile(ReadFile(MOXEL_EXAMPLES "/configuration.reg"));
  ImportDocument(example);
  EXPECT_EQ(Held(ProductRoot()), example);
}

}  // namespace
}  // namespace moxel::tool
