// Telling the component's own objects from those that clients implement.
#pragma once

#include <type_traits>

#include "moxel/automation_error.h"
#include "moxel/object_ptr.h"

namespace moxel {

// No client knows this identifier; an object of the component answers it with its class of the object model.
constexpr IID OwnObjectId(IID interface_id) {
  interface_id.Data1 ^= 0xFFFFFFFF;
  return interface_id;
}

// The object of the component behind an interface that a client passes; none for none. Error 13 for anybody
// else's.
template <class Logic>
ObjectPtr<Logic> OwnObject(IUnknown* object) {
  void* own = nullptr;
  if (!object) return {};
  if (FAILED(object->QueryInterface(OwnObjectId(interface_id<Logic>), &own)))
    throw AutomationError::TypeMismatch();
  return ObjectPtr<Logic>::Adopt(static_cast<Logic*>(own));
}

}  // namespace moxel
