#include "users/user.h"

#include "errors/handle_error.h"
#include "moxel/enumerations.h"
#include "registry/enumeration.h"
#include "registry/schema.h"
#include "registry/scrambling.h"
#include "registry/store.h"

namespace moxel {
namespace {

constexpr std::u16string_view kUpdateSource = u"User:Update";
constexpr std::int16_t kHighestPermission = 1;

Variant Scrambled(Variant plain) {
  ScrambleText(plain);
  return plain;
}

}  // namespace

Status User::Check(const Variant& wPassword) const {
  if (!Scrambled(wPassword).SameAs(password_)) HandleError(lMXUserError_BadPassword, kUpdateSource);
  return VARIANT_TRUE;
}

Status User::Update(std::int16_t wPermission, const Variant& wOldPwd, const Variant& wNewPwd,
                    const Variant& wConfPwd) {
  if (wPermission > kHighestPermission) HandleError(lMXUserError_BadPermission, kUpdateSource);
  if (!wNewPwd.is_missing()) {
    if (!Scrambled(wOldPwd).SameAs(password_)) HandleError(lMXUserError_BadPassword, kUpdateSource);
    Variant new_password = Scrambled(wNewPwd);
    if (new_password.SameAs(password_)) HandleError(lMXUserError_EnterNewPassword, kUpdateSource);
    if (!wConfPwd.SameAs(wNewPwd)) HandleError(lMXUserError_ConfPassword, kUpdateSource);
    password_ = std::move(new_password);
    WritePassword();
  }
  WritePermission(wPermission);
  permission_ = wPermission;
  return VARIANT_TRUE;
}

void User::SetPermission(std::int16_t permission) {
  if (permission > kHighestPermission)
    HandleError(lMXUserError_BadPermission, u"User:Permission Property Let");
  permission_ = permission;
}

Variant User::Password() const { return std::u16string(password_.ToText().size(), u'*'); }

Variant User::PasswordDecrypted() const {
  Variant plain = password_;
  UnscrambleText(plain);
  return plain;
}

Status User::Validate() const {
  if (KeyExists(Path())) HandleError(lMXUserError_UserAlreadyExist, u"User:Validate");
  WritePermission(permission_);
  WritePassword();
  return VARIANT_TRUE;
}

std::u16string User::Path() const { return schema::Path(schema::kUser, key); }

void User::WritePermission(std::int16_t permission) const {
  RegWriteValue(Path(), schema::kAccessPerm, REG_DWORD, Variant(permission).ToText());
}

void User::WritePassword() const { RegWriteValue(Path(), schema::kPassword, REG_SZ, password_.ToText()); }

}  // namespace moxel
