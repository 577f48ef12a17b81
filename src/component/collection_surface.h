// The surface of a collection: the mechanical members, whose slots every collection's interface has under the
// same names.
#pragma once

#include "component/members.h"
#include "component/surface.h"

namespace moxel::component {

// `ItemInterface` is what the collection holds; `Index` and `Added` are how its interface takes an index
// (VARIANT, by value, or VARIANT*, by reference) and an object to add.
template <class Logic, class Interface, const ClassInfo& (*Info)(), class ItemInterface, class Index,
          class Added>
class CollectionSurface : public Surface<Logic, Interface, Info> {
 public:
  HRESULT raw_Add(Added element) final { return this->template Perform<&Logic::Add>(element); }
  HRESULT get_Item(Index vntIndexKey, ItemInterface** result) final {
    return this->template Forward<&Logic::Item>(result, vntIndexKey);
  }
  HRESULT get_Count(LONG* result) final { return this->template Forward<&Logic::Count>(result); }
  HRESULT raw_Remove(Index vntIndexKey) final { return this->template Perform<&Logic::Remove>(vntIndexKey); }
  HRESULT get_NewEnum(IUnknown** result) final { return this->template Forward<&Logic::NewEnum>(result); }
};

// The mechanical members whose description is the same in every collection.
template <class Interface>
Member ItemMember() {
  return Get<&Interface::get_Item>(u"Item", DISPID_VALUE, {{u"vntIndexKey"}},
                                   {u"The element at a position, counted from 1, or under a key."});
}
template <class Interface>
Member CountMember() {
  return Get<&Interface::get_Count>(u"Count", 0x68030000, {}, {u"Number of elements."});
}
template <class Interface>
Member NewEnumMember() {
  return Get<&Interface::get_NewEnum>(u"NewEnum", DISPID_NEWENUM, {},
                                      {u"Enumerator over the elements.", true});
}

}  // namespace moxel::component
