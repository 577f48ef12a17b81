#include "component/members.h"
#include "component/surface.h"
#include "platform/automation/collection.h"

namespace moxel {
namespace component {
namespace {

const ClassInfo& CollectionInfo() {
  using I = _Collection;
  static const ClassInfo info{
      u"Collection",
      u"_Collection",
      nullptr,
      &IID__Collection,
      u"",
      {
          Get<&I::get_Item>(u"Item", DISPID_VALUE, {{u"Index"}}),
          Method<&I::raw_Add>(u"Add", 1, {{u"Item"}, {u"Key", true}}),
          Get<&I::get_Count>(u"Count", 2),
          Method<&I::raw_Remove>(u"Remove", 3, {{u"Index"}}),
          Get<&I::get_NewEnum>(u"NewEnum", DISPID_NEWENUM, {}, {.hidden = true}),
      },
  };
  return info;
}

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
