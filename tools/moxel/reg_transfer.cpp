#include "moxel/reg_transfer.h"

#include "moxel/registry_key.h"

namespace moxel::tool {
namespace {

void ApplyValues(const RegSection& section, ImportCounts& counts) {
  const RegistryKey key = RegistryKey::Create(section.key);
  ++counts.keys_set;
  for (const RegValueChange& change : section.values) {
    if (change.data) {
      key.SetValue(change.name, *change.data);
      ++counts.values_set;
    } else if (key.DeleteValue(change.name)) {
      ++counts.values_deleted;
    }
  }
}

}  // namespace

ImportCounts ImportDocument(const RegDocument& document) {
  ImportCounts counts;
  RegistryTransaction transaction;
  for (const RegSection& section : document) {
    if (section.deletes_key) {
      counts.keys_deleted += DeleteTree(section.key);
    } else {
      ApplyValues(section, counts);
    }
  }
  transaction.Commit();
  return counts;
}

std::optional<std::string> ExportTree(const KeyPath& key, RegFormat format) {
  RegWriter writer(format);
  const bool found = WalkTree(StoredPath(key), [&](const RegistryKey& visited) {
    writer.AddKey(visited.path());
    for (const RegistryValue& value : visited.Values()) writer.AddValue(value.name, value.data);
  });
  return found ? std::optional(writer.File()) : std::nullopt;
}

}  // namespace moxel::tool
