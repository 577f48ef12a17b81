#include "moxel/reg_transfer.h"

#include "moxel/registry_key.h"

namespace moxel::tool {
namespace {

// A step is a key or a value, set or deleted.
class Steps {
 public:
  Steps(const RegDocument& document, const Progress& progress)
      : progress_(progress), total_(document.size()) {
    for (const RegSection& section : document) total_ += section.values.size();
  }

  void Done() {
    ++done_;
    if (progress_) progress_(done_, total_);
  }

 private:
  const Progress& progress_;
  size_t total_;
  size_t done_ = 0;
};

void ApplyValues(const RegSection& section, ImportCounts& counts, Steps& steps) {
  const RegistryKey key = RegistryKey::Create(section.key);
  ++counts.keys_set;
  steps.Done();
  for (const RegValueChange& change : section.values) {
    if (change.data) {
      key.SetValue(change.name, *change.data);
      ++counts.values_set;
    } else if (key.DeleteValue(change.name)) {
      ++counts.values_deleted;
    }
    steps.Done();
  }
}

}  // namespace

ImportCounts ImportDocument(const RegDocument& document, const Progress& progress) {
  ImportCounts counts;
  Steps steps(document, progress);
  RegistryTransaction transaction;
  for (const RegSection& section : document) {
    if (section.deletes_key) {
      counts.keys_deleted += DeleteTree(section.key);
      steps.Done();
    } else {
      ApplyValues(section, counts, steps);
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
