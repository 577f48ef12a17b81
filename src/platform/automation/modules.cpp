#include <dlfcn.h>
#include <link.h>
#include <stdlib.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <string>

#include "moxel/platform.h"

namespace moxel {
namespace {

constexpr char kExecutable[] = "/proc/self/exe";

struct Module {
  void* base;
  std::string file;  // as it was loaded
};

std::optional<Module> ModuleAt(const void* address) {
  Dl_info info{};
  void* map = nullptr;
  if (address == nullptr || ::dladdr1(address, &info, &map, RTLD_DL_LINKMAP) == 0) return std::nullopt;
  // The executable is the module without a name of its own; what it was started as may be relative to another
  // folder.
  const bool is_executable = map != nullptr && *static_cast<const link_map*>(map)->l_name == '\0';
  return Module{info.dli_fbase, is_executable ? kExecutable : info.dli_fname};
}

std::string FullPath(const std::string& file) {
  const std::unique_ptr<char, decltype(&::free)> resolved(::realpath(file.c_str(), nullptr), &::free);
  return resolved == nullptr ? file : resolved.get();
}

}  // namespace
}  // namespace moxel

BOOL GetModuleHandleExA(DWORD dwFlags, LPCSTR lpModuleName, HMODULE* phModule) try {
  if (phModule == nullptr) return 0;
  *phModule = nullptr;
  if ((dwFlags & GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS) == 0) return 0;
  const auto module = moxel::ModuleAt(lpModuleName);
  if (!module) return 0;
  *phModule = module->base;
  return 1;
} catch (...) {
  return 0;
}

DWORD GetModuleFileNameA(HMODULE hModule, LPSTR lpFilename, DWORD nSize) try {
  using namespace moxel;
  if (lpFilename == nullptr || nSize == 0) return 0;
  std::string file = kExecutable;
  if (hModule != nullptr) {
    const auto module = ModuleAt(hModule);
    if (!module) return 0;
    file = module->file;
  }
  const std::string path = FullPath(file);
  // A path that does not fit is cut off, and the answer is then the whole buffer's size.
  const std::size_t copied = std::min<std::size_t>(path.size(), nSize - 1);
  *std::copy_n(path.begin(), copied, lpFilename) = '\0';
  return static_cast<DWORD>(copied < path.size() ? nSize : copied);
} catch (...) {
  return 0;
}
