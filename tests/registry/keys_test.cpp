// Opening, stepping through and deleting keys.
#include "registry/store.h"
#include "tests/registry/store_test.h"

namespace moxel::test {
namespace {

class Keys : public StoreTest {
 protected:
  // What one call of RegEnumValues leaves in its arguments: found, data, name, type.
  using Entry = std::tuple<Status, std::string, std::string, std::int32_t>;

  static Entry EntryAt(std::int32_t index) {
    std::u16string data = u"old data", name = u"old name";
    std::int32_t type = 77;
    const Status found = RegEnumValues(OpenKey("K"), index, data, &name, &type);
    return {found, ToAnsi(data), ToAnsi(name), type};
  }

  static std::string SubkeysOf(const std::string& path) {
    std::string names;
    std::u16string name;
    for (std::int32_t i = 0; RegEnumSubKeys(OpenKey(path), i, name); ++i) names += ToAnsi(name) + ",";
    return names;
  }

  static Entry EndOfType(std::int32_t type) { return {0, "old data", "old name", type}; }
};

TEST_F(Keys, OpenBelowTheRootWhereTheyExist) {
  CreateKey("A\\B");
  StoreHandle handle = 0;
  EXPECT_EQ(RegOpenKeyPath(u"a\\b\\", handle, kReadWrite), VARIANT_TRUE);
  EXPECT_EQ(RegCloseKeyHandle(handle), VARIANT_FALSE);
  EXPECT_EQ(RegOpenKeyPath(u"B", handle, KEY_QUERY_VALUE), VARIANT_FALSE);
}

TEST_F(Keys, SubkeysAreSteppedThroughByIndexUpToANameTooLong) {
  const std::string longest(254, 'y');
  for (const std::string& name : {"b"s, "\xE9"s, "A"s, longest}) CreateKey("K\\" + name);
  EXPECT_EQ(SubkeysOf("K"), "A,b," + longest + ",\xE9,");
  std::u16string name = u"old";
  CreateKey("K\\" + std::string(255, 'a'));
  EXPECT_EQ(RegEnumSubKeys(OpenKey("K"), 1, name), VARIANT_FALSE);
  EXPECT_EQ(RegEnumSubKeys(OpenKey("Missing"), 0, name), VARIANT_FALSE);
  EXPECT_EQ(name, u"old");
}

TEST_F(Keys, ValuesAreSteppedThroughInTheOrderTheyWereSet) {
  const std::string n1023(1023, 'n'), n1024(1024, 'n'), d254(254, 'd'), d256(256, 'd');
  using Case = std::tuple<std::string, DWORD, std::string, std::string>;
  const auto cases =
      Cases(Case("empty", 1, "\0"s, ""), Case("no data", 1, "", "old data"),
            Case("", 1, "default\0"s, "default"), Case(n1023, 1, Long(2046), Long(2046)),
            Case(n1024, 1, "abc", "end"), Case("2048 bytes of text", 1, Long(2047), "end"),
            Case("binary", 3, "abc", "ab"), Case("2048 bytes", 3, Long(2048), "end"),
            Case("least", 4, "\0\0\0\x80"s, "-2147483648"), Case("raw", 4, "\7\0\0\0\0\0\4\x40"s, "7"),
            Case("short", 4, "\7\1", "263"), Case("no number", 4, "", "old data"), Case(d254, 4, "\5", "5"),
            Case(d256, 4, "\5", "end"), Case("256 bytes", 4, Long(256), "end"));
  std::int32_t index = 0;
  for (const auto& [name, type, bytes, data] : cases) {
    Put("K", name, type, bytes);
    const auto found_type = static_cast<std::int32_t>(type);
    const Entry found{-1, data, name.empty() ? "old name" : name, found_type};
    EXPECT_EQ(EntryAt(index++), data == "end" ? EndOfType(found_type) : found);
  }
  EXPECT_EQ(EntryAt(index), EndOfType(0));
  std::u16string data;
  EXPECT_EQ(RegEnumValues(OpenKey("K"), 10, data), VARIANT_TRUE) << "name and type may be left out";
  EXPECT_EQ(data, u"263");
}

TEST_F(Keys, AreDeletedWithoutSubkeysOrAsTreesWithNothingBesideThem) {
  CreateKey("A\\B\\C");
  EXPECT_EQ(RegDeleteKeyPath(u"A", u"B"), VARIANT_FALSE);
  EXPECT_TRUE(Exists("A\\B\\C"));
  EXPECT_EQ(RegDeleteKeyPath(u"A\\B", u"c"), VARIANT_TRUE);
  EXPECT_EQ(RegDeleteKeyPath(u"A\\B", u"C"), VARIANT_FALSE) << "gone by now";

  for (const char* path : {"A\\T\\1\\x\\deep", "A\\T\\1\\y", "A\\T\\2", "A\\T2\\x", "A\\S", "A2"})
    Put(path, "v", REG_SZ, "abc");
  EXPECT_EQ(RegDeleteKeyTree(u"A", u"t"), VARIANT_TRUE);
  EXPECT_EQ(SubkeysOf("A"), "B,S,T2,");
  EXPECT_TRUE(Exists("A\\T2\\x"));
  EXPECT_EQ(RegDeleteKeyTree(u"A", u"S"), VARIANT_TRUE) << "a leaf";
  EXPECT_EQ(RegDeleteKeyTree(u"A", u"T"), VARIANT_FALSE) << "gone by now";
  EXPECT_EQ(RegDeleteKeyTree(u"A", u""), VARIANT_TRUE) << "without a subkey name the parent is the tree";
  EXPECT_EQ(SubkeysOf(""), "A2,");
  CreateKey("A2\\T\\" + std::string(255, 'a'));
  EXPECT_EQ(RegDeleteKeyTree(u"A2", u"T"), VARIANT_FALSE) << "a name too long to step to";
  EXPECT_TRUE(Exists("A2\\T"));
}

}  // namespace
}  // namespace moxel::test
