// Bytes as a .reg file. What is malformed is refused at a line of the file; what is not says the same after
// it was written in either format and read again, and goes into the registry whole or not at all.
#include <set>

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

// Of values set more than once, the last one stands.
void CheckValues(const RegDocument& document) {
  std::set<std::u16string> later;
  for (auto section = document.rbegin(); section != document.rend(); ++section)
    for (auto change = section->values.rbegin(); change != section->values.rend(); ++change) {
      const std::string classes = section->key.hive == HKEY_CLASSES_ROOT ? "SOFTWARE\\Classes\\" : "";
      if (!later.insert(Folded(classes + section->key.path + "\n" + change->name)).second) continue;
      tool::RegData expected = *change->data;
      if (expected.type == REG_SZ && !expected.bytes.empty() && expected.bytes.back() != '\0')
        expected.bytes += '\0';
      const auto key = tool::RegistryKey::Open(section->key, KEY_QUERY_VALUE);
      Require(key.has_value(), "an imported key is there");
      const std::vector<tool::RegistryValue> values = key->Values();
      Require(std::any_of(values.begin(), values.end(),
                          [&](const tool::RegistryValue& value) {
                            return Folded(value.name) == Folded(change->name) && value.data == expected;
                          }),
              "an imported value is there");
    }
}

bool IsEmpty() {
  const auto root = tool::RegistryKey::Open({}, KEY_READ);
  return !root->FirstSubkeyName() && root->Values().empty();
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
  try {
    const tool::ImportCounts counts = tool::ImportDocument(document);
    std::size_t keys = 0;
    for (const tool::RegSection& section : document) keys += section.deletes_key ? 0 : 1;
    RequireEqual(counts.keys_set, keys, "keys set");
    if (WithoutDeletions(document) == document) CheckValues(document);
    Empty();
  } catch (const tool::ToolError& error) {
    Require(error.what()[0] != '\0', "a refusal has a reason");
  }
  Require(IsEmpty(), "a refused import leaves nothing");
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
