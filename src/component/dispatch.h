// IDispatch over a surface table.
#pragma once

#include "component/class_info.h"

namespace moxel::component {

// Letter case aside; the published names are ASCII.
bool SameName(std::u16string_view a, std::u16string_view b);

// The ids of a member and of its parameters, letter case ignored. DISP_E_UNKNOWNNAME, with DISPID_UNKNOWN for
// each unknown name.
HRESULT FindIds(const ClassInfo& info, REFIID reserved, LPOLESTR* names, UINT count, DISPID* ids);

// Calls a member by its id: arguments coerced to the slot's types, named ones put in their places, omitted
// optional ones marked. Arguments given to a property without parameters that returns an object go to that
// object's default member. DISP_E_EXCEPTION when the member itself fails; `exception` and the thread's error
// info then tell how.
HRESULT Invoke(const ClassInfo& info, IDispatch* object, DISPID id, REFIID reserved, WORD flags,
               DISPPARAMS* parameters, VARIANT* result, EXCEPINFO* exception, UINT* bad_argument);

}  // namespace moxel::component
