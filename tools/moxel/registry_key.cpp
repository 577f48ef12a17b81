#include "moxel/registry_key.h"

#include <algorithm>
#include <utility>

#include "moxel/ansi_text.h"
#include "moxel/platform/registry_file.h"

namespace moxel::tool {
namespace {

constexpr REGSAM kReadWrite = KEY_READ | KEY_WRITE;

bool IsMissing(LSTATUS status) {
  return status == ERROR_FILE_NOT_FOUND || status == ERROR_PATH_NOT_FOUND || status == ERROR_KEY_DELETED;
}

bool IsPastTheEnd(LSTATUS status) { return status == ERROR_NO_MORE_ITEMS || status == ERROR_KEY_DELETED; }

[[noreturn]] void Throw(const std::string& action, const KeyPath& path, LSTATUS status) {
  throw ToolError::Registry("cannot " + action + " " + path.Printable(), status);
}

std::string ValueLabel(const std::string& name) {
  return name.empty() ? "the default value of" : "value \"" + PrintableFromAnsi(name) + "\" of";
}

KeyPath ParentOf(const KeyPath& path) {
  const size_t separator = path.path.rfind('\\');
  return {path.hive, separator == std::string::npos ? std::string() : path.path.substr(0, separator)};
}

std::string LastComponent(const KeyPath& path) { return path.path.substr(path.path.rfind('\\') + 1); }

}  // namespace

std::optional<RegistryKey> RegistryKey::Open(const KeyPath& path, REGSAM access) {
  HKEY handle = 0;
  const LSTATUS status = RegOpenKeyExA(path.hive, path.path.c_str(), 0, access, &handle);
  if (IsMissing(status)) return std::nullopt;
  if (status != ERROR_SUCCESS) Throw("open", path, status);
  return RegistryKey(path, handle);
}

RegistryKey RegistryKey::Create(const KeyPath& path) {
  HKEY handle = 0;
  const LSTATUS status = RegCreateKeyExA(path.hive, path.path.c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE,
                                         kReadWrite, nullptr, &handle, nullptr);
  if (status != ERROR_SUCCESS) Throw("create", path, status);
  return RegistryKey(path, handle);
}

RegistryKey::RegistryKey(RegistryKey&& other) noexcept
    : path_(std::move(other.path_)), handle_(std::exchange(other.handle_, 0)) {}

RegistryKey& RegistryKey::operator=(RegistryKey&& other) noexcept {
  std::swap(path_, other.path_);
  std::swap(handle_, other.handle_);
  return *this;
}

RegistryKey::~RegistryKey() {
  if (handle_ != 0) RegCloseKey(handle_);
}

std::optional<RegistryKey> RegistryKey::OpenSubkey(const std::string& name, REGSAM access) const {
  HKEY handle = 0;
  const LSTATUS status = RegOpenKeyExA(handle_, name.c_str(), 0, access, &handle);
  if (IsMissing(status)) return std::nullopt;
  if (status != ERROR_SUCCESS) Throw("open", path_.Child(name), status);
  return RegistryKey(path_.Child(name), handle);
}

std::vector<std::string> RegistryKey::SubkeyNames() const {
  std::vector<std::string> names;
  for (DWORD index = 0; std::optional<std::string> name = SubkeyName(index); ++index)
    names.push_back(std::move(*name));
  return names;
}

std::vector<RegistryValue> RegistryKey::Values() const {
  std::vector<RegistryValue> values;
  for (DWORD index = 0; std::optional<RegistryValue> value = Value(index); ++index)
    values.push_back(std::move(*value));
  return values;
}

std::optional<std::string> RegistryKey::SubkeyName(DWORD index) const {
  std::string name(256, '\0');
  for (;;) {
    auto length = static_cast<DWORD>(name.size());
    const LSTATUS status =
        RegEnumKeyExA(handle_, index, name.data(), &length, nullptr, nullptr, nullptr, nullptr);
    if (status == ERROR_SUCCESS) return name.substr(0, length);
    if (IsPastTheEnd(status)) return std::nullopt;
    if (status != ERROR_MORE_DATA) Throw("list the subkeys of", path_, status);
    name.resize(2 * name.size());
  }
}

// More data may be said of the name or of the data, so both areas grow.
std::optional<RegistryValue> RegistryKey::Value(DWORD index) const {
  std::string name(256, '\0');
  std::string bytes(4096, '\0');
  for (;;) {
    auto name_length = static_cast<DWORD>(name.size());
    auto byte_count = static_cast<DWORD>(bytes.size());
    DWORD type = REG_NONE;
    const LSTATUS status = RegEnumValueA(handle_, index, name.data(), &name_length, nullptr, &type,
                                         reinterpret_cast<BYTE*>(bytes.data()), &byte_count);
    if (status == ERROR_SUCCESS)
      return RegistryValue{name.substr(0, name_length), {type, bytes.substr(0, byte_count)}};
    if (IsPastTheEnd(status)) return std::nullopt;
    if (status != ERROR_MORE_DATA) Throw("list the values of", path_, status);
    name.resize(2 * name.size());
    bytes.resize(std::max<size_t>(byte_count, bytes.size()));
  }
}

void RegistryKey::SetValue(const std::string& name, const RegData& data) const {
  const LSTATUS status =
      RegSetValueExA(handle_, name.c_str(), 0, data.type, reinterpret_cast<const BYTE*>(data.bytes.data()),
                     static_cast<DWORD>(data.bytes.size()));
  if (status != ERROR_SUCCESS) Throw("set " + ValueLabel(name), path_, status);
}

bool RegistryKey::DeleteValue(const std::string& name) const {
  const LSTATUS status = RegDeleteValueA(handle_, name.c_str());
  if (status != ERROR_SUCCESS && !IsMissing(status)) Throw("delete " + ValueLabel(name), path_, status);
  return status == ERROR_SUCCESS;
}

bool RegistryKey::DeleteSubkey(const std::string& name) const {
  const LSTATUS status = RegDeleteKeyA(handle_, name.c_str());
  if (status != ERROR_SUCCESS && !IsMissing(status)) Throw("delete", path_.Child(name), status);
  return status == ERROR_SUCCESS;
}

KeyPath StoredPath(const KeyPath& path) {
  KeyPath stored{path.hive, ""};
  for (size_t begin = 0; begin < path.path.size();) {
    const size_t end = std::min(path.path.find('\\', begin), path.path.size());
    const std::string component = path.path.substr(begin, end - begin);
    const std::optional<RegistryKey> parent = RegistryKey::Open(stored, KEY_READ);
    if (!parent) return path;
    const std::vector<std::string> names = parent->SubkeyNames();
    const auto same = std::find_if(names.begin(), names.end(),
                                   [&](const std::string& name) { return SameName(name, component); });
    if (same == names.end()) return path;
    stored = stored.Child(*same);
    begin = end + 1;
  }
  return stored;
}

bool WalkTree(const KeyPath& root, const std::function<void(const RegistryKey&)>& visit) {
  std::optional<RegistryKey> top = RegistryKey::Open(root, KEY_READ);
  if (!top) return false;
  struct Level {
    RegistryKey key;
    std::vector<std::string> names;
    size_t next = 0;
  };
  std::vector<Level> levels;
  const auto enter = [&](RegistryKey key) {
    visit(key);
    std::vector<std::string> names = key.SubkeyNames();
    levels.push_back({std::move(key), std::move(names)});
  };
  enter(std::move(*top));
  while (!levels.empty()) {
    Level& level = levels.back();
    if (level.next == level.names.size()) {
      levels.pop_back();
    } else if (auto child = level.key.OpenSubkey(level.names[level.next++], KEY_READ)) {
      enter(std::move(*child));
    }
  }
  return true;
}

size_t DeleteTree(const KeyPath& path) {
  std::optional<RegistryKey> parent = RegistryKey::Open(ParentOf(path), kReadWrite);
  if (!parent) return 0;
  const std::string name = LastComponent(path);
  std::optional<RegistryKey> top = parent->OpenSubkey(name, kReadWrite);
  if (!top) return 0;

  size_t deleted = 0;
  std::vector<RegistryKey> chain;  // from the parent down to a key whose first subkey is looked at
  std::vector<std::string> names{name};
  chain.push_back(std::move(*parent));
  chain.push_back(std::move(*top));
  while (chain.size() > 1) {
    if (std::optional<std::string> child = chain.back().FirstSubkeyName()) {
      std::optional<RegistryKey> key = chain.back().OpenSubkey(*child, kReadWrite);
      if (!key) Throw("open", chain.back().path().Child(*child), ERROR_FILE_NOT_FOUND);
      chain.push_back(std::move(*key));
      names.push_back(std::move(*child));
    } else {
      chain.pop_back();
      if (chain.back().DeleteSubkey(names.back())) ++deleted;
      names.pop_back();
    }
  }
  return deleted;
}

RegistryTransaction::RegistryTransaction() {
  const LSTATUS status = RegFileBegin();
  if (status != ERROR_SUCCESS) throw ToolError::Registry("cannot change the registry", status);
}

RegistryTransaction::~RegistryTransaction() {
  if (open_) RegFileRollback();
}

void RegistryTransaction::Commit() {
  open_ = false;
  const LSTATUS status = RegFileCommit();
  if (status != ERROR_SUCCESS) throw ToolError::Registry("cannot change the registry", status);
}

}  // namespace moxel::tool
