// Calling an object by name, as a script does.
#pragma once

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include "moxel/automation_error.h"
#include "moxel/variant.h"

namespace moxel {

// The number of a failing result as C++ sees it: runtime errors without their facility, all others as they
// are.
inline std::int32_t NumberOf(HRESULT result) {
  constexpr std::uint32_t kRuntimeErrors = 0x800A0000;
  auto bits = static_cast<std::uint32_t>(result);
  return (bits & 0xFFFF0000) == kRuntimeErrors ? static_cast<std::int32_t>(bits & 0xFFFF) : result;
}

// Throws what a failing call left in its EXCEPINFO.
[[noreturn]] inline void ThrowException(EXCEPINFO& exception) {
  if (exception.pfnDeferredFillIn) exception.pfnDeferredFillIn(&exception);
  auto take = [](BSTR& text) {
    Bstr owned;
    *owned.Receive() = std::exchange(text, nullptr);
    return std::u16string(owned.view());
  };
  std::u16string source = take(exception.bstrSource);
  std::u16string description = take(exception.bstrDescription);
  take(exception.bstrHelpFile);
  throw AutomationError(NumberOf(exception.scode != 0 ? exception.scode : exception.wCode), std::move(source),
                        std::move(description));
}

// Throws a failing result, described by the thread's error info where the call left one.
inline void ThrowIfFailed(HRESULT result) {
  if (SUCCEEDED(result)) return;
  ObjectPtr<IErrorInfo> info;
  if (GetErrorInfo(0, info.Receive()) != S_OK)
    throw AutomationError(NumberOf(result), u"MOXEL", u"Automation error");
  Bstr source;
  Bstr description;
  info->GetSource(source.Receive());
  info->GetDescription(description.Receive());
  throw AutomationError(NumberOf(result), std::u16string(source.view()), std::u16string(description.view()));
}

inline DISPID IdOf(IDispatch* object, std::u16string name) {
  SetErrorInfo(0, nullptr);
  OLECHAR* names[] = {name.data()};
  DISPID id = DISPID_UNKNOWN;
  ThrowIfFailed(object->GetIDsOfNames(GUID_NULL, names, 1, 0, &id));
  return id;
}

// Calls a member by its dispatch id. Throws the error that the object answers.
inline Variant CallById(IDispatch* object, DISPID id, WORD flags, DISPPARAMS parameters = {}) {
  // What an earlier call left must not describe a failure of this one.
  SetErrorInfo(0, nullptr);
  Variant result;
  EXCEPINFO exception{};
  HRESULT answer = object->Invoke(id, GUID_NULL, 0, flags, &parameters, &result, &exception, nullptr);
  if (answer == DISP_E_EXCEPTION) ThrowException(exception);
  ThrowIfFailed(answer);
  return result;
}

// Calls a member by its name, arguments in order. Throws the error that the object answers.
inline Variant CallByName(IDispatch* object, std::u16string name, WORD flags,
                          std::vector<Variant> arguments = {}) {
  std::reverse(arguments.begin(), arguments.end());
  return CallById(object, IdOf(object, std::move(name)), flags,
                  {arguments.data(), nullptr, static_cast<UINT>(arguments.size()), 0});
}

inline Variant GetProperty(IDispatch* object, std::u16string name) {
  return CallByName(object, std::move(name), DISPATCH_PROPERTYGET);
}

inline Variant CallMethod(IDispatch* object, std::u16string name, std::vector<Variant> arguments) {
  return CallByName(object, std::move(name), DISPATCH_METHOD, std::move(arguments));
}

// Makes a property hold an object, or none.
inline void PutReference(IDispatch* object, std::u16string name, IDispatch* value) {
  Variant argument(value);
  DISPID put = DISPID_PROPERTYPUT;
  CallById(object, IdOf(object, std::move(name)), DISPATCH_PROPERTYPUTREF, {&argument, &put, 1, 1});
}

// A walk over what an enumerator yields, once and in order: an input iterator that ends at
// std::default_sentinel.
class ElementIterator {
 public:
  using value_type = Variant;
  using difference_type = std::ptrdiff_t;

  explicit ElementIterator(ObjectPtr<IEnumVARIANT> enumerator) : enumerator_(std::move(enumerator)) {
    ++*this;
  }

  const Variant& operator*() const { return element_; }
  ElementIterator& operator++() {
    SetErrorInfo(0, nullptr);
    element_ = Variant();
    ULONG fetched = 0;
    const HRESULT answer = enumerator_->Next(1, &element_, &fetched);
    ThrowIfFailed(answer);
    at_end_ = answer != S_OK || fetched == 0;
    return *this;
  }
  void operator++(int) { ++*this; }
  bool operator==(std::default_sentinel_t) const { return at_end_; }

 private:
  ObjectPtr<IEnumVARIANT> enumerator_;
  Variant element_;
  bool at_end_ = false;
};

// What a collection holds, in its order, once: for (const Variant& element : Elements(collection)).
class Elements {
 public:
  // Throws when the object is no collection.
  explicit Elements(IDispatch* collection) {
    const Variant answer =
        CallById(collection, DISPID_NEWENUM, static_cast<WORD>(DISPATCH_METHOD | DISPATCH_PROPERTYGET));
    if (answer.vt == VT_UNKNOWN || answer.vt == VT_DISPATCH)
      enumerator_ = ObjectPtr<IEnumVARIANT>::Query(answer.punkVal);
    if (!enumerator_) throw AutomationError::TypeMismatch();
  }

  ElementIterator begin() const { return ElementIterator(enumerator_); }
  std::default_sentinel_t end() const { return {}; }

 private:
  ObjectPtr<IEnumVARIANT> enumerator_;
};

}  // namespace moxel
