#include "domains/domaines.h"

#include "component/classes.h"
#include "component/collection_surface.h"

namespace moxel {
namespace component {

const ClassInfo& DomainesInfo() {
  using I = _Domaines;
  static const ClassInfo info{
      u"Domaines",
      u"_Domaines",
      &CLSID_Domaines,
      &IID__Domaines,
      u"All domains: those loaded in the order of their names, then those added.",
      {
          Method<&I::raw_Add>(u"Add", 0x60030001, {{u"wDomaine"}},
                              {u"Appends a domain in memory, under its key."}),
          Function<&I::raw_DeleteDomain>(
              u"DeleteDomain", 0x60030002, {{u"wDomaine"}, {u"wForce"}},
              {u"Deletes a domain from the configuration; with wForce also its variables and scenarios, "
               u"without which it must be empty. A domain that could not be deleted leaves the collection, "
               u"one that was deleted stays in it."}),
          Function<&I::raw_NewDomain>(u"NewDomain", 0x60030003, {{u"wDom"}, {u"wComment"}},
                                      {u"Creates a domain with a comment, in the configuration and here."}),
          ItemMember<I>(),
          CountMember<I>(),
          Method<&I::raw_Remove>(u"Remove", 0x60030004, {{u"vntIndexKey"}},
                                 {u"Removes a domain from memory only."}),
          NewEnumMember<I>(),
      },
  };
  return info;
}

namespace {

class DomainesSurface final
    : public CollectionSurface<Domaines, _Domaines, DomainesInfo, _Domaine, VARIANT*, _Domaine**> {
 public:
  HRESULT raw_DeleteDomain(_Domaine** wDomaine, SHORT wForce, SHORT* result) override {
    return Forward<&Domaines::DeleteDomain>(result, wDomaine, wForce);
  }
  HRESULT raw_NewDomain(BSTR* wDom, VARIANT* wComment, _Domaine** result) override {
    return Forward<&Domaines::NewDomain>(result, wDom, wComment);
  }
};

}  // namespace
}  // namespace component

ObjectPtr<Domaines> Domaines::Create() { return component::New<component::DomainesSurface, Domaines>(); }

}  // namespace moxel
