#include "component/registration.h"

#include <dlfcn.h>
#include <elf.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>

#include "moxel/component.h"
#include "tests/component/calls.h"

namespace moxel::test {
namespace {

std::string Library(const char* name) {
  auto program = std::filesystem::read_symlink("/proc/self/exe");
  return (program.parent_path().parent_path() / "lib" / name).string();
}

std::string Braced(const GUID& guid) {
  OLECHAR text[39];
  StringFromGUID2(guid, text, 39);
  return {text, text + 38};
}

// Every key below a key, with its default value.
void Collect(const std::string& path, const std::string& shown, std::vector<std::string>& found) {
  Key key = Open(HKEY_CLASSES_ROOT, path);
  if (!shown.empty()) {
    std::string value = Get(key, "").value_or("(none)");
    found.push_back(shown + " = " + value.substr(0, value.find('\0')));
  }
  for (const std::string& name : NamesOf(key, SubkeyName))
    Collect(path.empty() ? name : path + "\\" + name, shown.empty() ? name : shown + "\\" + name, found);
}

std::vector<std::string> Classes() {
  std::vector<std::string> found;
  Collect("", "", found);
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
  const std::vector<std::string> classes = Classes();
  const std::string path = Library("libmoxel.so"), clsid = "CLSID\\" + Braced(CLSID_RootVar),
                    library = "TypeLib\\" + Braced(kLibraryId) + "\\1.4",
                    interface = "Interface\\" + Braced(IID__Variable);
  for (const std::string& expected : std::vector<std::string>{
           "MOXEL.RootVar = MOXEL.RootVar", "MOXEL.RootVar\\CLSID = " + Braced(CLSID_RootVar),
           clsid + " = MOXEL.RootVar", clsid + "\\InprocServer32 = " + path,
           clsid + "\\ProgID = MOXEL.RootVar", clsid + "\\TypeLib = " + Braced(kLibraryId),
           clsid + "\\VERSION = 1.4", library + "\\0\\win64 = " + path, interface + " = _Variable",
           interface + "\\TypeLib = " + Braced(kLibraryId),
           "Interface\\" + Braced(IID__RootVar) + " = _RootVar"})
    EXPECT_NE(std::find(classes.begin(), classes.end(), expected), classes.end()) << expected;
  Key server = Open(HKEY_CLASSES_ROOT, clsid + "\\InprocServer32");
  EXPECT_EQ(Get(server, "ThreadingModel"), std::string("Apartment\0", 10));
  EXPECT_FALSE(Exists("")) << "registration touches no configuration";
}

TEST_F(RegistrationTest, RegisteredTwiceAndRemovedTwice) {
  Create(HKEY_CLASSES_ROOT, "CLSID\\{00000000-0000-0000-0000-000000000001}");
  Create(HKEY_CLASSES_ROOT, "Acme.Gadget");
  Create(HKEY_CLASSES_ROOT, "Interface");
  Create(HKEY_CLASSES_ROOT, "TypeLib");
  const std::vector<std::string> before = Classes();
  ASSERT_EQ(CallExport("DllRegisterServer"), S_OK);
  const std::vector<std::string> registered = Classes();
  EXPECT_GT(registered.size(), before.size());
  EXPECT_EQ(CallExport("DllRegisterServer"), S_OK);
  EXPECT_EQ(Classes(), registered);
  // What another program added below the component's own keys goes as well.
  Create(HKEY_CLASSES_ROOT, "MOXEL.RootVar\\Shell\\Open");
  EXPECT_EQ(CallExport("DllUnregisterServer"), S_OK);
  EXPECT_EQ(Classes(), before);
  EXPECT_EQ(CallExport("DllUnregisterServer"), S_OK);
  EXPECT_EQ(Classes(), before);
}

TEST_F(RegistrationTest, ARegistryThatRefusesIsReported) {
  std::ofstream(file()) << "this is no registry";
  EXPECT_EQ(CallExport("DllRegisterServer"), SELFREG_E_CLASS);
  EXPECT_EQ(CallExport("DllUnregisterServer"), SELFREG_E_CLASS);
}

TEST_F(RegistrationTest, ClientsCreateTheClassByItsProgramId) {
  CLSID clsid;
  ASSERT_EQ(CLSIDFromProgID(u"MOXEL.RootVar", &clsid), CO_E_CLASSSTRING);
  ASSERT_EQ(CallExport("DllRegisterServer"), S_OK);
  ASSERT_EQ(CLSIDFromProgID(u"moxel.rootvar", &clsid), S_OK);
  EXPECT_TRUE(clsid == CLSID_RootVar);
  WriteRecord("Domain\\D\\Var\\X", {{"Value", StoredText("x")}});
  ObjectPtr<IDispatch> root_var;
  ASSERT_EQ(CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch, root_var.ReceiveAny()),
            S_OK);
  EXPECT_EQ(CallExport("DllCanUnloadNow"), S_FALSE);
  EXPECT_EQ(DllCanUnloadNow(), S_OK) << "the object came from the program, not from the library";
  Variant domain(u"D"), scenario(u""), name(u"X");
  Reply reply = Call(root_var.get(), kRecupVariable, DISPATCH_METHOD, {domain, scenario, name});
  ASSERT_EQ(Shown(reply.value), "object");
  EXPECT_EQ(Shown(GetOf(reply.value.pdispVal, kValue).value), "'x'");
  reply = {};
  root_var = nullptr;
  EXPECT_EQ(CallExport("DllCanUnloadNow"), S_OK);
  ASSERT_EQ(CallExport("DllUnregisterServer"), S_OK);
  EXPECT_EQ(
      CoCreateInstance(CLSID_RootVar, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch, root_var.ReceiveAny()),
      REGDB_E_CLASSNOTREG);
}

// The names that a library offers to whoever loads it: the defined global ones of its dynamic symbol table.
class SymbolTable {
 public:
  explicit SymbolTable(const std::string& path) {
    std::ifstream stream(path, std::ios::binary);
    image_.assign(std::istreambuf_iterator<char>(stream), {});
  }

  std::set<std::string> Exported() const {
    std::set<std::string> names;
    const auto header = At<Elf64_Ehdr>(0);
    for (std::size_t i = 0; i < header.e_shnum; ++i) {
      const auto section = At<Elf64_Shdr>(header.e_shoff + i * sizeof(Elf64_Shdr));
      if (section.sh_type != SHT_DYNSYM) continue;
      const auto texts = At<Elf64_Shdr>(header.e_shoff + section.sh_link * sizeof(Elf64_Shdr));
      for (std::size_t at = sizeof(Elf64_Sym); at < section.sh_size; at += sizeof(Elf64_Sym)) {
        const auto symbol = At<Elf64_Sym>(section.sh_offset + at);
        if (symbol.st_shndx != SHN_UNDEF && symbol.st_shndx != SHN_ABS &&
            ELF64_ST_BIND(symbol.st_info) != STB_LOCAL)
          names.insert(image_.c_str() + texts.sh_offset + symbol.st_name);
      }
    }
    return names;
  }

 private:
  template <class T>
  T At(std::size_t offset) const {
    T record{};
    if (offset + sizeof record <= image_.size()) std::memcpy(&record, image_.data() + offset, sizeof record);
    return record;
  }

  std::string image_;
};

TEST(Exports, TheComponentOffersItsFourEntriesAlone) {
  EXPECT_EQ(SymbolTable(Library("libmoxel.so")).Exported(),
            (std::set<std::string>{"DllCanUnloadNow", "DllGetClassObject", "DllRegisterServer",
                                   "DllUnregisterServer"}));
}

TEST(Exports, ThePlatformOffersWhatProgramsLinkAgainstAndNoCxxName) {
  const std::set<std::string> names = SymbolTable(Library("libmoxel-platform.so")).Exported();
  for (const char* name :
       {"RegOpenKeyExA",   "RegCreateKeyExA", "RegQueryValueExA",  "RegSetValueExA",  "RegEnumKeyExA",
        "RegEnumValueA",   "RegDeleteKeyA",   "RegDeleteValueA",   "RegCloseKey",     "GetDateFormatA",
        "GetTimeFormatA",  "SysAllocString",  "SysAllocStringLen", "SysStringLen",    "SysStringByteLen",
        "SysFreeString",   "VariantInit",     "VariantClear",      "VariantCopy",     "VariantChangeType",
        "CreateErrorInfo", "SetErrorInfo",    "GetErrorInfo",      "CLSIDFromProgID", "CoGetClassObject",
        "CoCreateInstance"})
    EXPECT_TRUE(names.contains(name)) << name;
  for (const std::string& name : names) EXPECT_NE(name.rfind("_Z", 0), 0u) << name;
}

}  // namespace
}  // namespace moxel::test
