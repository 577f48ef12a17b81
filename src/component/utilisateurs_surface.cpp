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
      u"All users, or those admitted to one scenario.",
      {
          Function<&I::raw_NewUser>(u"NewUser", 0x60030001,
                                    {{u"wUser"}, {u"wPassword"}, {u"wPwdConf"}, {u"wPermission"}},
                                    {u"Creates a user with a permission and a password given twice, in the "
                                     u"configuration and here."}),
          Function<&I::raw_DeleteUser>(u"DeleteUser", 0x60030002, {{u"wUser"}},
                                       {u"Deletes a user from the configuration, also out of the scenarios. "
                                        u"The result is false whatever was deleted."}),
          Method<&I::raw_Add>(u"Add", 0x60030003, {{u"wUser"}},
                              {u"Appends a user in memory, under its key."}),
          ItemMember<I>(),
          CountMember<I>(),
          Method<&I::raw_Remove>(u"Remove", 0x60030005, {{u"vntIndexKey"}},
                                 {u"Removes a user from memory only."}),
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
