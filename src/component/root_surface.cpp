#include "root/root.h"

#include "component/classes.h"
#include "component/members.h"
#include "component/surface.h"

namespace moxel {
namespace component {

const ClassInfo& RootInfo() {
  using I = _Root;
  static const ClassInfo info{
      u"Root",
      u"_Root",
      &CLSID_Root,
      &IID__Root,
      u"The entry to all users, all domains and the scenarios of no known domain, each loaded at its first "
      u"reading.",
      {
          Get<&I::get_Utilisateurs>(u"Utilisateurs", 0x68030002, {},
                                    {u"All users. Put no object to load them afresh at the next reading."}),
          PutRef<&I::putref_Utilisateurs>(u"Utilisateurs", 0x68030002),
          Get<&I::get_Scenarios>(
              u"Scenarios", 0x68030001, {},
              {u"The scenarios that name no known domain. Put no object to load them afresh."}),
          PutRef<&I::putref_Scenarios>(u"Scenarios", 0x68030001),
          Get<&I::get_Domaines>(u"Domaines", 0x68030000, {},
                                {u"All domains. Put no object to load them afresh."}),
          PutRef<&I::putref_Domaines>(u"Domaines", 0x68030000),
      },
  };
  return info;
}

namespace {

class RootSurface final : public Surface<Root, _Root, RootInfo> {
 public:
  HRESULT get_Utilisateurs(_Utilisateurs** result) override { return Forward<&Root::Utilisateurs>(result); }
  HRESULT putref_Utilisateurs(_Utilisateurs* value) override { return PassOn<&Root::PutUtilisateurs>(value); }
  HRESULT get_Scenarios(_Scenarios** result) override { return Forward<&Root::Scenarios>(result); }
  HRESULT putref_Scenarios(_Scenarios* value) override { return PassOn<&Root::PutScenarios>(value); }
  HRESULT get_Domaines(_Domaines** result) override { return Forward<&Root::Domaines>(result); }
  HRESULT putref_Domaines(_Domaines* value) override { return PassOn<&Root::PutDomaines>(value); }

 private:
  // The root itself refuses what is not a collection of the component.
  template <auto Setter, class Collection>
  HRESULT PassOn(Collection* value) {
    return Answer(IID__Root, [&] { (this->*Setter)(value); });
  }
};

}  // namespace
}  // namespace component

ObjectPtr<Root> Root::Create() { return component::New<component::RootSurface, Root>(); }

}  // namespace moxel
