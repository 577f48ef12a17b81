// The exports of the component.
#pragma once

#include "moxel/platform.h"

#pragma GCC visibility push(default)
extern "C" {

// The class factory of `Root` or `RootVar`. CLASS_E_CLASSNOTAVAILABLE for any other class.
HRESULT DllGetClassObject(REFCLSID rclsid, REFIID riid, void** ppv);
// S_OK when no object and no lock is left, else S_FALSE.
HRESULT DllCanUnloadNow(void);
// Writes, respectively removes, the component's keys below "SOFTWARE\Classes". SELFREG_E_CLASS when the
// registry refused.
HRESULT DllRegisterServer(void);
HRESULT DllUnregisterServer(void);

}  // extern "C"
#pragma GCC visibility pop
