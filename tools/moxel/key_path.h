#pragma once

#include <string>
#include <string_view>

#include "moxel/error.h"

namespace moxel::tool {

// A text does not name a key of this registry; the message says why.
class KeyPathError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// A key by its hive and its path below it, in bytes of code page 1252. An empty path is the hive's own key.
struct KeyPath {
  HKEY hive = HKEY_LOCAL_MACHINE;
  std::string path;

  // "HKEY_LOCAL_MACHINE\SOFTWARE\..."
  std::string FullName() const;
  // The same, for the terminal.
  std::string Printable() const;

  KeyPath Child(std::string_view name) const;

  friend bool operator==(const KeyPath&, const KeyPath&) = default;
};

// The key under which the product keeps its configuration.
KeyPath ProductRoot();

// A full key name as a .reg file writes it: the hive's long name, no empty component, none over 255
// characters. Throws KeyPathError.
KeyPath ParseFullKeyName(std::string_view name);

// A key as a user types it, in UTF-8: in full, with the hive's long or short name, or relative to the product
// root. Backslashes at the end or doubled are ignored, as the registry does. Throws ToolError.
KeyPath ParseKeyArgument(std::string_view argument);

}  // namespace moxel::tool
