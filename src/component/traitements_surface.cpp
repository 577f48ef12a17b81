#include "scenarios/traitements.h"

#include "component/classes.h"
#include "component/collection_surface.h"

namespace moxel {
namespace component {

const ClassInfo& TraitementsInfo() {
  using I = _Traitements;
  static const ClassInfo info{
      u"Traitements",
      u"_Traitements",
      &CLSID_Traitements,
      &IID__Traitements,
      u"The tasks of one scenario.",
      {
          Method<&I::raw_Add>(u"Add", 0x60030001, {{u"wTraitement"}},
                              {u"Appends a task in memory, under its key.", true}),
          ItemMember<I>(),
          Function<&I::raw_DeleteTraitement>(
              u"DeleteTraitement", 0x60030002, {{u"wTraitement"}, {u"wScenarioName"}},
              {u"Deletes a task of the scenario wScenarioName from the configuration and from here."}),
          CountMember<I>(),
          Method<&I::raw_Remove>(u"Remove", 0x60030003, {{u"vntIndexKey"}},
                                 {u"Removes a task from memory only.", true}),
          NewEnumMember<I>(),
      },
  };
  return info;
}

namespace {

class TraitementsSurface final : public CollectionSurface<Traitements, _Traitements, TraitementsInfo,
                                                          _Traitement, VARIANT, _Traitement**> {
 public:
  HRESULT raw_DeleteTraitement(_Traitement** wTraitement, BSTR wScenarioName, SHORT* result) override {
    return Forward<&Traitements::DeleteTraitement>(result, wTraitement, wScenarioName);
  }
};

}  // namespace
}  // namespace component

ObjectPtr<Traitements> Traitements::Create() {
  return component::New<component::TraitementsSurface, Traitements>();
}

}  // namespace moxel
