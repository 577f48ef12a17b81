// One account of the product.
#pragma once

#include <cstdint>
#include <string>

#include "moxel/interfaces.h"
#include "moxel/object_ptr.h"
#include "moxel/variant.h"
#include "registry/status.h"

namespace moxel {

// A name, a permission of at most 1 and a password, which is held and stored only in scrambled form. The
// registry is never read again: a user knows the password it was loaded with or last given.
class User : public _User {
 public:
  // A new user without name, password and permission.
  static ObjectPtr<User> Create();

  // The name, its key in collections and the name of its registry key. Assigning it has no other effect.
  std::u16string key;

  // True when the plain password matches. 1000 when not; the Source names "User:Update", as clients know it.
  Status Check(const Variant& wPassword) const;

  // Changes the permission and, when a new password is given, the password, in memory and in the registry.
  // Always true. Without a new password none is asked for. Refusals, all before anything is changed, Source
  // "User:Update", in this order: 1003 permission above 1; 1000 wrong old password; 1001 new password like
  // the current one; 1002 confirmation differs. An empty new password is accepted, although a new user may
  // not have one.
  Status Update(std::int16_t wPermission, const Variant& wOldPwd, const Variant& wNewPwd,
                const Variant& wConfPwd);

  std::int16_t Permission() const { return permission_; }
  // In memory only. 1003, Source "User:Permission Property Let", above 1.
  void SetPermission(std::int16_t permission);

  // One "*" for each character.
  Variant Password() const;
  Variant PasswordDecrypted() const;
  // The scrambled form as it is held; nothing when there is none.
  const Variant& PasswordCrypted() const { return password_; }
  // Takes a password already scrambled, in memory only.
  void SetPasswordCrypted(const Variant& password) { password_ = password; }

  // Writes this user as a new one. Always true. 1004, Source "User:Validate", where the registry has the
  // name.
  Status Validate() const;

 private:
  std::u16string Path() const;
  void WritePermission(std::int16_t permission) const;
  void WritePassword() const;

  Variant password_;  // scrambled
  std::int16_t permission_ = 0;
};

}  // namespace moxel
