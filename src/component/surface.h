// The object that clients hold: a class of the object model together with its dual interface, IDispatch over
// its table, its reference count and its identity.
#pragma once

#include <atomic>
#include <concepts>
#include <functional>
#include <type_traits>

#include "component/boundary.h"
#include "component/class_info.h"
#include "component/dispatch.h"
#include "component/module.h"
#include "component/type_library.h"
#include "moxel/interfaces.h"
#include "platform/automation/own_object.h"

namespace moxel::component {

namespace detail {

// A slot's argument as the object model takes it. Null where a reference is needed: NullPointer.
template <class T>
T& Dereference(T* reference) {
  if (!reference) throw NullPointer();
  return *reference;
}

class IncomingValue {
 public:
  explicit IncomingValue(const VARIANT& value) : incoming_(value) {}
  explicit IncomingValue(const VARIANT* value) : incoming_(Dereference(value)) {}
  operator const Variant&() const { return incoming_.value(); }

 private:
  Incoming incoming_;
};

class IncomingText {
 public:
  explicit IncomingText(BSTR text) : text_(ViewOf(text)) {}
  explicit IncomingText(BSTR* text) : text_(ViewOf(Dereference(text))) {}
  operator const std::u16string&() const { return text_; }

 private:
  std::u16string text_;
};

inline IncomingValue Take(const VARIANT& value) { return IncomingValue(value); }
inline IncomingValue Take(VARIANT* value) { return IncomingValue(value); }
inline IncomingText Take(BSTR text) { return IncomingText(text); }
inline IncomingText Take(BSTR* text) { return IncomingText(text); }
inline SHORT Take(SHORT number) { return number; }
inline SHORT Take(SHORT* number) { return Dereference(number); }
inline LONG Take(LONG number) { return number; }
inline IDispatch* Take(IDispatch* object) { return object; }

// An object of the component as a client passes it, who holds it for the time of the call.
class IncomingObject {
 public:
  explicit IncomingObject(IUnknown* object) : object_(object) {}

  // Null: no object.
  template <std::derived_from<IUnknown> Logic>
  operator Logic*() const {
    return OwnObject<std::remove_const_t<Logic>>(object_).get();
  }

  template <std::derived_from<IUnknown> Logic>
  operator Logic&() const {
    if (!object_) throw NullPointer();
    return *static_cast<Logic*>(*this);
  }

 private:
  IUnknown* object_;
};

template <std::derived_from<IDispatch> Interface>
IncomingObject Take(Interface* object) {
  return IncomingObject(object);
}
template <std::derived_from<IDispatch> Interface>
IncomingObject Take(Interface** object) {
  return IncomingObject(Dereference(object));
}

// A result of the object model as a slot hands it over.
inline void Give(std::int16_t value, SHORT* result) { *result = value; }
inline void Give(std::int32_t value, LONG* result) { *result = value; }
inline void Give(const std::u16string& value, BSTR* result) { *result = Bstr(value).Detach(); }
inline void Give(Variant value, VARIANT* result) { *result = value.Detach(); }
template <class T, class Interface>
void Give(ObjectPtr<T> value, Interface** result) {
  *result = value.Detach();
}

}  // namespace detail

// `Logic` derives from `Interface` and leaves its slots open; a final class derives from Surface and forwards
// each slot with Forward, Perform or Assign.
template <class Logic, class Interface, const ClassInfo& (*Info)()>
class Surface : public Logic, public ISupportErrorInfo {
 public:
  HRESULT QueryInterface(REFIID riid, void** ppvObject) final {
    if (!ppvObject) return E_POINTER;
    *ppvObject = nullptr;
    if (riid == IID_IUnknown || riid == IID_IDispatch || riid == interface_id<Interface>)
      *ppvObject = static_cast<Interface*>(this);
    else if (riid == IID_ISupportErrorInfo)
      *ppvObject = static_cast<ISupportErrorInfo*>(this);
    else if (riid == OwnObjectId(interface_id<Interface>))
      *ppvObject = static_cast<Logic*>(this);
    else
      return E_NOINTERFACE;
    AddRef();
    return S_OK;
  }

  ULONG AddRef() final { return references_.fetch_add(1, std::memory_order_relaxed) + 1; }

  ULONG Release() final {
    ULONG left = references_.fetch_sub(1, std::memory_order_acq_rel) - 1;
    if (left == 0) delete this;
    return left;
  }

  HRESULT GetTypeInfoCount(UINT* pctinfo) final {
    if (!pctinfo) return E_POINTER;
    *pctinfo = 1;
    return S_OK;
  }

  HRESULT GetTypeInfo(UINT iTInfo, LCID, ITypeInfo** ppTInfo) final {
    if (!ppTInfo) return E_POINTER;
    *ppTInfo = nullptr;
    if (iTInfo != 0) return DISP_E_BADINDEX;
    return Answer(interface_id<Interface>, [&] { *ppTInfo = TypeInfoOf(Info()); });
  }

  HRESULT GetIDsOfNames(REFIID riid, LPOLESTR* rgszNames, UINT cNames, LCID, DISPID* rgDispId) final {
    return FindIds(Info(), riid, rgszNames, cNames, rgDispId);
  }

  HRESULT Invoke(DISPID dispIdMember, REFIID riid, LCID, WORD wFlags, DISPPARAMS* pDispParams,
                 VARIANT* pVarResult, EXCEPINFO* pExcepInfo, UINT* puArgErr) final {
    return component::Invoke(Info(), static_cast<Interface*>(this), dispIdMember, riid, wFlags, pDispParams,
                             pVarResult, pExcepInfo, puArgErr);
  }

  HRESULT InterfaceSupportsErrorInfo(REFIID riid) final {
    return riid == interface_id<Interface> || riid == IID_IDispatch ? S_OK : S_FALSE;
  }

 protected:
  virtual ~Surface() = default;

  // Calls a member of the object model, or reads a field of it, and hands its result over.
  template <auto Called, class Result, class... Arguments>
  HRESULT Forward(Result* result, Arguments... arguments) noexcept {
    if (!result) return E_POINTER;
    *result = Result{};
    return Answer(interface_id<Interface>, [&] {
      detail::Give(std::invoke(Called, static_cast<Logic&>(*this), detail::Take(arguments)...), result);
    });
  }

  // Calls a member without a result.
  template <auto Called, class... Arguments>
  HRESULT Perform(Arguments... arguments) noexcept {
    return Answer(interface_id<Interface>,
                  [&] { std::invoke(Called, static_cast<Logic&>(*this), detail::Take(arguments)...); });
  }

  // Assigns a public field.
  template <auto Field, class Argument>
  HRESULT Assign(Argument argument) noexcept {
    return Answer(interface_id<Interface>,
                  [&] { static_cast<Logic&>(*this).*Field = detail::Take(argument); });
  }

 private:
  ModuleLock lock_;
  std::atomic<ULONG> references_{1};
};

// A new object, held by its creator alone.
template <class SurfaceClass, class Logic>
ObjectPtr<Logic> New() {
  return ObjectPtr<Logic>::Adopt(new SurfaceClass);
}

}  // namespace moxel::component
