#include "domains/domaine.h"

#include "component/classes.h"
#include "component/members.h"
#include "component/surface.h"

namespace moxel {
namespace component {

const ClassInfo& DomaineInfo() {
  using I = _Domaine;
  static const ClassInfo info{
      u"Domaine",
      u"_Domaine",
      &CLSID_Domaine,
      &IID__Domaine,
      u"A group of scenarios with variables of its own.",
      {
          Get<&I::get_key>(u"key", 0x40030000, {},
                           {u"Name of the domain. Putting it changes nothing in the configuration."}),
          Put<&I::put_key>(u"key", 0x40030000),
          Function<&I::raw_Initialize>(
              u"Initialize", 0x60030003, {{u"wWithOutDomVar"}, {u"wWithOutScenVar"}},
              {u"Resets the domain and the run states of its scenarios; exactly 1 for a flag gives the "
               u"variables of the domain, or those of its scenarios, their initial values."}),
          Get<&I::get_Comment>(u"Comment", 0x68030002, {}, {u"Comment on the domain."}),
          Function<&I::raw_Update>(u"Update", 0x60030004, {{u"wComment"}}, {u"Writes a new comment."}),
          Get<&I::get_Variables>(u"Variables", 0x68030001, {},
                                 {u"Variables of the domain. Put no object to load them afresh."}),
          Get<&I::get_Scenarios>(u"Scenarios", 0x68030000, {},
                                 {u"Scenarios of the domain. Put no object to load them afresh."}),
          PutRef<&I::putref_Variables>(u"Variables", 0x68030001),
          PutRef<&I::putref_Scenarios>(u"Scenarios", 0x68030000),
      },
  };
  return info;
}

namespace {

class DomaineSurface final : public Surface<Domaine, _Domaine, DomaineInfo> {
 public:
  HRESULT get_key(BSTR* result) override { return Forward<&Domaine::key>(result); }
  HRESULT put_key(BSTR value) override { return Assign<&Domaine::key>(value); }
  HRESULT raw_Initialize(SHORT wWithOutDomVar, SHORT wWithOutScenVar, SHORT* result) override {
    return Forward<&Domaine::Initialize>(result, wWithOutDomVar, wWithOutScenVar);
  }
  HRESULT get_Comment(VARIANT* result) override { return Forward<&Domaine::Comment>(result); }
  HRESULT raw_Update(VARIANT* wComment, SHORT* result) override {
    return Forward<&Domaine::Update>(result, wComment);
  }
  HRESULT get_Variables(_Variables** result) override { return Forward<&Domaine::Variables>(result); }
  HRESULT get_Scenarios(_Scenarios** result) override { return Forward<&Domaine::Scenarios>(result); }
  HRESULT putref_Variables(_Variables* value) override { return Perform<&Domaine::PutVariables>(value); }
  HRESULT putref_Scenarios(_Scenarios* value) override { return Perform<&Domaine::PutScenarios>(value); }
};

}  // namespace
}  // namespace component

ObjectPtr<Domaine> Domaine::Create() { return component::New<component::DomaineSurface, Domaine>(); }

}  // namespace moxel
