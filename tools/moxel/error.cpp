#include "moxel/error.h"

#include <system_error>

#include "moxel/platform/registry_file.h"

namespace moxel::tool {
namespace {

std::string StatusText(LSTATUS status) {
  switch (status) {
    case ERROR_FILE_NOT_FOUND: return "not found";
    case ERROR_PATH_NOT_FOUND: return "path not found";
    case ERROR_ACCESS_DENIED: return "access denied";
    case ERROR_OUTOFMEMORY: return "out of memory";
    case ERROR_INVALID_PARAMETER: return "invalid name or argument";
    case ERROR_DISK_FULL: return "disk full";
    case ERROR_BAD_PATHNAME: return "invalid key path";
    case ERROR_BUSY: return "the registry file is locked by another program";
    case ERROR_BADDB: return "the registry file is damaged or of another kind";
    case ERROR_REGISTRY_IO_FAILED: return "reading or writing the registry file failed";
    case ERROR_KEY_DELETED: return "the key was deleted meanwhile";
    default: return "error " + std::to_string(status);
  }
}

}  // namespace

ToolError ToolError::Registry(const std::string& what, LSTATUS status) {
  const std::string cause = RegFileCause();
  return ToolError(what + ": " + (cause.empty() ? StatusText(status) : cause));
}

ToolError ToolError::System(const std::string& what, int error) {
  return ToolError(what + ": " + std::generic_category().message(error));
}

}  // namespace moxel::tool
