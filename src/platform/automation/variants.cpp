#include "platform/automation/variants.h"

#include "platform/automation/bstr.h"

namespace moxel {
namespace {

// The bytes a by-reference variant with this tag refers to; 0 for a tag no value can have.
std::size_t ValueSize(unsigned tag) {
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
    case VT_I8:
    case VT_UI8:
    case VT_R8:
    case VT_CY:
    case VT_DATE: return 8;
    case VT_BSTR:
    case VT_DISPATCH:
    case VT_UNKNOWN: return sizeof(void*);
    case VT_DECIMAL: return sizeof(DECIMAL);
    default: return 0;
  }
}

bool IsHeldTag(unsigned tag) { return tag == VT_EMPTY || tag == VT_NULL || ValueSize(tag) != 0; }

bool IsSupported(VARTYPE tag) {
  if ((tag & VT_BYREF) == 0) return IsHeldTag(tag);
  const unsigned base = tag & ~unsigned{VT_BYREF};
  return base == VT_VARIANT || ValueSize(base) != 0;
}

// The tag must be that of a reference to a value.
void Fetch(const VARIANT& reference, VARIANT& value) {
  const unsigned tag = reference.vt & ~unsigned{VT_BYREF};
  const void* referred = reference.byref;
  value = VARIANT{};
  if (tag == VT_DECIMAL) {
    std::memcpy(static_cast<void*>(&value), referred, sizeof(DECIMAL));
  } else {
    std::memcpy(&value.llVal, referred, ValueSize(tag));
  }
  value.vt = static_cast<VARTYPE>(tag);
}

IUnknown* Object(const VARIANT& value) {
  if (value.vt == VT_DISPATCH) return value.pdispVal;
  return value.vt == VT_UNKNOWN ? value.punkVal : nullptr;
}

// Copies the content; a reference is followed only if asked for.
HRESULT Assign(VARIANT* target, const VARIANT* source, bool follow) {
  if (target == nullptr || source == nullptr) return E_INVALIDARG;
  if (!IsSupported(source->vt)) return DISP_E_BADVARTYPE;
  VARIANT value = *source;
  if (follow) {
    if (const HRESULT result = Resolve(*source, value); FAILED(result)) return result;
  } else if (target == source) {
    return S_OK;
  }
  if (const HRESULT result = TakeOwnership(value); FAILED(result)) return result;
  return Replace(*target, value);
}

}  // namespace

HRESULT Resolve(const VARIANT& source, VARIANT& value) {
  const VARIANT* reference = &source;
  if (reference->vt == (VT_BYREF | VT_VARIANT)) {
    reference = reference->pvarVal;
    if (reference == nullptr || reference->vt == (VT_BYREF | VT_VARIANT)) return E_INVALIDARG;
  }
  if (!IsSupported(reference->vt)) return DISP_E_BADVARTYPE;
  if ((reference->vt & VT_BYREF) == 0) {
    value = *reference;
    return S_OK;
  }
  if (reference->byref == nullptr) return E_INVALIDARG;
  Fetch(*reference, value);
  return S_OK;
}

HRESULT TakeOwnership(VARIANT& value) {
  if (value.vt == VT_BSTR && value.bstrVal != nullptr) {
    BSTR copy = CopyBstr(value.bstrVal);
    if (copy == nullptr) return E_OUTOFMEMORY;
    value.bstrVal = copy;
  } else if (IUnknown* object = Object(value)) {
    object->AddRef();
  }
  return S_OK;
}

HRESULT Replace(VARIANT& target, VARIANT& value) {
  const HRESULT result = VariantClear(&target);
  if (FAILED(result)) {
    VariantClear(&value);
  } else {
    target = value;
  }
  return result;
}

}  // namespace moxel

void VariantInit(VARIANTARG* pvarg) {
  if (pvarg != nullptr) *pvarg = VARIANT{};
}

HRESULT VariantClear(VARIANTARG* pvarg) {
  using namespace moxel;
  if (pvarg == nullptr) return E_INVALIDARG;
  if (!IsSupported(pvarg->vt)) return DISP_E_BADVARTYPE;
  // Emptied first: releasing an object may run code that looks at the variant.
  const VARIANT content = *pvarg;
  pvarg->vt = VT_EMPTY;
  if (content.vt == VT_BSTR) {
    SysFreeString(content.bstrVal);
  } else if (IUnknown* object = Object(content)) {
    object->Release();
  }
  return S_OK;
}

HRESULT VariantCopy(VARIANTARG* pvargDest, const VARIANTARG* pvargSrc) {
  return moxel::Assign(pvargDest, pvargSrc, false);
}

HRESULT VariantCopyInd(VARIANT* pvarDest, const VARIANTARG* pvargSrc) {
  return moxel::Assign(pvarDest, pvargSrc, true);
}
