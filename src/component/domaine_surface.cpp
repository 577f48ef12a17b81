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
      u"",
      {
          Get<&I::get_key>(u"key", 0x40030000),
          Put<&I::put_key>(u"key", 0x40030000),
          Function<&I::raw_Initialize>(u"Initialize", 0x60030003,
                                       {{u"wWithOutDomVar"}, {u"wWithOutScenVar"}}),
          Get<&I::get_Comment>(u"Comment", 0x68030002),
          Function<&I::raw_Update>(u"Update", 0x60030004, {{u"wComment"}}),
          Get<&I::get_Variables>(u"Variables", 0x68030001),
          Get<&I::get_Scenarios>(u"Scenarios", 0x68030000),
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
