// Start-up of a thread and the language it reads.
#include "registry/settings.h"

#include "tests/registry/store_test.h"
#include "tests/support/raised_error.h"

namespace moxel::test {
namespace {

class SettingsOfAThread : public StoreTest {
 protected:
  // Another root, which reading the language must bring back.
  static void PointElsewhere() { Settings() = {HKEY_CLASSES_ROOT, u"Elsewhere\\", 123}; }

  using Known = std::tuple<HKEY, std::u16string, std::int32_t>;
  static Known Now() { return {Settings().RootHive, Settings().RootPath, Settings().LanguageOffset}; }
};

TEST_F(SettingsOfAThread, TheLanguageIsAnOffsetFromANumberOrAText) {
  const std::tuple<DWORD, std::string, std::int32_t, std::int32_t> cases[] = {
      {REG_NONE, "", 0, 0},          {REG_DWORD, "\xFB\xFF\xFF\xFF", -5, 0}, {REG_SZ, " 2.5 \0"s, 2, 0},
      {REG_SZ, "\0"s, 0, 0},         {REG_BINARY, "\x10\x27"s, 0, 0},        {REG_SZ, "French", 123, 13},
      {REG_SZ, "2147483648", 123, 6}};
  PointElsewhere();
  GetLanguage();
  EXPECT_EQ(Now(), Known(HKEY_CLASSES_ROOT, u"Elsewhere\\", 0));
  for (const auto& [type, bytes, offset, error] : cases) {
    Put("Configuration", "Lang", type, bytes);
    for (auto* read : {&GetLanguage, &Main}) {
      PointElsewhere();
      EXPECT_EQ(NumberRaisedBy(read), error) << bytes;
      const bool restored = read == &GetLanguage && error == 0;
      EXPECT_EQ(Now(), restored ? Known(HKEY_CLASSES_ROOT, u"Elsewhere\\", offset)
                                : Known(HKEY_LOCAL_MACHINE, u"SOFTWARE\\MOXEL\\", offset));
    }
  }
}

TEST_F(SettingsOfAThread, BelongToThatThreadAlone) {
  PointElsewhere();
  OnAnotherThread([] {
    EXPECT_EQ(Now(), Known(0, u"", 0));
    Main();
  });
  EXPECT_EQ(Now(), Known(HKEY_CLASSES_ROOT, u"Elsewhere\\", 123));
}

}  // namespace
}  // namespace moxel::test
