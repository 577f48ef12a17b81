#include "moxel/key_path.h"

#include <array>
#include <optional>
#include <vector>

#include "moxel/ansi_text.h"

namespace moxel::tool {
namespace {

constexpr size_t kLongestComponent = 255;

struct Hive {
  HKEY key;
  std::string_view long_name;
  std::string_view short_name;
};

constexpr std::array kHives{Hive{HKEY_LOCAL_MACHINE, "HKEY_LOCAL_MACHINE", "HKLM"},
                            Hive{HKEY_CLASSES_ROOT, "HKEY_CLASSES_ROOT", "HKCR"}};

// Hives that other registries have. A user who types one does not mean a key of that name below the product
// root.
constexpr std::array kForeignHives{"HKCU", "HKU", "HKCC"};

std::vector<std::string_view> SplitComponents(std::string_view path) {
  std::vector<std::string_view> components;
  for (size_t begin = 0;;) {
    const size_t end = path.find('\\', begin);
    components.push_back(path.substr(begin, end - begin));
    if (end == std::string_view::npos) return components;
    begin = end + 1;
  }
}

std::optional<HKEY> HiveByLongName(std::string_view name) {
  for (const Hive& hive : kHives) {
    if (SameName(name, hive.long_name)) return hive.key;
  }
  return std::nullopt;
}

std::optional<HKEY> HiveByAnyName(std::string_view name) {
  for (const Hive& hive : kHives) {
    if (SameName(name, hive.short_name)) return hive.key;
  }
  return HiveByLongName(name);
}

bool NamesForeignHive(std::string_view name) {
  for (const std::string_view foreign : kForeignHives) {
    if (SameName(name, foreign)) return true;
  }
  return SameName(name.substr(0, 5), "HKEY_");
}

[[noreturn]] void ThrowForeignHive() {
  throw KeyPathError("this registry holds only HKEY_LOCAL_MACHINE and HKEY_CLASSES_ROOT");
}

void CheckComponent(std::string_view component) {
  if (component.empty()) throw KeyPathError("empty component in the key path");
  if (component.size() > kLongestComponent)
    throw KeyPathError("component of the key path over 255 characters");
  if (component.find('\0') != std::string_view::npos) throw KeyPathError("NUL character in the key path");
}

KeyPath ParseTypedKey(std::string_view text) {
  if (text.starts_with('\\')) throw KeyPathError("key path begins with a backslash");
  KeyPath key = ProductRoot();
  bool first = true;
  for (const std::string_view component : SplitComponents(text)) {
    if (component.empty()) continue;
    CheckComponent(component);
    const std::optional<HKEY> hive = first ? HiveByAnyName(component) : std::nullopt;
    if (first && !hive && NamesForeignHive(component)) ThrowForeignHive();
    key = hive ? KeyPath{*hive, ""} : key.Child(component);
    first = false;
  }
  return key;
}

}  // namespace

std::string KeyPath::FullName() const {
  std::string name;
  for (const Hive& candidate : kHives) {
    if (candidate.key == hive) name = candidate.long_name;
  }
  return path.empty() ? name : name + "\\" + path;
}

std::string KeyPath::Printable() const { return PrintableFromAnsi(FullName()); }

KeyPath KeyPath::Child(std::string_view name) const {
  return {hive, path.empty() ? std::string(name) : path + "\\" + std::string(name)};
}

KeyPath ProductRoot() { return {HKEY_LOCAL_MACHINE, "SOFTWARE\\MOXEL"}; }

KeyPath ParseFullKeyName(std::string_view name) {
  if (name.empty()) throw KeyPathError("empty key path");
  if (name.starts_with('\\')) throw KeyPathError("key path begins with a backslash");
  const std::vector<std::string_view> components = SplitComponents(name);
  const std::optional<HKEY> hive = HiveByLongName(components.front());
  if (!hive) ThrowForeignHive();
  for (size_t i = 1; i < components.size(); ++i) CheckComponent(components[i]);
  return {*hive,
          components.size() > 1 ? std::string(name.substr(components.front().size() + 1)) : std::string()};
}

KeyPath ParseKeyArgument(std::string_view argument) {
  try {
    return ParseTypedKey(AnsiFromUtf8(argument));
  } catch (const KeyPathError& error) {
    throw ToolError::Usage("key \"" + std::string(argument) + "\": " + error.what());
  } catch (const CodePageError& error) {
    throw ToolError("key \"" + std::string(argument) + "\": " + error.what());
  }
}

}  // namespace moxel::tool
