#pragma once

#include <filesystem>
#include <istream>
#include <string>
#include <string_view>

namespace moxel::tool {

// The whole of a file. Throws ToolError.
std::string ReadFile(const std::filesystem::path& path);
// The same of a stream, which `name` stands for in the error.
std::string ReadStream(std::istream& stream, const std::string& name);

// Replaces a file in one step: a reader finds the old bytes or the new ones, and a failure leaves the old
// ones. What is no regular file (a pipe, a device) is simply written to. Throws ToolError.
void WriteFile(const std::filesystem::path& path, std::string_view bytes);

}  // namespace moxel::tool
