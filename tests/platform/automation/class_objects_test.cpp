#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "moxel/platform.h"
#include "tests/support/temp_registry.h"

namespace {

constexpr CLSID kClass{0x0A1B2C3D, 0x4E5F, 0x6071, {0x82, 0x93, 0xA4, 0xB5, 0xC6, 0xD7, 0xE8, 0xF9}};
constexpr char16_t kClassText[] = u"{0A1B2C3D-4E5F-6071-8293-A4B5C6D7E8F9}";
constexpr char kClassKey[] = "CLSID\\{0A1B2C3D-4E5F-6071-8293-A4B5C6D7E8F9}\\InprocServer32";

std::string PlatformLibrary() {
  HMODULE module = nullptr;
  EXPECT_TRUE(GetModuleHandleExA(
      GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
      reinterpret_cast<LPCSTR>(&SysFreeString), &module));
  char path[4096];
  const DWORD length = GetModuleFileNameA(module, path, sizeof path);
  return std::string(path, length);
}

void SetClassValue(const std::string& path, const std::string& value) {
  HKEY key = 0;
  ASSERT_EQ(
      RegCreateKeyExA(HKEY_CLASSES_ROOT, path.c_str(), 0, nullptr, 0, KEY_WRITE, nullptr, &key, nullptr), 0);
  EXPECT_EQ(RegSetValueExA(key, "", 0, REG_SZ, reinterpret_cast<const BYTE*>(value.c_str()),
                           static_cast<DWORD>(value.size() + 1)),
            0);
  RegCloseKey(key);
}

TEST(ClassIds, TextForm) {
  char16_t text[39];
  EXPECT_EQ(StringFromGUID2(kClass, text, 39), 39);
  EXPECT_EQ(std::u16string(text), kClassText);
  EXPECT_EQ(StringFromGUID2(kClass, text, 38), 0);
  EXPECT_EQ(StringFromGUID2(kClass, nullptr, 39), 0);
}

class ClassLookUp : public moxel::test::RegistryTest {};

TEST_F(ClassLookUp, ClassTexts) {
  const struct {
    const char16_t* text;
    HRESULT result;
  } cases[] = {
      {kClassText, S_OK},
      {u"{0a1b2c3d-4e5f-6071-8293-a4b5c6d7e8f9}", S_OK},
      {u"{0A1B2C3D-4E5F-6071-8293-A4B5C6D7E8F9", CO_E_CLASSSTRING},
      {u"{0A1B2C3D-4E5F-6071-8293-A4B5C6D7E8F9}x", CO_E_CLASSSTRING},
      {u"{0A1B2C3D-4E5F-6071-8293-A4B5C6D7E8FG}", CO_E_CLASSSTRING},
      {u"{0A1B2C3D-4E5F-60718-293-A4B5C6D7E8F9}", CO_E_CLASSSTRING},
      {u"{0A1B2C3D\u01304E5F-6071-8293-A4B5C6D7E8F9}", CO_E_CLASSSTRING},
      {u"0A1B2C3D-4E5F-6071-8293-A4B5C6D7E8F9", CO_E_CLASSSTRING},
      {u"{}", CO_E_CLASSSTRING},
      {u"", CO_E_CLASSSTRING},
  };
  for (const auto& c : cases) {
    CLSID clsid = kClass;
    EXPECT_EQ(CLSIDFromString(c.text, &clsid), c.result);
    EXPECT_TRUE(clsid == (c.result == S_OK ? kClass : GUID_NULL));
  }
}

TEST_F(ClassLookUp, ProgramIds) {
  SetClassValue("Acme.Gadget\\CLSID", "{0A1B2C3D-4E5F-6071-8293-A4B5C6D7E8F9}");
  SetClassValue("Caf\xE9.Gadget\\CLSID", "{0A1B2C3D-4E5F-6071-8293-A4B5C6D7E8F9}");
  SetClassValue("Acme.Broken\\CLSID", "no class id");
  SetClassValue("Acme.NoClass", "a description");
  SetClassValue("Acme.?\\CLSID", "{0A1B2C3D-4E5F-6071-8293-A4B5C6D7E8F9}");
  const struct {
    const char16_t* prog_id;
    HRESULT result;
  } cases[] = {
      {u"Acme.Gadget", S_OK},
      {u"ACME.gadget", S_OK},
      {u"Caf\xE9.Gadget", S_OK},
      {u"Acme.Broken", CO_E_CLASSSTRING},
      {u"Acme.NoClass", CO_E_CLASSSTRING},
      {u"Acme.Unknown", CO_E_CLASSSTRING},
      {u"Acme.\u0416", CO_E_CLASSSTRING},
      {u"Acme.Gadget\\", CO_E_CLASSSTRING},
      {u"", CO_E_CLASSSTRING},
      {nullptr, E_INVALIDARG},
  };
  for (const auto& c : cases) {
    for (const auto look_up : {CLSIDFromProgID, CLSIDFromString}) {
      CLSID clsid = kClass;
      EXPECT_EQ(look_up(c.prog_id, &clsid), c.result);
      EXPECT_TRUE(clsid == (c.result == S_OK ? kClass : GUID_NULL));
    }
  }
  EXPECT_EQ(CLSIDFromProgID(u"Acme.Gadget", nullptr), E_POINTER);
  EXPECT_EQ(CLSIDFromString(u"Acme.Gadget", nullptr), E_POINTER);
}

TEST_F(ClassLookUp, ServersThatCannotBeLoaded) {
  const auto text_file = folder() / "not-a-library";
  std::ofstream(text_file) << "plain text";
  const struct {
    std::string server;
    HRESULT result;
  } cases[] = {
      {(folder() / "missing.so").string(), CO_E_DLLNOTFOUND},
      {"", CO_E_DLLNOTFOUND},
      {text_file.string(), CO_E_ERRORINDLL},
      {PlatformLibrary(), CO_E_ERRORINDLL},  // a library without classes
  };
  int dummy = 0;
  void* object = &dummy;
  EXPECT_EQ(CoGetClassObject(kClass, CLSCTX_INPROC_SERVER, nullptr, IID_IUnknown, &object),
            REGDB_E_CLASSNOTREG);
  EXPECT_EQ(object, nullptr);
  for (const auto& c : cases) {
    SetClassValue(kClassKey, c.server);
    object = &dummy;
    EXPECT_EQ(CoCreateInstance(kClass, nullptr, CLSCTX_INPROC_SERVER, IID_IUnknown, &object), c.result)
        << c.server;
    EXPECT_EQ(object, nullptr);
  }
  EXPECT_EQ(CoGetClassObject(kClass, CLSCTX_INPROC_SERVER, nullptr, IID_IUnknown, nullptr), E_POINTER);
  EXPECT_EQ(CoCreateInstance(kClass, nullptr, CLSCTX_INPROC_SERVER, IID_IUnknown, nullptr), E_POINTER);
  EXPECT_EQ(CoCreateInstance(kClass, nullptr, 4, IID_IUnknown, &object), REGDB_E_CLASSNOTREG);
}

TEST(Modules, FilesOfAddresses) {
  namespace fs = std::filesystem;
  const std::string library = PlatformLibrary();
  EXPECT_TRUE(fs::path(library).is_absolute()) << library;
  EXPECT_NE(fs::path(library).filename().string().find("libmoxel-platform"), std::string::npos);

  static int here = 0;
  HMODULE own = nullptr;
  ASSERT_TRUE(
      GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS, reinterpret_cast<LPCSTR>(&here), &own));
  char path[4096];
  const std::string executable = fs::read_symlink("/proc/self/exe").string();
  ASSERT_EQ(GetModuleFileNameA(own, path, sizeof path), executable.size());
  EXPECT_EQ(path, executable);
  ASSERT_EQ(GetModuleFileNameA(nullptr, path, sizeof path), executable.size());
  EXPECT_EQ(path, executable);

  EXPECT_EQ(GetModuleFileNameA(nullptr, path, 5), 5u);
  EXPECT_EQ(std::string(path), executable.substr(0, 4));
  EXPECT_EQ(GetModuleFileNameA(nullptr, nullptr, 5), 0u);
  EXPECT_EQ(GetModuleFileNameA(nullptr, path, 0), 0u);
}

TEST(Modules, Refusals) {
  int on_the_stack = 0;
  HMODULE module = &on_the_stack;
  const auto* address = reinterpret_cast<LPCSTR>(&on_the_stack);
  EXPECT_FALSE(GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS, address, &module));
  EXPECT_EQ(module, nullptr);
  EXPECT_FALSE(GetModuleHandleExA(0, "libmoxel-platform.so", &module));
  EXPECT_FALSE(GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS, address, nullptr));
  char path[16];
  EXPECT_EQ(GetModuleFileNameA(&on_the_stack, path, sizeof path), 0u);
}

}  // namespace
