#include "users/utilisateurs.h"

#include "component/classes.h"
#include "component/collection_surface.h"

namespace moxel {
namespace component {

const ClassInfo& UtilisateursInfo() {
  using I = _Utilisateurs;
  static const ClassInfo info{
      u"Utilisateurs",
      u"_Utilisateurs",
      &CLSID_Utilisateurs,
      &IID__Utilisateurs,
      u"",
      {
          Function<&I::raw_NewUser>(u"NewUser", 0x60030001,
                                    {{u"wUser"}, {u"wPassword"}, {u"wPwdConf"}, {u"wPermission"}}),
          Function<&I::raw_DeleteUser>(u"DeleteUser", 0x60030002, {{u"wUser"}}),
          Method<&I::raw_Add>(u"Add", 0x60030003, {{u"wUser"}}),
          ItemMember<I>(),
          CountMember<I>(),
          Method<&I::raw_Remove>(u"Remove", 0x60030005, {{u"vntIndexKey"}}),
          NewEnumMember<I>(),
      },
  };
  return info;
}

namespace {

class UtilisateursSurface final
    : public CollectionSurface<Utilisateurs, _Utilisateurs, UtilisateursInfo, _User, VARIANT*, _User**> {
 public:
  HRESULT raw_NewUser(BSTR* wUser, VARIANT wPassword, VARIANT wPwdConf, SHORT wPermission,
                      _User** result) override {
    return Forward<&Utilisateurs::NewUser>(result, wUser, wPassword, wPwdConf, wPermission);
  }
  HRESULT raw_DeleteUser(_User** wUser, SHORT* result) override {
    return Forward<&Utilisateurs::DeleteUser>(result, wUser);
  }
};

}  // namespace
}  // namespace component

ObjectPtr<Utilisateurs> Utilisateurs::Create() {
  return component::New<component::UtilisateursSurface, Utilisateurs>();
}

}  // namespace moxel
