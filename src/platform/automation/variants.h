// What the variant functions share.
#pragma once

#include "moxel/platform.h"

namespace moxel {

// Finds the value that a variant holds or refers to. `value` borrows texts and objects; it must not be
// cleared. E_INVALIDARG for a null reference or a reference to a reference to a variant, DISP_E_BADVARTYPE
// for an unsupported tag.
HRESULT Resolve(const VARIANT& source, VARIANT& value);

// Makes a variant own the texts and objects it borrowed. E_OUTOFMEMORY, with `value` unchanged.
HRESULT TakeOwnership(VARIANT& value);

// Puts an owned value in the place of the content of `target`; when that cannot be cleared, the value is
// released and `target` stays as it was.
HRESULT Replace(VARIANT& target, VARIANT& value);

}  // namespace moxel
