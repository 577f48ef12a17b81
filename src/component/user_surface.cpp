#include "users/user.h"

#include "component/classes.h"
#include "component/members.h"
#include "component/surface.h"

namespace moxel {
namespace component {

const ClassInfo& UserInfo() {
  using I = _User;
  constexpr Traits kKey{u"Clef et nom de l'utilisateur"};
  constexpr Traits kPermission{u"Définit ou renvoie la permission de l'utilisateur."};
  static const ClassInfo info{
      u"User",
      u"_User",
      &CLSID_User,
      &IID__User,
      u"An account with a permission and a scrambled password.",
      {
          Get<&I::get_key>(u"key", 0x40030000, {}, kKey),
          Put<&I::put_key>(u"key", 0x40030000, {}, kKey),
          Function<&I::raw_Check>(u"Check", 0x60030003, {{u"wPassword"}}, {u"Verification du Password"}),
          Function<&I::raw_Update>(
              u"Update", 0x60030004,
              {{u"wPermission"}, {u"wOldPwd", true}, {u"wNewPwd", true}, {u"wConfPwd", true}},
              {u"Modification d'un Utilisateur."}),
          Put<&I::put_Permission>(u"Permission", 0x68030001, {}, kPermission),
          Get<&I::get_Permission>(u"Permission", 0x68030001, {}, kPermission),
          Get<&I::get_Password>(u"Password", 0x68030000),
          Get<&I::get_PasswordCrypted>(u"PasswordCrypted", 0x68030006),
          Get<&I::get_PasswordDecrypted>(u"PasswordDecrypted", 0x68030005, {},
                                         {u"Renvoie le mot de passe décrypté."}),
          Put<&I::put_PasswordCrypted>(u"PasswordCrypted", 0x68030006),
      },
  };
  return info;
}

namespace {

class UserSurface final : public Surface<User, _User, UserInfo> {
 public:
  HRESULT get_key(BSTR* result) override { return Forward<&User::key>(result); }
  HRESULT put_key(BSTR value) override { return Assign<&User::key>(value); }
  HRESULT raw_Check(VARIANT* wPassword, SHORT* result) override {
    return Forward<&User::Check>(result, wPassword);
  }
  HRESULT raw_Update(SHORT* wPermission, VARIANT wOldPwd, VARIANT* wNewPwd, VARIANT* wConfPwd,
                     SHORT* result) override {
    return Forward<&User::Update>(result, wPermission, wOldPwd, wNewPwd, wConfPwd);
  }
  HRESULT put_Permission(SHORT value) override { return Perform<&User::SetPermission>(value); }
  HRESULT get_Permission(SHORT* result) override { return Forward<&User::Permission>(result); }
  HRESULT get_Password(VARIANT* result) override { return Forward<&User::Password>(result); }
  HRESULT get_PasswordCrypted(VARIANT* result) override { return Forward<&User::PasswordCrypted>(result); }
  HRESULT get_PasswordDecrypted(VARIANT* result) override {
    return Forward<&User::PasswordDecrypted>(result);
  }
  HRESULT put_PasswordCrypted(VARIANT value) override { return Perform<&User::SetPasswordCrypted>(value); }
};

}  // namespace
}  // namespace component

ObjectPtr<User> User::Create() { return component::New<component::UserSurface, User>(); }

}  // namespace moxel
