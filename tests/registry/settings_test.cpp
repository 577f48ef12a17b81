// Start-up of a thread and the language it reads.
#include "registry/settings.h"

#include "tests/registry/store_test.h"
#include "tests/support/raised_error.h"

namespace moxel::test {
namespace {

class SettingsOfAThread : public StoreTest {
 protected:
  static constexpr std::int32_t kBefore = 123;

  // Another root, which reading the language must bring back.
  static void PointElsewhere() { Settings() = {HKEY_CLASSES_ROOT, u"Elsewhere\\", kBefore}; }
  static bool PointsAt(HKEY hive, std::u16string_view path) {
    return Settings().RootHive == hive && Settings().RootPath == path;
  }
};

TEST_F(SettingsOfAThread, TheLanguageIsAnOffsetFromANumberOrAText) {
  const struct {
    const char* story;
    DWORD type;
    std::string bytes;
    std::int32_t offset;
  } cases[] = {
      {"number", REG_DWORD, "\x10\x27\0\0"s, 10000},
      {"negative number", REG_DWORD, "\xFB\xFF\xFF\xFF"s, -5},
      {"text", REG_SZ, "10000\0"s, 10000},
      {"rounded text", REG_SZ, " 2.5 \0"s, 2},
      {"empty text", REG_SZ, "\0"s, 0},
      {"other type", REG_BINARY, "\x10\x27"s, 0},
      {"other type without a byte", REG_BINARY, "", 0},
  };
  PointElsewhere();
  GetLanguage();
  EXPECT_EQ(Settings().LanguageOffset, 0) << "missing";
  for (const auto& c : cases) {
    Put("Configuration", "Lang", c.type, c.bytes);
    PointElsewhere();
    GetLanguage();
    EXPECT_EQ(Settings().LanguageOffset, c.offset) << c.story;
    EXPECT_TRUE(PointsAt(HKEY_CLASSES_ROOT, u"Elsewhere\\")) << c.story;
    Main();
    EXPECT_EQ(Settings().LanguageOffset, c.offset) << c.story;
    EXPECT_TRUE(PointsAt(HKEY_LOCAL_MACHINE, u"SOFTWARE\\MOXEL\\")) << c.story;
  }
}

TEST_F(SettingsOfAThread, ALanguageThatIsNoNumberLeavesTheThreadAtTheProductsRoot) {
  const struct {
    std::string text;
    std::int32_t error;
  } cases[] = {{"French", 13}, {" ", 13}, {"2147483648", 6}};
  for (const auto& c : cases) {
    Put("Configuration", "Lang", REG_SZ, c.text);
    for (auto* read : {&GetLanguage, &Main}) {
      PointElsewhere();
      EXPECT_EQ(NumberRaisedBy(read), c.error) << c.text;
      EXPECT_TRUE(PointsAt(HKEY_LOCAL_MACHINE, u"SOFTWARE\\MOXEL\\")) << c.text;
      EXPECT_EQ(Settings().LanguageOffset, kBefore) << c.text;
    }
  }
}

TEST_F(SettingsOfAThread, BelongToThatThreadAlone) {
  PointElsewhere();
  OnAnotherThread([] {
    EXPECT_TRUE(PointsAt(0, u""));
    EXPECT_EQ(Settings().LanguageOffset, 0);
    Main();
    EXPECT_TRUE(PointsAt(HKEY_LOCAL_MACHINE, u"SOFTWARE\\MOXEL\\"));
  });
  EXPECT_TRUE(PointsAt(HKEY_CLASSES_ROOT, u"Elsewhere\\"));
  EXPECT_EQ(Settings().LanguageOffset, kBefore);
}

}  // namespace
}  // namespace moxel::test
