// Bytes as a .reg file. What is malformed is refused at a line of the file; what is not says the same after
// it was written in either format and read again.
#include "fuzz/input.h"
#include "moxel/reg_reader.h"
#include "moxel/reg_writer.h"

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

}  // namespace
}  // namespace moxel::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace moxel::fuzz;
  using moxel::tool::RegFormat;
  const std::string_view file(reinterpret_cast<const char*>(data), size);
  RegDocument document;
  try {
    document = WithoutDeletions(moxel::tool::ReadRegFile(file));
  } catch (const moxel::tool::RegSyntaxError& error) {
    CheckPlace(error, file);
    return 0;
  }
  for (const RegFormat format : {RegFormat::kRegedit4, RegFormat::kRegedit5})
    Require(moxel::tool::ReadRegFile(Write(document, format)) == document,
            "a document survives writing and reading");
  return 0;
}
