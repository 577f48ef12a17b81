#include "component/boundary.h"

#include <cstring>
#include <limits>
#include <string>

namespace moxel::component {
namespace {

bool IsKnown(VARTYPE tag) {
  switch (tag) {
    case VT_EMPTY:
    case VT_NULL:
    case VT_I2:
    case VT_I4:
    case VT_R8:
    case VT_DATE:
    case VT_BSTR:
    case VT_DISPATCH:
    case VT_ERROR:
    case VT_BOOL: return true;
    default: return false;
  }
}

Variant FromInteger(std::int64_t number) {
  if (number >= std::numeric_limits<std::int32_t>::min() &&
      number <= std::numeric_limits<std::int32_t>::max())
    return static_cast<std::int32_t>(number);
  return static_cast<double>(number);
}

// An object must be one that can be called by name; no object stays none.
Variant FromObject(IUnknown* object) {
  auto callable = ObjectPtr<IDispatch>::Query(object);
  if (object && !callable) throw AutomationError::TypeMismatch();
  return callable.get();
}

// One of the known tags in the place of another one.
Variant ToKnown(const Variant& value) {
  switch (value.vt) {
    case VT_I1: return std::int16_t{static_cast<signed char>(value.cVal)};
    case VT_UI1: return std::int16_t{value.bVal};
    case VT_UI2: return std::int32_t{value.uiVal};
    case VT_INT: return value.intVal;
    case VT_UI4: return FromInteger(value.ulVal);
    case VT_UINT: return FromInteger(value.uintVal);
    case VT_I8: return FromInteger(value.llVal);
    case VT_UI8:
      return value.llVal >= 0 ? FromInteger(value.llVal) : Variant(static_cast<double>(value.ullVal));
    case VT_R4:
    case VT_CY:
    case VT_DECIMAL: return value.ToR8();
    case VT_UNKNOWN: return FromObject(value.punkVal);
    default: throw AutomationError::TypeMismatch();
  }
}

// The bytes of a variable that is passed by reference.
std::size_t SizeOf(VARTYPE tag) {
  switch (tag) {
    case VT_I1:
    case VT_UI1: return 1;
    case VT_I2:
    case VT_UI2:
    case VT_BOOL: return 2;
    case VT_I4:
    case VT_UI4:
    case VT_INT:
    case VT_UINT:
    case VT_R4:
    case VT_ERROR: return 4;
    default: return 8;
  }
}

}  // namespace

Incoming::Incoming(const VARIANT& bare) : bare_(&bare) {
  if (IsKnown(bare.vt)) return;
  converted_ = Variant::CopyOf(bare);
  if (!IsKnown(converted_->vt)) converted_ = ToKnown(*converted_);
}

void WriteBack(const VARIANT& argument, Variant value) {
  if (!(argument.vt & VT_BYREF) || !argument.byref) return;
  const auto tag = static_cast<VARTYPE>(argument.vt & ~VT_BYREF);
  if (tag == VT_VARIANT) {
    if (argument.pvarVal->vt & VT_BYREF) return WriteBack(*argument.pvarVal, std::move(value));
    static_cast<Variant&>(*argument.pvarVal) = std::move(value);
    return;
  }
  HRESULT converted = VariantChangeType(&value, &value, VARIANT_ALPHABOOL, tag);
  if (converted == DISP_E_OVERFLOW) throw AutomationError::Overflow();
  if (FAILED(converted) || tag == VT_DECIMAL) throw AutomationError::TypeMismatch();
  // The variable has no tag of its own: its old content is freed as a variant of its type.
  Variant old;
  std::memcpy(&old.llVal, argument.byref, SizeOf(tag));
  std::memcpy(argument.byref, &value.llVal, SizeOf(tag));
  old.vt = tag;
  value.Detach();
}

HRESULT WireNumber(std::int32_t number) {
  constexpr std::uint32_t kRuntimeErrors = 0x800A0000;
  if (number < 0) return number;
  if (number > 0xFFFF) return E_FAIL;
  return static_cast<HRESULT>(kRuntimeErrors + static_cast<std::uint32_t>(number));
}

HRESULT Report(const AutomationError& error, REFIID interface_id) noexcept {
  ObjectPtr<ICreateErrorInfo> info;
  if (SUCCEEDED(CreateErrorInfo(info.Receive()))) {
    info->SetGUID(interface_id);
    info->SetSource(const_cast<LPOLESTR>(error.source().c_str()));
    info->SetDescription(const_cast<LPOLESTR>(error.description().c_str()));
    SetErrorInfo(0, ObjectPtr<IErrorInfo>::Query(info.get()).get());
  }
  return WireNumber(error.number());
}

}  // namespace moxel::component
