#include "component/class_factory.h"

#include <atomic>

#include "component/boundary.h"
#include "component/module.h"
#include "registry/settings.h"

namespace moxel::component {
namespace {

// Points the thread at the product's root before its first object. One that failed is run again at the next
// creation.
void StartThread() {
  thread_local bool started = false;
  if (started) return;
  Main();
  started = true;
}

class ClassFactory final : public IClassFactory {
 public:
  explicit ClassFactory(const CreatableClass& creatable) : creatable_(creatable) {}

  HRESULT QueryInterface(REFIID riid, void** ppvObject) override {
    if (!ppvObject) return E_POINTER;
    *ppvObject = nullptr;
    if (!(riid == IID_IUnknown || riid == IID_IClassFactory)) return E_NOINTERFACE;
    *ppvObject = static_cast<IClassFactory*>(this);
    AddRef();
    return S_OK;
  }

  ULONG AddRef() override { return references_.fetch_add(1) + 1; }

  ULONG Release() override {
    ULONG left = references_.fetch_sub(1) - 1;
    if (left == 0) delete this;
    return left;
  }

  HRESULT CreateInstance(IUnknown* pUnkOuter, REFIID riid, void** ppvObject) override {
    if (!ppvObject) return E_POINTER;
    *ppvObject = nullptr;
    if (pUnkOuter) return CLASS_E_NOAGGREGATION;
    HRESULT found = E_NOINTERFACE;
    HRESULT status = Answer(IID_IClassFactory, [&] {
      StartThread();
      found = creatable_.create()->QueryInterface(riid, ppvObject);
    });
    return FAILED(status) ? status : found;
  }

  HRESULT LockServer(BOOL fLock) override {
    fLock ? LockModule() : UnlockModule();
    return S_OK;
  }

 private:
  const CreatableClass& creatable_;
  ModuleLock lock_;
  std::atomic<ULONG> references_{1};
};

}  // namespace

HRESULT CreateFactory(const CreatableClass& creatable, REFIID riid, void** result) {
  auto factory = ObjectPtr<IClassFactory>::Adopt(new (std::nothrow) ClassFactory(creatable));
  return factory ? factory->QueryInterface(riid, result) : E_OUTOFMEMORY;
}

}  // namespace moxel::component
