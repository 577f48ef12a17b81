#pragma once

#include <filesystem>
#include <string>

#include "moxel/object_ptr.h"
#include "moxel/platform.h"

namespace moxel::tool {

// The component's library, loaded for as long as this object lives.
class ComponentLibrary {
 public:
  // The one installed with this program (../lib beside the program's own folder), else the one the loader
  // finds.
  static ComponentLibrary Find();

  // Throws ToolError with the loader's reason when the library cannot be loaded.
  explicit ComponentLibrary(const std::filesystem::path& file);
  ComponentLibrary(ComponentLibrary&& other) noexcept;
  ComponentLibrary& operator=(ComponentLibrary&&) = delete;
  ~ComponentLibrary();

  // Calls an export of the form HRESULT(void). Throws ToolError when there is none or when its result is a
  // failure.
  void Call(const std::string& name) const;

  // A new object of a creatable class, for calls by name. Throws ToolError when there is none,
  // AutomationError when its creation fails.
  ObjectPtr<IDispatch> Create(REFCLSID class_id) const;

 private:
  void* Export(const std::string& name) const;

  std::filesystem::path file_;
  void* module_;
};

}  // namespace moxel::tool
