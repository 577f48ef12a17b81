#include "component/classes.h"
#include "component/members.h"
#include "component/surface.h"
#include "platform/automation/collection.h"

namespace moxel {
namespace component {

const ClassInfo& CollectionInfo() {
  using I = _Collection;
  static const ClassInfo info{
      u"Collection",
      u"_Collection",
      nullptr,
      &IID__Collection,
      u"Values in the order added, each addressable by position or by key.",
      {
          Get<&I::get_Item>(u"Item", DISPID_VALUE, {{u"Index"}},
                            {u"The value at a position, counted from 1, or under a key."}),
          Method<&I::raw_Add>(u"Add", 1, {{u"Item"}, {u"Key", true}},
                              {u"Appends a value, under a key where one is given."}),
          Get<&I::get_Count>(u"Count", 2, {}, {u"Number of values."}),
          Method<&I::raw_Remove>(u"Remove", 3, {{u"Index"}},
                                 {u"Removes the value at a position or under a key."}),
          Get<&I::get_NewEnum>(u"NewEnum", DISPID_NEWENUM, {}, {u"Enumerator over the values.", true}),
      },
  };
  return info;
}

namespace {

class CollectionSurface final : public Surface<Collection, _Collection, CollectionInfo> {
 public:
  HRESULT get_Item(VARIANT* Index, VARIANT* result) override {
    return Forward<&Collection::Item>(result, Index);
  }
  HRESULT raw_Add(VARIANT* Item, VARIANT* Key) override { return Perform<&Collection::Add>(Item, Key); }
  HRESULT get_Count(LONG* result) override { return Forward<&Collection::Count>(result); }
  HRESULT raw_Remove(VARIANT* Index) override { return Perform<&Collection::Remove>(Index); }
  HRESULT get_NewEnum(IUnknown** result) override { return Forward<&Collection::NewEnum>(result); }
};

}  // namespace
}  // namespace component

ObjectPtr<Collection> Collection::Create() {
  return component::New<component::CollectionSurface, Collection>();
}

}  // namespace moxel
