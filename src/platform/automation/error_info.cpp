#include <atomic>
#include <new>
#include <utility>

#include "platform/automation/bstr.h"

namespace moxel {
namespace {

class ErrorInfo final : public ICreateErrorInfo, public IErrorInfo {
 public:
  HRESULT QueryInterface(REFIID riid, void** ppvObject) override {
    if (ppvObject == nullptr) return E_POINTER;
    *ppvObject = nullptr;
    if (riid == IID_IErrorInfo) {
      *ppvObject = static_cast<IErrorInfo*>(this);
    } else if (riid == IID_IUnknown || riid == IID_ICreateErrorInfo) {
      *ppvObject = static_cast<ICreateErrorInfo*>(this);
    } else {
      return E_NOINTERFACE;
    }
    AddRef();
    return S_OK;
  }

  ULONG AddRef() override { return ++references_; }

  ULONG Release() override {
    const ULONG left = --references_;
    if (left == 0) delete this;
    return left;
  }

  HRESULT SetGUID(REFGUID rguid) override {
    guid_ = rguid;
    return S_OK;
  }
  HRESULT SetSource(LPOLESTR szSource) override { return Keep(szSource, source_); }
  HRESULT SetDescription(LPOLESTR szDescription) override { return Keep(szDescription, description_); }
  HRESULT SetHelpFile(LPOLESTR szHelpFile) override { return Keep(szHelpFile, help_file_); }
  HRESULT SetHelpContext(DWORD dwHelpContext) override {
    help_context_ = dwHelpContext;
    return S_OK;
  }

  HRESULT GetGUID(GUID* pGUID) override {
    if (pGUID == nullptr) return E_POINTER;
    *pGUID = guid_;
    return S_OK;
  }
  HRESULT GetSource(BSTR* pBstrSource) override { return Give(source_, pBstrSource); }
  HRESULT GetDescription(BSTR* pBstrDescription) override { return Give(description_, pBstrDescription); }
  HRESULT GetHelpFile(BSTR* pBstrHelpFile) override { return Give(help_file_, pBstrHelpFile); }
  HRESULT GetHelpContext(DWORD* pdwHelpContext) override {
    if (pdwHelpContext == nullptr) return E_POINTER;
    *pdwHelpContext = help_context_;
    return S_OK;
  }

 private:
  static HRESULT Keep(LPCOLESTR text, OwnedBstr& field) {
    OwnedBstr copy(SysAllocString(text));
    if (text != nullptr && copy == nullptr) return E_OUTOFMEMORY;
    field = std::move(copy);
    return S_OK;
  }

  static HRESULT Give(const OwnedBstr& field, BSTR* target) {
    if (target == nullptr) return E_POINTER;
    *target = CopyBstr(field.get());
    return field != nullptr && *target == nullptr ? E_OUTOFMEMORY : S_OK;
  }

  std::atomic<ULONG> references_{1};
  GUID guid_ = GUID_NULL;
  OwnedBstr source_;
  OwnedBstr description_;
  OwnedBstr help_file_;
  DWORD help_context_ = 0;
};

// The thread's error object, owned. A bare pointer stays usable while the thread's other variables are being
// destroyed; the guard releases what is left at the thread's end.
thread_local IErrorInfo* current = nullptr;

IErrorInfo* Exchange(IErrorInfo* next) {
  struct Guard {
    ~Guard() {
      if (IErrorInfo* last = std::exchange(current, nullptr)) last->Release();
    }
  };
  if (next != nullptr) {
    thread_local Guard guard;
    (void)guard;
  }
  return std::exchange(current, next);
}

}  // namespace
}  // namespace moxel

HRESULT CreateErrorInfo(ICreateErrorInfo** pperrinfo) {
  if (pperrinfo == nullptr) return E_POINTER;
  *pperrinfo = new (std::nothrow) moxel::ErrorInfo;
  return *pperrinfo == nullptr ? E_OUTOFMEMORY : S_OK;
}

HRESULT SetErrorInfo(ULONG dwReserved, IErrorInfo* perrinfo) {
  if (dwReserved != 0) return E_INVALIDARG;
  if (perrinfo != nullptr) perrinfo->AddRef();
  if (IErrorInfo* previous = moxel::Exchange(perrinfo)) previous->Release();
  return S_OK;
}

HRESULT GetErrorInfo(ULONG dwReserved, IErrorInfo** pperrinfo) {
  if (pperrinfo == nullptr) return E_INVALIDARG;
  *pperrinfo = nullptr;
  if (dwReserved != 0) return E_INVALIDARG;
  *pperrinfo = moxel::Exchange(nullptr);
  return *pperrinfo == nullptr ? S_FALSE : S_OK;
}
