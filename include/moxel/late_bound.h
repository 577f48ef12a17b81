// Calling an object by name, as a script does.
#pragma once

#include <string>

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

// Throws a failing result that came without any description.
inline void ThrowIfFailed(HRESULT result) {
  if (FAILED(result)) throw AutomationError(NumberOf(result), u"MOXEL", u"Automation error");
}

// Reads a property without arguments. Throws the error that the object answers.
inline Variant GetProperty(IDispatch* object, std::u16string name) {
  OLECHAR* names[] = {name.data()};
  DISPID id = DISPID_UNKNOWN;
  ThrowIfFailed(object->GetIDsOfNames(GUID_NULL, names, 1, 0, &id));
  Variant result;
  DISPPARAMS no_arguments{};
  EXCEPINFO exception{};
  HRESULT answer =
      object->Invoke(id, GUID_NULL, 0, DISPATCH_PROPERTYGET, &no_arguments, &result, &exception, nullptr);
  if (answer == DISP_E_EXCEPTION) ThrowException(exception);
  ThrowIfFailed(answer);
  return result;
}

}  // namespace moxel
