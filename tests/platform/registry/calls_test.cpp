// What every call answers: paths, buffers, types, rights and deletions.
#include <algorithm>

#include "registry_helpers.h"

namespace moxel::test {
namespace {

class RegistryCalls : public RegistryTest {
 protected:
  Key key_ = Create(HKEY_LOCAL_MACHINE, "SOFTWARE\\X");
};

TEST_F(RegistryCalls, PathsNameTheSameKeyHoweverTheyAreWritten) {
  ASSERT_EQ(Set(key_, "v", "here"), ERROR_SUCCESS);
  struct {
    const char* path;
    LSTATUS answer;
  } const cases[] = {
      {"SOFTWARE\\X", 0},         {"SOFTWARE\\X\\", 0},
      {"SOFTWARE\\\\X", 0},       {"SOFTWARE\\X\\\\", 0},
      {"software\\x", 0},         {"\\SOFTWARE\\X", ERROR_BAD_PATHNAME},
      {"\\", ERROR_BAD_PATHNAME}, {"SOFTWARE\\Y", 2},
      {"SOFTWARE\\X\\Y", 2},      {"Y\\X", 2},
      {"SOFTWARE/X", 2},          {"SOFTWARE\\X ", 2},
  };
  for (const auto& c : cases) {
    HKEY handle = 77;
    EXPECT_EQ(RegOpenKeyExA(HKEY_LOCAL_MACHINE, c.path, 0, KEY_READ, &handle), c.answer) << c.path;
    Key key(handle);
    if (c.answer == 0)
      EXPECT_EQ(Get(key, "v"), "here") << c.path;
    else
      EXPECT_EQ(handle, 0u) << c.path;
  }
  EXPECT_EQ(RegCreateKeyExA(HKEY_LOCAL_MACHINE, "\\SOFTWARE", 0, nullptr, 0, KEY_READ, nullptr, Key().Out(),
                            nullptr),
            ERROR_BAD_PATHNAME);
  EXPECT_EQ(RegDeleteKeyA(HKEY_LOCAL_MACHINE, "\\SOFTWARE\\X"), ERROR_BAD_PATHNAME);
}

TEST_F(RegistryCalls, AnEmptyPathIsAnotherHandleOnTheSameKey) {
  for (HKEY base : {HKEY{key_}, HKEY_LOCAL_MACHINE}) {
    Key again = Open(base, "", KEY_ALL_ACCESS);
    ASSERT_NE(again, 0u);
    EXPECT_NE(HKEY{again}, base);
    EXPECT_EQ(Set(again, "v", "seen"), 0);
    EXPECT_EQ(Get(base, "v"), "seen");
  }
}

TEST_F(RegistryCalls, CreateSaysWhatItFound) {
  struct {
    const char* path;
    DWORD disposition;
  } const cases[] = {{"A\\B\\C", REG_CREATED_NEW_KEY},
                     {"a\\b\\c\\", REG_OPENED_EXISTING_KEY},
                     {"A\\B", REG_OPENED_EXISTING_KEY},
                     {"", REG_OPENED_EXISTING_KEY},
                     {"A\\\\D", REG_CREATED_NEW_KEY}};
  for (const auto& c : cases) {
    Key key;
    DWORD disposition = 0;
    EXPECT_EQ(RegCreateKeyExA(key_, c.path, 0, nullptr, 0, KEY_READ, nullptr, key.Out(), &disposition), 0);
    EXPECT_EQ(disposition, c.disposition) << c.path;
  }
  EXPECT_EQ(NamesOf(Open(key_, "A"), SubkeyName), (std::vector<std::string>{"B", "D"}));
}

TEST_F(RegistryCalls, TheClassesRootIsAKeyOfTheLocalMachine) {
  EXPECT_EQ(TryOpen(HKEY_CLASSES_ROOT, "A"), 2);
  EXPECT_EQ(SubkeyName(HKEY_CLASSES_ROOT, 0), std::nullopt);
  EXPECT_EQ(Get(HKEY_CLASSES_ROOT, "v"), std::nullopt);
  EXPECT_EQ(Set(HKEY_CLASSES_ROOT, "v", "1"), 0);
  Key created = Create(HKEY_CLASSES_ROOT, "A\\B");
  EXPECT_EQ(TryOpen(HKEY_LOCAL_MACHINE, "SOFTWARE\\Classes\\A\\B"), 0);
  EXPECT_EQ(NamesOf(Open(HKEY_LOCAL_MACHINE, "SOFTWARE"), SubkeyName),
            (std::vector<std::string>{"Classes", "X"}));
  EXPECT_EQ(Get(Open(HKEY_LOCAL_MACHINE, "software\\classes"), "V"), "1");
}

TEST_F(RegistryCalls, HandlesOfTheHiveWorkBeforeThereIsAFile) {
  ::setenv("MOXEL_REGISTRY", (folder() / "none.db").c_str(), 1);
  Key root = Open(HKEY_LOCAL_MACHINE, "");
  EXPECT_EQ(TryOpen(root, "SOFTWARE"), 2);
  EXPECT_EQ(SubkeyName(root, 0), std::nullopt);
  EXPECT_EQ(RegQueryValueExA(root, "v", nullptr, nullptr, nullptr, nullptr), 2);
  EXPECT_EQ(TryCreate(root, "SOFTWARE"), 0);
  EXPECT_EQ(SubkeyName(root, 0), "SOFTWARE");
}

TEST_F(RegistryCalls, MissingArgumentsAndDeadHandlesAreReported) {
  char name[8];
  DWORD length = sizeof name;
  BYTE data[1] = {};
  HKEY closed = 0;
  ASSERT_EQ(RegOpenKeyExA(key_, "", 0, KEY_READ, &closed), 0);
  EXPECT_EQ(RegCloseKey(closed), 0);
  Key result;
  EXPECT_EQ(RegOpenKeyExA(key_, "", 0, KEY_READ, nullptr), 87);
  EXPECT_EQ(RegCreateKeyExA(key_, "N", 0, nullptr, 0, KEY_READ, nullptr, nullptr, nullptr), 87);
  EXPECT_EQ(TryOpen(key_, "N"), 2);
  EXPECT_EQ(RegEnumKeyExA(key_, 0, nullptr, &length, nullptr, nullptr, nullptr, nullptr), 87);
  EXPECT_EQ(RegEnumKeyExA(key_, 0, name, nullptr, nullptr, nullptr, nullptr, nullptr), 87);
  EXPECT_EQ(RegEnumValueA(key_, 0, nullptr, &length, nullptr, nullptr, nullptr, nullptr), 87);
  EXPECT_EQ(RegEnumValueA(key_, 0, name, nullptr, nullptr, nullptr, nullptr, nullptr), 87);
  EXPECT_EQ(RegSetValueExA(key_, "v", 0, REG_SZ, nullptr, 1), 998);
  for (HKEY bad : {HKEY{0}, closed, HKEY{0x7FFFFFF0}, HKEY{0x80000001}}) {
    EXPECT_EQ(RegOpenKeyExA(bad, "", 0, KEY_READ, result.Out()), 6);
    EXPECT_EQ(RegCreateKeyExA(bad, "N", 0, nullptr, 0, KEY_READ, nullptr, result.Out(), nullptr), 6);
    EXPECT_EQ(RegQueryValueExA(bad, "v", nullptr, nullptr, nullptr, nullptr), 6);
    EXPECT_EQ(RegSetValueExA(bad, "v", 0, REG_SZ, data, 1), 6);
    EXPECT_EQ(RegEnumKeyExA(bad, 0, name, &length, nullptr, nullptr, nullptr, nullptr), 6);
    EXPECT_EQ(RegEnumValueA(bad, 0, name, &length, nullptr, nullptr, nullptr, nullptr), 6);
    EXPECT_EQ(RegDeleteKeyA(bad, "N"), 6);
    EXPECT_EQ(RegDeleteValueA(bad, "v"), 6);
    EXPECT_EQ(RegCloseKey(bad), 6);
  }
  EXPECT_EQ(RegCloseKey(HKEY_LOCAL_MACHINE), 0);
  EXPECT_EQ(TryOpen(HKEY_LOCAL_MACHINE, "SOFTWARE"), 0);
}

TEST_F(RegistryCalls, OnlyTextGetsATerminatorAndOnlyWhereItLacksOne) {
  using namespace std::string_view_literals;
  struct {
    DWORD type;
    std::string_view given, stored;
  } const cases[] = {
      {REG_SZ, "abc"sv, "abc\0"sv},   {REG_SZ, "abc\0"sv, "abc\0"sv}, {REG_SZ, "\0"sv, "\0"sv},
      {REG_SZ, ""sv, ""sv},           {REG_SZ, "a\0b"sv, "a\0b\0"sv}, {REG_SZ, "a\0"sv, "a\0"sv},
      {REG_BINARY, "abc"sv, "abc"sv}, {REG_BINARY, ""sv, ""sv},       {REG_DWORD, "12345678"sv, "12345678"sv},
      {REG_NONE, "abc"sv, "abc"sv},   {4711, "xyz"sv, "xyz"sv},       {0xFFFFFFFF, "xyz"sv, "xyz"sv},
  };
  for (const auto& c : cases) {
    for (const char* name : {"v", ""}) {
      ASSERT_EQ(Set(key_, name, c.given, c.type), 0);
      DWORD type = 99, size = 99;
      EXPECT_EQ(RegQueryValueExA(key_, name, nullptr, &type, nullptr, &size), 0);
      EXPECT_EQ(type, c.type);
      EXPECT_EQ(size, c.stored.size());
      EXPECT_EQ(Get(key_, name), c.stored);
    }
  }
  EXPECT_EQ(RegSetValueExA(key_, "v", 0, REG_SZ, nullptr, 0), 0);
  EXPECT_EQ(Get(key_, "v"), "");
  EXPECT_EQ(RegDeleteValueA(key_, nullptr), 0);
  EXPECT_EQ(RegQueryValueExA(key_, "", nullptr, nullptr, nullptr, nullptr), 2);
}

// Queries and enumerations of the value "v" = 64 bytes with areas of every size: nothing behind an area's end
// is touched, and what does not fit is reported with the length that would.
TEST_F(RegistryCalls, DataAreasAreNeverOverrun) {
  const std::string value(64, 'd');
  ASSERT_EQ(Set(key_, "v", value, REG_BINARY), 0);
  for (DWORD room : {0u, 1u, 63u, 64u, 65u, 100u}) {
    const LSTATUS expected = room < 64 ? ERROR_MORE_DATA : ERROR_SUCCESS;
    for (bool enumerate : {false, true}) {
      std::vector<BYTE> area(200, 0xEE);
      char name[2] = {};
      DWORD length = 2, type = 99, size = room;
      EXPECT_EQ(enumerate ? RegEnumValueA(key_, 0, name, &length, nullptr, &type, area.data(), &size)
                          : RegQueryValueExA(key_, "v", nullptr, &type, area.data(), &size),
                expected);
      EXPECT_EQ(type, REG_BINARY);
      EXPECT_EQ(size, 64u);
      std::size_t written = expected == 0 ? 64 : 0;
      EXPECT_EQ(std::count(area.begin(), area.begin() + 64, 'd'), static_cast<std::ptrdiff_t>(written));
      EXPECT_EQ(std::count(area.begin() + room, area.end(), 0xEE), 200 - static_cast<std::ptrdiff_t>(room));
    }
  }
  DWORD size = 5;
  EXPECT_EQ(RegQueryValueExA(key_, "v", nullptr, nullptr, nullptr, &size), 0);
  EXPECT_EQ(size, 64u);
  ASSERT_EQ(Set(key_, "v", ""), 0);
  BYTE untouched = 0xEE;
  size = 0;
  EXPECT_EQ(RegQueryValueExA(key_, "v", nullptr, nullptr, &untouched, &size), 0);
  EXPECT_EQ(size, 0u);
  EXPECT_EQ(untouched, 0xEE);
}

TEST_F(RegistryCalls, AMissingValueHasTypeNoneAndALengthOnlyWithoutAnArea) {
  BYTE area[8];
  DWORD type = 99, size = 8;
  EXPECT_EQ(RegQueryValueExA(key_, "v", nullptr, &type, area, &size), 2);
  EXPECT_EQ(type, 0u);
  EXPECT_EQ(size, 8u);
  type = 99;
  EXPECT_EQ(RegQueryValueExA(key_, "v", nullptr, &type, nullptr, &size), 2);
  EXPECT_EQ(type, 0u);
  EXPECT_EQ(size, 0u);
}

TEST_F(RegistryCalls, NameBuffersAreNeverOverrun) {
  ASSERT_EQ(TryCreate(key_, "twelve chars"), 0);
  ASSERT_EQ(Set(key_, "twelve chars", "d"), 0);
  for (DWORD room : {0u, 1u, 12u, 13u, 14u}) {
    for (bool values : {false, true}) {
      std::string name(40, '#');
      DWORD length = room;
      LSTATUS answer = values
                           ? RegEnumValueA(key_, 0, name.data(), &length, nullptr, nullptr, nullptr, nullptr)
                           : RegEnumKeyExA(key_, 0, name.data(), &length, nullptr, nullptr, nullptr, nullptr);
      EXPECT_EQ(answer, room < 13 ? ERROR_MORE_DATA : ERROR_SUCCESS) << room;
      if (answer == 0) {
        EXPECT_EQ(length, 12u);
        EXPECT_STREQ(name.c_str(), "twelve chars");
      }
      EXPECT_EQ(name.substr(room), std::string(40 - room, '#'));
    }
  }
  char class_name[3] = "##";
  char name[20];
  DWORD length = sizeof name, class_length = 2;
  FILETIME written;
  EXPECT_EQ(RegEnumKeyExA(key_, 0, name, &length, nullptr, class_name, &class_length, &written), 0);
  EXPECT_EQ(class_length, 0u);
  EXPECT_EQ(std::string(class_name, 3), std::string("\0#\0", 3));
}

TEST_F(RegistryCalls, PastTheEndNothingIsTouched) {
  ASSERT_EQ(Set(key_, "v", "d", REG_SZ), 0);
  char name[8] = "before";
  BYTE data[2] = {7, 7};
  DWORD length = 8, type = 99, size = 2;
  for (DWORD index : {1u, 2u, 1000u, 0xFFFFFFFFu}) {
    EXPECT_EQ(RegEnumValueA(key_, index, name, &length, nullptr, &type, data, &size), 259);
    EXPECT_EQ(RegEnumKeyExA(key_, index, name, &length, nullptr, nullptr, nullptr, nullptr), 259);
  }
  EXPECT_EQ(type, 99u);
  EXPECT_STREQ(name, "before");
}

TEST_F(RegistryCalls, SubkeysComeInTheOrderOfTheirUpperCasedNames) {
  const std::vector<std::string> sorted{"A", "a2", "b", "B1", "S10", "S2", "Z", "_x", "\xE9"};
  std::vector<std::string> shuffled{"S2", "\xE9", "B1", "_x", "A", "Z", "b", "S10", "a2"};
  for (const auto& name : shuffled) ASSERT_EQ(TryCreate(key_, name + "\\below"), 0);
  EXPECT_EQ(NamesOf(key_, SubkeyName), sorted);
}

TEST_F(RegistryCalls, ValuesComeInTheOrderOfTheirFirstSetting) {
  for (const char* name : {"z", "", "a", "m"}) ASSERT_EQ(Set(key_, name, "1"), 0);
  ASSERT_EQ(Set(key_, "Z", "2"), 0);
  EXPECT_EQ(NamesOf(key_, ValueName), (std::vector<std::string>{"z", "", "a", "m"}));
  ASSERT_EQ(RegDeleteValueA(key_, "A"), 0);
  EXPECT_EQ(NamesOf(key_, ValueName), (std::vector<std::string>{"z", "", "m"}));
  ASSERT_EQ(Set(key_, "a", "3"), 0);
  ASSERT_EQ(RegDeleteValueA(key_, ""), 0);
  EXPECT_EQ(NamesOf(key_, ValueName), (std::vector<std::string>{"z", "m", "a"}));
}

// Each right alone, the combinations clients use and the generic masks.
TEST_F(RegistryCalls, RightsAreThoseTheHandleWasOpenedWith) {
  ASSERT_EQ(TryCreate(key_, "child"), 0);
  struct {
    REGSAM access;
    bool query, set, enumerate;
  } const cases[] = {
      {0, false, false, false},
      {KEY_QUERY_VALUE, true, false, false},
      {KEY_SET_VALUE, false, true, false},
      {KEY_CREATE_SUB_KEY, false, false, false},
      {KEY_ENUMERATE_SUB_KEYS, false, false, true},
      {KEY_READ, true, false, true},
      {KEY_WRITE, false, true, false},
      {KEY_READ | KEY_WRITE, true, true, true},
      {KEY_ALL_ACCESS, true, true, true},
      {GENERIC_READ, true, false, true},
      {GENERIC_WRITE, false, true, false},
      {GENERIC_ALL, true, true, true},
      {MAXIMUM_ALLOWED, true, true, true},
  };
  for (const auto& c : cases) {
    ASSERT_EQ(Set(key_, "v", "1"), 0);
    Key key;
    ASSERT_EQ(RegOpenKeyExA(HKEY_LOCAL_MACHINE, "SOFTWARE\\X", 0, c.access, key.Out()), 0);
    char name[20];
    DWORD length = sizeof name, again = sizeof name;
    auto answer = [](bool allowed) { return allowed ? 0 : 5; };
    SCOPED_TRACE(c.access);
    EXPECT_EQ(RegQueryValueExA(key, "v", nullptr, nullptr, nullptr, nullptr), answer(c.query));
    EXPECT_EQ(RegEnumValueA(key, 0, name, &length, nullptr, nullptr, nullptr, nullptr), answer(c.query));
    EXPECT_EQ(RegEnumKeyExA(key, 0, name, &again, nullptr, nullptr, nullptr, nullptr), answer(c.enumerate));
    EXPECT_EQ(Set(key, "v", "2"), answer(c.set));
    EXPECT_EQ(RegDeleteValueA(key, "v"), answer(c.set));
    EXPECT_EQ(TryOpen(key, "child"), 0);
    EXPECT_EQ(TryCreate(key, "new"), 0);
    EXPECT_EQ(RegDeleteKeyA(key, "new"), 0);
  }
}

TEST_F(RegistryCalls, OnlyKeysWithoutSubkeysCanBeDeleted) {
  ASSERT_EQ(TryCreate(key_, "A\\B\\C"), 0);
  Key a = Open(key_, "A", KEY_ENUMERATE_SUB_KEYS);
  struct {
    HKEY base;
    const char* path;
    LSTATUS answer;
  } const cases[] = {{key_, "A", 5},
                     {key_, "A\\B", 5},
                     {a, "", 5},
                     {key_, "N", 2},
                     {key_, "N\\C", 2},
                     {key_, "A\\N", 2},
                     {a, "b\\c\\", 0},
                     {a, "B\\C", 2},
                     {key_, "a\\\\B", 0},
                     {a, "", 0},
                     {a, "", 1018},
                     {key_, "A", 2},
                     {HKEY_LOCAL_MACHINE, "", 5}};
  for (const auto& c : cases) EXPECT_EQ(RegDeleteKeyA(c.base, c.path), c.answer) << c.path;
  EXPECT_EQ(RegDeleteKeyA(key_, nullptr), 87);
  EXPECT_EQ(RegDeleteValueA(key_, "none"), 2);
}

TEST_F(RegistryCalls, AHandleOfADeletedKeyStaysDeadWhenTheKeyComesBack) {
  Key dead = Create(key_, "K");
  ASSERT_EQ(Set(dead, "v", "old"), 0);
  for (bool recreated : {false, true}) {
    if (!recreated)
      ASSERT_EQ(RegDeleteKeyA(key_, "k"), 0);
    else
      ASSERT_EQ(TryCreate(key_, "K\\below"), 0);
    char name[20];
    DWORD length = sizeof name;
    EXPECT_EQ(RegQueryValueExA(dead, "v", nullptr, nullptr, nullptr, nullptr), 1018);
    EXPECT_EQ(Set(dead, "v", "new"), 1018);
    EXPECT_EQ(RegEnumKeyExA(dead, 0, name, &length, nullptr, nullptr, nullptr, nullptr), 1018);
    EXPECT_EQ(RegEnumValueA(dead, 0, name, &length, nullptr, nullptr, nullptr, nullptr), 1018);
    EXPECT_EQ(RegDeleteValueA(dead, "v"), 1018);
    EXPECT_EQ(TryOpen(dead, ""), 1018);
    EXPECT_EQ(TryOpen(dead, "below"), 1018);
    EXPECT_EQ(TryCreate(dead, ""), 1018);
    EXPECT_EQ(TryCreate(dead, "more"), 1018);
    EXPECT_EQ(RegDeleteKeyA(dead, ""), 1018);
  }
  Key alive = Open(key_, "K");
  EXPECT_EQ(RegQueryValueExA(alive, "v", nullptr, nullptr, nullptr, nullptr), 2);
  EXPECT_EQ(NamesOf(alive, SubkeyName), std::vector<std::string>{"below"});
}

}  // namespace
}  // namespace moxel::test
