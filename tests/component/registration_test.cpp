#include "component/registration.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <set>

#include "moxel/component.h"
#include "tests/component/calls.h"

namespace moxel::test {
namespace {

using namespace std::string_literals;

std::string Library(const char* name) {
  auto program = std::filesystem::read_symlink("/proc/self/exe");
  return (program.parent_path().parent_path() / "lib" / name).string();
}

std::string Braced(const GUID& guid) {
  OLECHAR text[39];
  StringFromGUID2(guid, text, 39);
  return {text, text + 38};
}

void Collect(const std::string& path, std::set<std::string>& found) {
  const Key key = Open(HKEY_CLASSES_ROOT, path);
  found.insert(path + " = " + Get(key, "").value_or("(none)").c_str());
  for (DWORD index = 0; const auto name = NameAt(kSubkeys, key, index); ++index)
    Collect(path.empty() ? *name : path + "\\" + *name, found);
}

// Every key of the classes, with its default value.
std::set<std::string> Classes() {
  std::set<std::string> found;
  Collect("", found);
  return found;
}

class RegistrationTest : public RegistryTest {
 protected:
  RegistrationTest() : library_(::dlopen(Library("libmoxel.so").c_str(), RTLD_NOW | RTLD_LOCAL)) {}
  ~RegistrationTest() override {
    if (library_) ::dlclose(library_);
  }

  HRESULT CallExport(const char* name) {
    if (!library_) return E_FAIL;
    auto* entry = reinterpret_cast<HRESULT (*)()>(::dlsym(library_, name));
    return entry ? entry() : E_NOTIMPL;
  }

  void* library_;
};

TEST_F(RegistrationTest, TheUsualKeysAreWritten) {
  ASSERT_EQ(CallExport("DllRegisterServer"), S_OK);
  const std::set<std::string> classes = Classes();
  const std::string path = Library("libmoxel.so"), class_id = Braced(CLSID_RootVar),
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
  const std::string command = "nm -D --defined-only --format=just-symbols '" + Library(library) + "'";
  std::set<std::string> names;
  FILE* listing = ::popen(command.c_str(), "r");
  char name[1000];
  while (listing && std::fscanf(listing, "%999s", name) == 1) names.insert(name);
  EXPECT_EQ(listing ? ::pclose(listing) : -1, 0) << command;
  return names;
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
