#include "component/registration.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <set>
#include <sstream>

#include "moxel/component.h"
#include "tests/component/calls.h"

namespace moxel::test {
namespace {

using namespace std::string_literals;

std::string Braced(const GUID& guid) {
  OLECHAR text[39];
  StringFromGUID2(guid, text, 39);
  return {text, text + 38};
}

// Every key of the classes, with its default value.
std::set<std::string> Classes(const std::string& path = "") {
  const Key key = Open(HKEY_CLASSES_ROOT, path);
  std::set<std::string> found{path + " = " + Get(key, "").value_or("(none)").c_str()};
  for (DWORD index = 0; const auto name = NameAt(kSubkeys, key, index); ++index)
    found.merge(Classes(path.empty() ? *name : path + "\\" + *name));
  return found;
}

class RegistrationTest : public LibraryTest {};

TEST_F(RegistrationTest, TheUsualKeysAreWritten) {
  ASSERT_EQ(CallExport("DllRegisterServer"), S_OK);
  const std::set<std::string> classes = Classes();
  const std::string path = LibraryPath("libmoxel.so"), class_id = Braced(CLSID_RootVar),
                    clsid = "CLSID\\" + class_id, library_id = Braced(kLibraryId),
                    interface = "Interface\\" + Braced(IID__Variable);
  for (const std::string& expected :
       {"MOXEL.RootVar = MOXEL.RootVar"s, "MOXEL.RootVar\\CLSID = " + class_id, clsid + " = MOXEL.RootVar",
        clsid + "\\InprocServer32 = " + path, clsid + "\\ProgID = MOXEL.RootVar",
        clsid + "\\TypeLib = " + library_id, clsid + "\\VERSION = 1.4",
        "TypeLib\\" + library_id + "\\1.4\\0\\win64 = " + path, interface + " = _Variable",
        interface + "\\TypeLib = " + library_id})
    EXPECT_TRUE(classes.contains(expected)) << expected;
  const Key server = Open(HKEY_CLASSES_ROOT, clsid + "\\InprocServer32");
  EXPECT_EQ(Get(server, "ThreadingModel"), "Apartment\0"s);
  EXPECT_FALSE(Exists("")) << "registration touches no configuration";
}

TEST_F(RegistrationTest, RegisteredTwiceAndRemovedTwice) {
  for (const char* others :
       {"CLSID\\{00000000-0000-0000-0000-000000000001}", "Acme.Gadget", "Interface", "TypeLib"})
    Create(HKEY_CLASSES_ROOT, others);
  const std::set<std::string> before = Classes();
  ASSERT_EQ(CallExport("DllRegisterServer"), S_OK);
  const std::set<std::string> registered = Classes();
  CLSID clsid;
  EXPECT_EQ(CLSIDFromProgID(u"moxel.rootvar", &clsid), S_OK);
  EXPECT_TRUE(clsid == CLSID_RootVar);
  EXPECT_GT(registered.size(), before.size());
  EXPECT_EQ(CallExport("DllRegisterServer"), S_OK);
  EXPECT_EQ(Classes(), registered);
  // What another program added below the component's own keys goes as well.
  Create(HKEY_CLASSES_ROOT, "MOXEL.RootVar\\Shell\\Open");
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(CallExport("DllUnregisterServer"), S_OK);
    EXPECT_EQ(Classes(), before);
  }
}

TEST_F(RegistrationTest, ARegistryThatRefusesIsReported) {
  std::ofstream(file()) << "this is no registry";
  EXPECT_EQ(CallExport("DllRegisterServer"), SELFREG_E_CLASS);
  EXPECT_EQ(CallExport("DllUnregisterServer"), SELFREG_E_CLASS);
}

// The names that a library offers to whoever loads it.
std::set<std::string> Exported(const char* library) {
  std::istringstream names(
      ShellOutput("nm -D --defined-only --format=just-symbols " + ShellWord(LibraryPath(library))));
  return {std::istream_iterator<std::string>(names), {}};
}

TEST(Exports, TheComponentOffersItsFourEntriesAloneAndThePlatformNoCxxName) {
  EXPECT_EQ(Exported("libmoxel.so"), (std::set<std::string>{"DllCanUnloadNow", "DllGetClassObject",
                                                            "DllRegisterServer", "DllUnregisterServer"}));
  const std::set<std::string> names = Exported("libmoxel-platform.so");
  EXPECT_TRUE(names.contains("RegOpenKeyExA"));
  for (const std::string& name : names) EXPECT_FALSE(name.starts_with("_Z")) << name;
}

}  // namespace
}  // namespace moxel::test
