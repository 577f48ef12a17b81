// What a .reg file says, free of its encoding. Texts and names are bytes of code page 1252.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "moxel/key_path.h"

namespace moxel::tool {

// The data of a value as it is stored.
struct RegData {
  DWORD type = REG_NONE;
  std::string bytes;

  friend bool operator==(const RegData&, const RegData&) = default;
};

// Sets a value, or deletes it when there is no data. The name "" is the key's default value.
struct RegValueChange {
  std::string name;
  std::optional<RegData> data;

  friend bool operator==(const RegValueChange&, const RegValueChange&) = default;
};

// One [KEY] and the values below it, or one [-KEY], which has none.
struct RegSection {
  KeyPath key;
  bool deletes_key = false;
  std::vector<RegValueChange> values;

  friend bool operator==(const RegSection&, const RegSection&) = default;
};

// In the order of the file: a later change wins over an earlier one.
using RegDocument = std::vector<RegSection>;

}  // namespace moxel::tool
