// Opening, stepping through and deleting keys.
#include "registry/store.h"
#include "tests/registry/store_test.h"

namespace moxel::test {
namespace {

class Keys : public StoreTest {
 protected:
  static Status TryOpenPath(std::u16string_view path, REGSAM access = KEY_QUERY_VALUE) {
    StoreHandle handle = 0;
    Status opened = RegOpenKeyPath(path, handle, access);
    EXPECT_EQ(RegCloseKeyHandle(handle), VARIANT_FALSE);
    return opened;
  }

  // What one call of RegEnumValues leaves in its arguments.
  struct Entry {
    Status found = 77;
    std::string data = "old data";
    std::string name = "old name";
    std::int32_t type = 77;
    bool operator==(const Entry&) const = default;
    friend void PrintTo(const Entry& entry, std::ostream* out) {
      *out << entry.found << " name " << entry.name << " data " << entry.data << " type " << entry.type;
    }
  };

  static Entry EntryAt(std::int32_t index, const std::string& path = "K") {
    std::u16string data = u"old data";
    std::u16string name = u"old name";
    Entry entry;
    entry.found = RegEnumValues(OpenKey(path), index, data, &name, &entry.type);
    entry.data = ToAnsi(data);
    entry.name = ToAnsi(name);
    return entry;
  }
};

TEST_F(Keys, OpenBelowTheRootWhereTheyExist) {
  CreateKey("A\\B");
  EXPECT_EQ(TryOpenPath(u"A"), VARIANT_TRUE);
  EXPECT_EQ(TryOpenPath(u"a\\b\\", kReadWrite), VARIANT_TRUE);
  EXPECT_EQ(TryOpenPath(u"", KEY_ALL_ACCESS), VARIANT_TRUE);
  EXPECT_EQ(TryOpenPath(u"B"), VARIANT_FALSE);
  EXPECT_EQ(TryOpenPath(u"A\\B\\C"), VARIANT_FALSE);
}

TEST_F(Keys, SubkeysAreSteppedThroughByIndex) {
  const std::string longest(254, 'y');
  for (const std::string& name : {"b"s, "\xE9"s, "A"s, longest}) CreateKey("K\\" + name);
  Key key = OpenKey("K");
  std::vector<std::string> names;
  std::u16string name;
  for (std::int32_t i = 0; RegEnumSubKeys(key, i, name) == VARIANT_TRUE; ++i) names.push_back(ToAnsi(name));
  EXPECT_EQ(names, (std::vector<std::string>{"A", "b", longest, "\xE9"}));
  EXPECT_EQ(name, u"é") << "kept at the end";
  EXPECT_EQ(RegEnumSubKeys(OpenKey("Missing"), 0, name), VARIANT_FALSE);
}

TEST_F(Keys, ASubkeyOf255CharactersEndsTheEnumeration) {
  CreateKey("K\\" + std::string(255, 'a'));
  CreateKey("K\\b");
  std::u16string name = u"old";
  EXPECT_EQ(RegEnumSubKeys(OpenKey("K"), 0, name), VARIANT_FALSE);
  EXPECT_EQ(name, u"old");
}

TEST_F(Keys, ValuesAreSteppedThroughInTheOrderTheyWereSet) {
  const std::string long_name(1023, 'n');
  const std::string long_text(2046, 'x');
  const std::string number_name(254, 'd');
  const struct {
    std::string name;
    DWORD type;
    std::string bytes;
    Entry entry;
  } cases[] = {
      {"tsk2", REG_SZ, "abc\0"s, {-1, "abc", "tsk2", 1}},
      {"five", REG_DWORD, "\x05\0\0\0"s, {-1, "5", "five", 4}},
      {"negative", REG_DWORD, "\xFF\xFF\xFF\xFF"s, {-1, "-1", "negative", 4}},
      {"smallest", REG_DWORD, "\0\0\0\x80"s, {-1, "-2147483648", "smallest", 4}},
      {"raw", REG_DWORD, "\x07\0\0\0\0\0\x04\x40"s, {-1, "7", "raw", 4}},
      {"short", REG_DWORD, "\x07\x01"s, {-1, "263", "short", 4}},
      {"no number", REG_DWORD, "", {-1, "old data", "no number", 4}},
      {"empty", REG_SZ, "\0"s, {-1, "", "empty", 1}},
      {"no data", REG_SZ, "", {-1, "old data", "no data", 1}},
      {"", REG_SZ, "default\0"s, {-1, "default", "old name", 1}},
      {"binary", REG_BINARY, "abc"s, {-1, "ab", "binary", 3}},
      {"no type", REG_NONE, "abc"s, {-1, "ab", "no type", 0}},
      {long_name, REG_SZ, long_text + '\0', {-1, long_text, long_name, 1}},
      {number_name, REG_DWORD, "\x05\0\0\0"s, {-1, "5", number_name, 4}},
  };
  std::int32_t index = 0;
  for (const auto& c : cases) {
    Put("K", c.name, c.type, c.bytes);
    EXPECT_EQ(EntryAt(index++), c.entry) << c.name;
  }
  EXPECT_EQ(EntryAt(index), (Entry{0, "old data", "old name", 0})) << "past the end";
  EXPECT_EQ(EntryAt(0, "Missing"), (Entry{0, "old data", "old name", 0}));
  std::u16string data;
  EXPECT_EQ(RegEnumValues(OpenKey("K"), 1, data), VARIANT_TRUE) << "name and type may be left out";
  EXPECT_EQ(data, u"5");
}

TEST_F(Keys, AValueTooLargeEndsTheEnumerationButTellsItsType) {
  const struct {
    const char* story;
    std::string name;
    std::int32_t type;
    std::string bytes;
  } cases[] = {
      {"text of 2048 bytes", "v", REG_SZ, std::string(2047, 'x')},
      {"data of 2048 bytes", "v", REG_BINARY, std::string(2048, 'x')},
      {"name of 1024 characters", std::string(1024, 'n'), REG_SZ, "abc"},
      {"number with a name of 256 characters", std::string(256, 'n'), REG_DWORD, "\x05\0\0\0"s},
      {"number of 256 bytes", "v", REG_DWORD, std::string(256, 'x')},
  };
  for (const auto& c : cases) {
    RegDeleteKeyTree(u"", u"K");
    Put("K", c.name, static_cast<DWORD>(c.type), c.bytes);
    EXPECT_EQ(EntryAt(0), (Entry{0, "old data", "old name", c.type})) << c.story;
  }
}

TEST_F(Keys, AKeyIsDeletedUnlessItHasSubkeys) {
  CreateKey("A\\B\\C");
  Put("A\\B", "v", REG_SZ, "abc");
  EXPECT_EQ(RegDeleteKeyPath(u"A", u"B"), VARIANT_FALSE);
  EXPECT_TRUE(Exists("A\\B\\C"));
  EXPECT_TRUE(Find("A\\B", "v"));
  EXPECT_EQ(RegDeleteKeyPath(u"A\\B", u"c"), VARIANT_TRUE);
  EXPECT_EQ(RegDeleteKeyPath(u"A", u"B"), VARIANT_TRUE);
  EXPECT_EQ(RegDeleteKeyPath(u"A", u"B"), VARIANT_FALSE) << "gone by now";
  EXPECT_EQ(RegDeleteKeyPath(u"Missing", u"B"), VARIANT_FALSE);
  EXPECT_TRUE(Exists("A"));
}

TEST_F(Keys, ATreeIsDeletedToItsLastLeafAndNothingBesideIt) {
  for (const char* path : {"A\\T\\1\\x\\deep", "A\\T\\1\\y", "A\\T\\2\\x", "A\\T\\3", "A\\T2\\x", "A\\S"})
    Put(path, "v", REG_SZ, "abc");
  EXPECT_EQ(RegDeleteKeyTree(u"A", u"t"), VARIANT_TRUE);
  EXPECT_EQ(NamesOf(OpenKey("A"), SubkeyName), (std::vector<std::string>{"S", "T2"}));
  EXPECT_TRUE(Exists("A\\T2\\x"));
  EXPECT_EQ(RegDeleteKeyTree(u"A", u"S"), VARIANT_TRUE) << "a leaf";
  EXPECT_EQ(RegDeleteKeyTree(u"A", u"T"), VARIANT_FALSE) << "gone by now";
  EXPECT_EQ(RegDeleteKeyTree(u"Missing", u"T"), VARIANT_FALSE);
}

TEST_F(Keys, WithoutASubkeyNameTheParentIsTheTree) {
  CreateKey("A\\B\\C");
  CreateKey("A2");
  EXPECT_EQ(RegDeleteKeyTree(u"A", u""), VARIANT_TRUE);
  EXPECT_EQ(NamesOf(OpenKey(""), SubkeyName), (std::vector<std::string>{"A2"}));
}

TEST_F(Keys, ATreeHoldingANameTooLongToStepToStays) {
  CreateKey("A\\T\\" + std::string(255, 'a'));
  EXPECT_EQ(RegDeleteKeyTree(u"A", u"T"), VARIANT_FALSE);
  EXPECT_TRUE(Exists("A\\T"));
}

}  // namespace
}  // namespace moxel::test
