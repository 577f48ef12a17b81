#include "variables/owner.h"

#include "moxel/late_bound.h"
#include "moxel/object_ptr.h"

namespace moxel {
namespace {

bool Implements(IDispatch* object, REFIID interface) {
  ObjectPtr<IUnknown> found;
  return object && SUCCEEDED(object->QueryInterface(interface, found.ReceiveAny()));
}

}  // namespace

bool IsDomain(IDispatch* object) { return Implements(object, IID__Domaine); }

bool IsScenario(IDispatch* object) { return Implements(object, IID__Scenario); }

std::u16string KeyOf(IDispatch* object) { return GetProperty(object, u"key").ToText(); }

}  // namespace moxel
