#include "component/registration.h"

#include <string>
#include <string_view>
#include <vector>

#include "component/classes.h"
#include "component/library.h"
#include "moxel/identifiers.h"
#include "registry/ansi.h"

namespace moxel::component {
namespace {

// The platform's marshaler of dual interfaces.
constexpr std::string_view kDualMarshaler = "{00020424-0000-0000-C000-000000000046}";

struct Entry {
  std::string key;  // below HKEY_CLASSES_ROOT
  std::string name;
  std::string value;
};

std::string Version() { return std::to_string(kMajorVersion) + "." + std::to_string(kMinorVersion); }

std::string GuidText(const GUID& guid) {
  OLECHAR text[39];
  StringFromGUID2(guid, text, 39);
  return ToAnsi(text);
}

// The file of this library.
std::string ModulePath() {
  HMODULE module = nullptr;
  char path[4096] = "";
  GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                     reinterpret_cast<LPCSTR>(&ModulePath), &module);
  GetModuleFileNameA(module, path, sizeof path);
  return path;
}

void AddClass(std::vector<Entry>& entries, const CreatableClass& creatable, const std::string& path) {
  const std::string class_id = GuidText(*creatable.info().clsid);
  const std::string class_key = "CLSID\\" + class_id;
  const std::string prog_id = creatable.prog_id;
  entries.insert(entries.end(), {
                                    {prog_id, "", prog_id},
                                    {prog_id + "\\CLSID", "", class_id},
                                    {class_key, "", prog_id},
                                    {class_key + "\\InprocServer32", "", path},
                                    {class_key + "\\InprocServer32", "ThreadingModel", "Apartment"},
                                    {class_key + "\\ProgID", "", prog_id},
                                    {class_key + "\\Programmable", "", ""},
                                    {class_key + "\\TypeLib", "", GuidText(kLibraryId)},
                                    {class_key + "\\VERSION", "", Version()},
                                });
}

void AddInterface(std::vector<Entry>& entries, const ClassInfo& info) {
  const std::string key = "Interface\\" + GuidText(*info.iid);
  entries.insert(entries.end(), {
                                    {key, "", ToAnsi(info.interface_name)},
                                    {key + "\\ProxyStubClsid32", "", std::string(kDualMarshaler)},
                                    {key + "\\TypeLib", "", GuidText(kLibraryId)},
                                    {key + "\\TypeLib", "Version", Version()},
                                });
}

std::vector<Entry> Entries() {
  const std::string path = ModulePath();
  const std::string library_key = "TypeLib\\" + GuidText(kLibraryId) + "\\" + Version();
  std::vector<Entry> entries = {
      {library_key, "", ToAnsi(kLibraryTitle)},
      {library_key + "\\0\\win64", "", path},
      {library_key + "\\FLAGS", "", "0"},
  };
  for (const CreatableClass& creatable : CreatableClasses()) AddClass(entries, creatable, path);
  for (auto info : AllInterfaces()) AddInterface(entries, info());
  return entries;
}

// The keys that are the component's alone, each removed with everything below it.
std::vector<std::string> OwnKeys() {
  std::vector<std::string> keys = {"TypeLib\\" + GuidText(kLibraryId)};
  for (const CreatableClass& creatable : CreatableClasses()) {
    keys.emplace_back(creatable.prog_id);
    keys.push_back("CLSID\\" + GuidText(*creatable.info().clsid));
  }
  for (auto info : AllInterfaces()) keys.push_back("Interface\\" + GuidText(*info().iid));
  return keys;
}

bool Write(const Entry& entry) {
  HKEY handle = 0;
  DWORD disposition = 0;
  if (RegCreateKeyExA(HKEY_CLASSES_ROOT, entry.key.c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE, KEY_WRITE,
                      nullptr, &handle, &disposition) != ERROR_SUCCESS)
    return false;
  LSTATUS status = RegSetValueExA(handle, entry.name.c_str(), 0, REG_SZ,
                                  reinterpret_cast<const BYTE*>(entry.value.c_str()),
                                  static_cast<DWORD>(entry.value.size() + 1));
  RegCloseKey(handle);
  return status == ERROR_SUCCESS;
}

// A key that is not there is as good as removed.
bool Remove(const std::string& key) {
  HKEY handle = 0;
  LSTATUS opened = RegOpenKeyExA(HKEY_CLASSES_ROOT, key.c_str(), 0, KEY_READ | KEY_WRITE, &handle);
  if (opened != ERROR_SUCCESS) return opened == ERROR_FILE_NOT_FOUND;
  bool removed = true;
  char child[256];
  for (DWORD length = sizeof child; removed && RegEnumKeyExA(handle, 0, child, &length, nullptr, nullptr,
                                                             nullptr, nullptr) == ERROR_SUCCESS;
       length = sizeof child)
    removed = Remove(key + "\\" + child);
  RegCloseKey(handle);
  return removed && RegDeleteKeyA(HKEY_CLASSES_ROOT, key.c_str()) == ERROR_SUCCESS;
}

}  // namespace

bool Register() {
  for (const Entry& entry : Entries())
    if (!Write(entry)) return false;
  return true;
}

bool Unregister() {
  bool removed = true;
  for (const std::string& key : OwnKeys()) removed = Remove(key) && removed;
  return removed;
}

}  // namespace moxel::component
