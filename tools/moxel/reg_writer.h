#pragma once

#include <string>
#include <string_view>

#include "moxel/reg_document.h"

namespace moxel::tool {

enum class RegFormat {
  kRegedit4,  // code page 1252
  kRegedit5,  // UTF-16LE with a byte order mark
};

// Builds a .reg file, CRLF at line ends, which the platform's own tools read. Reading it back gives every
// name and every byte of data again. Call AddKey, then AddValue for each value of that key.
class RegWriter {
 public:
  explicit RegWriter(RegFormat format) : format_(format) {}

  // Throws ToolError for a key name that holds a line break: the format has no way to write it.
  void AddKey(const KeyPath& key);
  void AddValue(std::string_view name, const RegData& data);

  // The bytes of the file.
  std::string File() const;

 private:
  void AddBytes(std::string_view prefix, std::string_view bytes);

  RegFormat format_;
  std::string body_;  // code page 1252 in both formats
};

}  // namespace moxel::tool
