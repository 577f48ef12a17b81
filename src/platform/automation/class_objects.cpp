#include <dlfcn.h>
#include <unistd.h>

#include <map>
#include <mutex>
#include <string>

#include "moxel/platform.h"
#include "platform/automation/class_registry.h"

namespace moxel {
namespace {

using GetClassObjectFunction = HRESULT (*)(REFCLSID, REFIID, void**);

// The libraries of the classes in use, by path. They stay loaded to the end of the process, since nobody can
// tell when the last of their objects is gone.
class ServerLibraries {
 public:
  // Sets `entry`, or answers CO_E_DLLNOTFOUND or CO_E_ERRORINDLL.
  HRESULT Load(const std::string& path, GetClassObjectFunction& entry) {
    {
      const std::lock_guard lock(mutex_);
      if (const auto known = entries_.find(path); known != entries_.end()) {
        entry = known->second;
        return S_OK;
      }
    }
    // Not under the lock: the start-up code of a library may ask for classes itself.
    void* library = path.empty() ? nullptr : ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) return ::access(path.c_str(), F_OK) == 0 ? CO_E_ERRORINDLL : CO_E_DLLNOTFOUND;
    entry = reinterpret_cast<GetClassObjectFunction>(::dlsym(library, "DllGetClassObject"));
    if (entry == nullptr) {
      ::dlclose(library);
      return CO_E_ERRORINDLL;
    }
    const std::lock_guard lock(mutex_);
    if (!entries_.emplace(path, entry).second) ::dlclose(library);
    return S_OK;
  }

 private:
  std::mutex mutex_;
  std::map<std::string, GetClassObjectFunction> entries_;
};

ServerLibraries& Libraries() {
  static auto& libraries = *new ServerLibraries;
  return libraries;
}

std::string ClassPath(REFCLSID clsid) {
  char16_t text[39];
  StringFromGUID2(clsid, text, std::size(text));
  return "CLSID\\" + std::string(text, text + 38);
}

}  // namespace
}  // namespace moxel

HRESULT CoGetClassObject(REFCLSID rclsid, DWORD dwClsContext, void*, REFIID riid, void** ppv) try {
  using namespace moxel;
  if (ppv == nullptr) return E_POINTER;
  *ppv = nullptr;
  if ((dwClsContext & CLSCTX_INPROC_SERVER) == 0) return REGDB_E_CLASSNOTREG;
  const auto path = ReadClassValue(ClassPath(rclsid) + "\\InprocServer32");
  if (!path) return REGDB_E_CLASSNOTREG;
  GetClassObjectFunction get_class_object = nullptr;
  if (const HRESULT result = Libraries().Load(*path, get_class_object); FAILED(result)) return result;
  return get_class_object(rclsid, riid, ppv);
} catch (const std::bad_alloc&) {
  return E_OUTOFMEMORY;
} catch (...) {
  return E_UNEXPECTED;
}

HRESULT CoCreateInstance(REFCLSID rclsid, IUnknown* pUnkOuter, DWORD dwClsContext, REFIID riid,
                         void** ppv) try {
  if (ppv == nullptr) return E_POINTER;
  *ppv = nullptr;
  void* found = nullptr;
  const HRESULT result = CoGetClassObject(rclsid, dwClsContext, nullptr, IID_IClassFactory, &found);
  if (FAILED(result)) return result;
  if (found == nullptr) return E_UNEXPECTED;
  auto* factory = static_cast<IClassFactory*>(found);
  const HRESULT created = factory->CreateInstance(pUnkOuter, riid, ppv);
  factory->Release();
  return created;
} catch (...) {
  return E_UNEXPECTED;
}
