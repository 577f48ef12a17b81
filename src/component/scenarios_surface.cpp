#include "scenarios/scenarios.h"

#include "component/classes.h"
#include "component/collection_surface.h"

namespace moxel {
namespace component {

const ClassInfo& ScenariosInfo() {
  using I = _Scenarios;
  static const ClassInfo info{
      u"Scenarios",
      u"_Scenarios",
      &CLSID_Scenarios,
      &IID__Scenarios,
      u"The scenarios of one domain, or those of no known domain.",
      {
          Function<&I::raw_DeleteScenario>(
              u"DeleteScenario", 0x60030001, {{u"wScenario"}, {u"wForce"}},
              {u"Deletes a scenario from the configuration; without wForce it must have no variables and no "
               u"tasks. One that could not be deleted leaves the collection, one that was deleted stays in "
               u"it."}),
          Method<&I::raw_Add>(u"Add", 0x60030002, {{u"wScen"}},
                              {u"Appends a scenario in memory, under its key.", true}),
          ItemMember<I>(),
          CountMember<I>(),
          Method<&I::raw_Remove>(u"Remove", 0x60030003, {{u"vntIndexKey"}},
                                 {u"Removes a scenario from memory only.", true}),
          NewEnumMember<I>(),
      },
  };
  return info;
}

namespace {

class ScenariosSurface final
    : public CollectionSurface<Scenarios, _Scenarios, ScenariosInfo, _Scenario, VARIANT, _Scenario**> {
 public:
  HRESULT raw_DeleteScenario(_Scenario** wScenario, SHORT wForce, SHORT* result) override {
    return Forward<&Scenarios::DeleteScenario>(result, wScenario, wForce);
  }
};

}  // namespace
}  // namespace component

ObjectPtr<Scenarios> Scenarios::Create() { return component::New<component::ScenariosSurface, Scenarios>(); }

}  // namespace moxel
