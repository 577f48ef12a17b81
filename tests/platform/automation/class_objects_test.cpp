#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "moxel/platform.h"
#include "tests/support/temp_registry.h"

namespace {

namespace fs = std::filesystem;

constexpr CLSID kClass{0x0A1B2C3D, 0x4E5F, 0x6071, {0x82, 0x93, 0xA4, 0xB5, 0xC6, 0xD7, 0xE8, 0xF9}};
constexpr char16_t kClassText[] = u"{0A1B2C3D-4E5F-6071-8293-A4B5C6D7E8F9}";
constexpr char kAnsiClassText[] = "{0A1B2C3D-4E5F-6071-8293-A4B5C6D7E8F9}";

std::string FileAt(const void* address) {
  HMODULE module = nullptr;
  EXPECT_TRUE(
      GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS, static_cast<LPCSTR>(address), &module));
  char path[4096];
  return {path, GetModuleFileNameA(module, path, sizeof path)};
}

std::string PlatformLibrary() { return FileAt(reinterpret_cast<void*>(&SysFreeString)); }

class ClassLookUp : public moxel::test::RegistryTest {
 protected:
  static void Set(const std::string& path, const std::string& value) {
    HKEY key = 0;
    RegCreateKeyExA(HKEY_CLASSES_ROOT, path.c_str(), 0, nullptr, 0, KEY_WRITE, nullptr, &key, nullptr);
    const auto* data = reinterpret_cast<const BYTE*>(value.c_str());
    EXPECT_EQ(RegSetValueExA(key, "", 0, REG_SZ, data, static_cast<DWORD>(value.size() + 1)), 0);
    RegCloseKey(key);
  }
};

TEST_F(ClassLookUp, ClassTextsAndProgramIds) {
  char16_t text[39];
  EXPECT_EQ(StringFromGUID2(kClass, text, 38), 0);
  EXPECT_EQ(StringFromGUID2(kClass, text, 39), 39);
  EXPECT_EQ(std::u16string(text), kClassText);

  for (std::string name : {"Acme.Gadget", "Caf\xE9.Gadget", "Acme.?"}) Set(name + "\\CLSID", kAnsiClassText);
  Set("Acme.Broken\\CLSID", "no class id");
  Set("Acme.NoClass", "a description");
  const auto look_up = [](auto function, const char16_t* from, HRESULT expected) {
    CLSID clsid = kClass;
    EXPECT_EQ(function(from, &clsid), expected);
    EXPECT_TRUE(clsid == (expected == S_OK ? kClass : GUID_NULL));
    EXPECT_EQ(function(from, nullptr), E_POINTER);
  };
  look_up(CLSIDFromString, kClassText, S_OK);
  look_up(CLSIDFromString, u"{0a1b2c3d-4e5f-6071-8293-a4b5c6d7e8f9}", S_OK);
  for (const auto function : {CLSIDFromProgID, CLSIDFromString}) {
    for (const auto* good : {u"ACME.gadget", u"Caf\xE9.Gadget"}) look_up(function, good, S_OK);
    look_up(function, nullptr, E_INVALIDARG);
    for (const auto* bad :
         {u"{0A1B2C3D-4E5F-6071-8293-A4B5C6D7E8F9", u"{0A1B2C3D-4E5F-6071-8293-A4B5C6D7E8F9}x",
          u"{0A1B2C3D-4E5F-6071-8293-A4B5C6D7E8FG}", u"{0A1B2C3D\u01304E5F-6071-8293-A4B5C6D7E8F9}", u"",
          u"Acme.Broken", u"Acme.NoClass", u"Acme.Unknown", u"Acme.\u0416", u"Acme.Gadget\\"}) {
      look_up(function, bad, CO_E_CLASSSTRING);
    }
  }
}

TEST_F(ClassLookUp, ServersThatCannotBeLoaded) {
  const auto expect = [](HRESULT expected, DWORD context = CLSCTX_INPROC_SERVER) {
    void *object = &object, *factory = &factory;
    EXPECT_EQ(CoCreateInstance(kClass, nullptr, context, IID_IUnknown, &object), expected);
    EXPECT_EQ(CoGetClassObject(kClass, context, nullptr, IID_IUnknown, &factory), expected);
    EXPECT_TRUE(object == nullptr && factory == nullptr);
  };
  expect(REGDB_E_CLASSNOTREG);
  const std::string text_file = folder() / "not-a-library";
  std::ofstream(text_file) << "plain text";
  // The platform's own library is one without classes.
  for (const std::string& server :
       {(folder() / "missing.so").string(), std::string(), text_file, PlatformLibrary()}) {
    Set(std::string("CLSID\\") + kAnsiClassText + "\\InprocServer32", server);
    expect(fs::exists(server) ? CO_E_ERRORINDLL : CO_E_DLLNOTFOUND);
  }
  expect(REGDB_E_CLASSNOTREG, 4);
  EXPECT_EQ(CoGetClassObject(kClass, CLSCTX_INPROC_SERVER, nullptr, IID_IUnknown, nullptr), E_POINTER);
  EXPECT_EQ(CoCreateInstance(kClass, nullptr, CLSCTX_INPROC_SERVER, IID_IUnknown, nullptr), E_POINTER);
}

TEST(Modules, FilesOfAddresses) {
  static int here = 0;
  const std::string executable = fs::read_symlink("/proc/self/exe");
  EXPECT_EQ(FileAt(&here), executable);
  EXPECT_NE(PlatformLibrary().find("/libmoxel-platform"), std::string::npos);
  char path[5];
  EXPECT_EQ(GetModuleFileNameA(nullptr, path, 5), 5u);
  EXPECT_EQ(path, executable.substr(0, 4));
  EXPECT_EQ(GetModuleFileNameA(nullptr, path, 0), 0u);
  HMODULE module = &module;
  EXPECT_EQ(GetModuleFileNameA(module, path, sizeof path), 0u);
  EXPECT_FALSE(GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS, path, &module));
  EXPECT_EQ(module, nullptr);
  EXPECT_FALSE(GetModuleHandleExA(0, "libmoxel-platform.so", &module));
}

}  // namespace
