// Moves whole parts of the registry to and from .reg text.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "moxel/reg_document.h"
#include "moxel/reg_writer.h"

namespace moxel::tool {

// What an import did. Deletions count what really was there.
struct ImportCounts {
  size_t keys_set = 0;
  size_t values_set = 0;
  size_t keys_deleted = 0;
  size_t values_deleted = 0;
};

// Told after each step how many of all are done.
using Progress = std::function<void(size_t done, size_t total)>;

// Applies all changes in their order, in one transaction: other programs see all of them or, when ToolError
// is thrown, none.
ImportCounts ImportDocument(const RegDocument& document, const Progress& progress = {});

// The .reg file of a key with all below it; nothing when the key does not exist.
std::optional<std::string> ExportTree(const KeyPath& key, RegFormat format);

}  // namespace moxel::tool
