// Bytes as a .reg file. What is malformed is refused at a line of the file; what is not says the same after
// it was written in either format and read again, and the registry holds exactly that after an import.
#include "fuzz/input.h"
#include "fuzz/registry_model.h"
#include "fuzz/temp_registry.h"
#include "moxel/platform/registry_file.h"
#include "moxel/reg_reader.h"
#include "moxel/reg_transfer.h"
#include "moxel/reg_writer.h"
#include "moxel/registry_key.h"

namespace moxel::fuzz {
namespace {

using tool::RegDocument;

// The writer knows keys and values, but no deletions.
RegDocument WithoutDeletions(RegDocument document) {
  std::erase_if(document, [](const tool::RegSection& section) { return section.deletes_key; });
  for (tool::RegSection& section : document)
    std::erase_if(section.values, [](const tool::RegValueChange& value) { return !value.data; });
  return document;
}

std::string Write(const RegDocument& document, tool::RegFormat format) {
  tool::RegWriter writer(format);
  for (const tool::RegSection& section : document) {
    writer.AddKey(section.key);
    for (const tool::RegValueChange& value : section.values) writer.AddValue(value.name, *value.data);
  }
  return writer.File();
}

// A line end is a character of one byte at least.
void CheckPlace(const tool::RegSyntaxError& error, std::string_view file) {
  Require(error.line() >= 1 && error.line() <= file.size() + 1, "the place of an error is in the file");
  Require(error.what()[0] != '\0', "an error has a reason");
}

void DeleteTree(Tree& tree, KeyId key) {
  const auto subkeys = tree.Find(key)->subkeys;
  for (const auto& [name, below] : subkeys) DeleteTree(tree, below);
  tree.Delete(key);
}

// What an import makes of an empty registry.
Tree Imported(const RegDocument& document) {
  Tree tree;
  for (const tool::RegSection& section : document) {
    const std::string path = (section.key.hive == HKEY_CLASSES_ROOT ? kClasses : "") + section.key.path;
    if (section.deletes_key) {
      if (const KeyId key = tree.Walk(kRoot, path); key != kNoKey) DeleteTree(tree, key);
      continue;
    }
    Key& key = *tree.Find(tree.Create(kRoot, path));
    for (const tool::RegValueChange& change : section.values)
      if (change.data)
        key.Set(change.name, change.data->type, change.data->bytes);
      else if (key.Has(change.name))
        key.values.erase(key.FindValue(change.name));
  }
  return tree;
}

void Describe(Tree& tree, KeyId id, const tool::KeyPath& path, RegDocument& document) {
  document.push_back({path, false, {}});
  for (const StoredValue& value : tree.Find(id)->values)
    document.back().values.push_back({value.name, tool::RegData{value.type, value.data}});
  for (const auto& [folded, below] : tree.Find(id)->subkeys)
    Describe(tree, below, path.Child(tree.Find(below)->name), document);
}

// All that the registry holds.
RegDocument Held() {
  RegDocument held;
  tool::WalkTree({}, [&](const tool::RegistryKey& key) {
    held.push_back({key.path(), false, {}});
    for (const tool::RegistryValue& value : key.Values())
      held.back().values.push_back({value.name, value.data});
  });
  return held;
}

void Empty() {
  tool::RegistryTransaction transaction;
  const auto root = tool::RegistryKey::Open({}, KEY_ALL_ACCESS);
  for (const std::string& name : root->SubkeyNames()) tool::DeleteTree({HKEY_LOCAL_MACHINE, name});
  for (const tool::RegistryValue& value : root->Values()) root->DeleteValue(value.name);
  transaction.Commit();
}

void Import(const RegDocument& document) {
  static const TempRegistry registry;
  const tool::ImportCounts counts = tool::ImportDocument(document);
  std::size_t keys = 0;
  for (const tool::RegSection& section : document) keys += section.deletes_key ? 0 : 1;
  RequireEqual(counts.keys_set, keys, "keys set");
  RegDocument expected;
  Tree tree = Imported(document);
  Describe(tree, kRoot, {}, expected);
  Require(Held() == expected, "an import leaves what the document says");
  Empty();
  RequireEqual(RegFileCheck(), 0, "RegFileCheck");
}

}  // namespace
}  // namespace moxel::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace moxel::fuzz;
  using moxel::tool::RegFormat;
  const std::string_view file(reinterpret_cast<const char*>(data), size);
  RegDocument document;
  try {
    document = moxel::tool::ReadRegFile(file);
  } catch (const moxel::tool::RegSyntaxError& error) {
    CheckPlace(error, file);
    return 0;
  }
  // An import costs as much as a hundred readings. The first inputs are the corpus, or what failed before.
  static int inputs = 0;
  if (++inputs < 1000 || inputs % 64 == 0) Import(document);
  document = WithoutDeletions(std::move(document));
  for (const RegFormat format : {RegFormat::kRegedit4, RegFormat::kRegedit5})
    Require(moxel::tool::ReadRegFile(Write(document, format)) == document,
            "a document survives writing and reading");
  return 0;
}
