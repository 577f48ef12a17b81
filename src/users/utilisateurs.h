// The collection of users.
#pragma once

#include <cstdint>
#include <string>

#include "moxel/interfaces.h"
#include "platform/automation/object_collection.h"
#include "registry/status.h"
#include "users/user.h"

namespace moxel {

// All users of the product, or those admitted to one scenario. Whichever it is, NewUser creates a user of the
// product, and DeleteUser deletes one from the product and from every scenario's list.
class Utilisateurs : public ObjectCollection<User, _Utilisateurs> {
 public:
  // A new, empty collection.
  static ObjectPtr<Utilisateurs> Create();

  // Creates a user, writes it and adds it. Refusals in this order: 1005 no name, 1000 empty password, 1002
  // confirmation differs (Source "User:NewUser"); 1003 permission above 1 (Source "User:Permission Property
  // Let"); 1004 the registry has the name (Source "User:Validate"). It is written before it is added: a name
  // that only this collection has (457) stays in the registry.
  ObjectPtr<User> NewUser(const std::u16string& wUser, const Variant& wPassword, const Variant& wPwdConf,
                          std::int16_t wPermission);

  // Deletes a user's registry key and its name from every scenario's list of users. The collection stays as
  // it is. Always false, whatever was deleted: clients know not to read it.
  Status DeleteUser(const User& wUser);
};

}  // namespace moxel
