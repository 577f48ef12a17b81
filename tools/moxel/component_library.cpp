#include "moxel/component_library.h"

#include <dlfcn.h>

#include <cstdio>
#include <utility>

#include "moxel/error.h"
#include "moxel/platform/registry_file.h"

namespace moxel::tool {
namespace {

constexpr const char* kLibrary = "libmoxel.so";

std::string LoaderError() {
  const char* error = ::dlerror();
  return error ? error : "unknown error of the loader";
}

std::string ResultText(HRESULT result) {
  char text[16];
  std::snprintf(text, sizeof text, "0x%08X", static_cast<unsigned>(result));
  const std::string cause = RegFileCause();
  return cause.empty() ? text : text + std::string(" (") + cause + ")";
}

}  // namespace

ComponentLibrary ComponentLibrary::Find() {
  std::error_code ignored;
  const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", ignored);
  const std::filesystem::path installed = program.parent_path().parent_path() / "lib" / kLibrary;
  return ComponentLibrary(std::filesystem::exists(installed, ignored) ? installed
                                                                      : std::filesystem::path(kLibrary));
}

ComponentLibrary::ComponentLibrary(const std::filesystem::path& file)
    : file_(file), module_(::dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL)) {
  if (!module_) throw ToolError("cannot load " + file.string() + ": " + LoaderError());
}

ComponentLibrary::ComponentLibrary(ComponentLibrary&& other) noexcept
    : file_(std::move(other.file_)), module_(std::exchange(other.module_, nullptr)) {}

ComponentLibrary::~ComponentLibrary() {
  if (module_) ::dlclose(module_);
}

void ComponentLibrary::Call(const std::string& name) const {
  const auto function = reinterpret_cast<HRESULT (*)()>(::dlsym(module_, name.c_str()));
  if (!function) throw ToolError(file_.string() + ": " + LoaderError());
  const HRESULT result = function();
  if (FAILED(result)) throw ToolError(file_.string() + ": " + name + " failed: " + ResultText(result));
}

}  // namespace moxel::tool
