#include "moxel/component_library.h"

#include <dlfcn.h>

#include <cstdio>
#include <utility>

#include "moxel/component.h"
#include "moxel/error.h"
#include "moxel/late_bound.h"
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

void* ComponentLibrary::Export(const std::string& name) const {
  void* function = ::dlsym(module_, name.c_str());
  if (!function) throw ToolError(file_.string() + ": " + LoaderError());
  return function;
}

void ComponentLibrary::Call(const std::string& name) const {
  const auto function = reinterpret_cast<HRESULT (*)()>(Export(name));
  const HRESULT result = function();
  if (FAILED(result)) throw ToolError(file_.string() + ": " + name + " failed: " + ResultText(result));
}

ObjectPtr<IDispatch> ComponentLibrary::Create(REFCLSID class_id) const {
  const auto get_class = reinterpret_cast<decltype(&DllGetClassObject)>(Export("DllGetClassObject"));
  ObjectPtr<IClassFactory> factory;
  const HRESULT found = get_class(class_id, IID_IClassFactory, factory.ReceiveAny());
  if (FAILED(found)) throw ToolError(file_.string() + ": no class factory: " + ResultText(found));
  ObjectPtr<IDispatch> object;
  ThrowIfFailed(factory->CreateInstance(nullptr, IID_IDispatch, object.ReceiveAny()));
  return object;
}

}  // namespace moxel::tool
