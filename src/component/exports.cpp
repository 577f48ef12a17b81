#include <new>

#include "component/class_factory.h"
#include "component/module.h"
#include "component/registration.h"
#include "moxel/component.h"

using namespace moxel::component;

namespace {

template <class Change>
HRESULT ChangeRegistration(Change change) {
  try {
    return change() ? S_OK : SELFREG_E_CLASS;
  } catch (const std::bad_alloc&) {
    return E_OUTOFMEMORY;
  }
}

}  // namespace

HRESULT DllGetClassObject(REFCLSID rclsid, REFIID riid, void** ppv) {
  if (!ppv) return E_POINTER;
  *ppv = nullptr;
  for (const CreatableClass& creatable : CreatableClasses())
    if (*creatable.info().clsid == rclsid) return CreateFactory(creatable, riid, ppv);
  return CLASS_E_CLASSNOTAVAILABLE;
}

HRESULT DllCanUnloadNow() { return IsModuleInUse() ? S_FALSE : S_OK; }

HRESULT DllRegisterServer() { return ChangeRegistration(Register); }

HRESULT DllUnregisterServer() { return ChangeRegistration(Unregister); }
