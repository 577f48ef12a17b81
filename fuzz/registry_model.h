// The registry's tree as a map in memory.
#pragma once

#include <algorithm>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "moxel/platform.h"
#include "moxel/text.h"
#include "platform/automation/keyed_collection.h"

namespace moxel::fuzz {

using KeyId = int;
inline constexpr KeyId kRoot = 0, kNoKey = -1;
inline const std::string kClasses = "SOFTWARE\\Classes\\";

// Names that differ only in letter case are one, and keys stand in the order of their upper-cased names.
inline std::u16string Folded(std::string_view name) { return FoldKey(Widen(CP_ACP, name)); }

inline std::vector<std::string> LevelsOf(std::string_view path) {
  std::vector<std::string> levels;
  bool begins = true;
  for (const char c : path) {
    if (c != '\\' && begins) levels.emplace_back();
    if (c != '\\') levels.back() += c;
    begins = c == '\\';
  }
  return levels;
}

struct StoredValue {
  std::string name;
  DWORD type;
  std::string data;
};

struct Key {
  KeyId parent;
  std::string name;
  std::map<std::u16string, KeyId> subkeys = {};
  std::vector<StoredValue> values = {};

  auto FindValue(const std::string& wanted) {
    return std::find_if(values.begin(), values.end(),
                        [&](const StoredValue& value) { return Folded(value.name) == Folded(wanted); });
  }
  bool Has(const std::string& wanted) { return FindValue(wanted) != values.end(); }
  void Set(const std::string& wanted, DWORD type, std::string data) {
    if (type == REG_SZ && !data.empty() && data.back() != '\0') data += '\0';
    if (!Has(wanted)) values.push_back({wanted, type, data});
    FindValue(wanted)->type = type;
    FindValue(wanted)->data = data;
  }
};

class Tree {
 public:
  Key* Find(KeyId id) {
    const auto found = keys_.find(id);
    return found == keys_.end() ? nullptr : &found->second;
  }

  KeyId Walk(KeyId key, std::string_view path) {
    for (const std::string& level : LevelsOf(path)) {
      const auto& subkeys = Find(key)->subkeys;
      const auto found = subkeys.find(Folded(level));
      if (found == subkeys.end()) return kNoKey;
      key = found->second;
    }
    return key;
  }

  KeyId Create(KeyId key, std::string_view path) {
    for (const std::string& level : LevelsOf(path)) {
      KeyId below = Walk(key, level);
      if (below == kNoKey) {
        below = ++last_id_;
        Find(key)->subkeys[Folded(level)] = below;
        keys_[below] = {key, level};
      }
      key = below;
    }
    return key;
  }

  void Delete(KeyId id) {
    const Key& key = *Find(id);
    Find(key.parent)->subkeys.erase(Folded(key.name));
    keys_.erase(id);
  }

  // As it was earlier, but for the ids, which are never used again.
  void Restore(const Tree& earlier) { keys_ = earlier.keys_; }

 private:
  std::map<KeyId, Key> keys_{{kRoot, {kNoKey, ""}}};
  KeyId last_id_ = kRoot;
};

}  // namespace moxel::fuzz
