#include "users/utilisateurs.h"

#include "errors/handle_error.h"
#include "moxel/enumerations.h"
#include "registry/ansi.h"
#include "registry/schema.h"
#include "registry/scrambling.h"
#include "registry/settings.h"
#include "registry/store.h"

namespace moxel {
namespace {

constexpr std::u16string_view kNewUserSource = u"User:NewUser";

// A path that does not exist gives the handle 0, whose enumerations yield nothing.
StoreHandle OpenAbsolute(HKEY hive, std::u16string_view path) {
  StoreHandle handle = 0;
  RegOpenKeyExA(hive, ToAnsi(path).c_str(), 0, kReadWrite, &handle);
  return handle;
}

// Deletes the values of one list whose data is the user's name. Three things are as other programs know them:
// the index advances after a deletion too, so the value that moves into the deleted one's place is passed
// over; a value without data, or without name, is judged by, or deleted under, what the value before it had;
// and the key stays open.
void RemoveUserFromList(HKEY hive, std::u16string_view list_path, std::u16string_view user) {
  StoreHandle list = OpenAbsolute(hive, list_path);
  std::u16string data;
  std::u16string name;
  for (std::int32_t index = 0; RegEnumValues(list, index, data, &name); ++index)
    if (data == user) RegDeleteValueA(list, ToAnsi(name).c_str());
}

// Visits every key below a path, depth first, and clears those named "User".
Status RemoveUserFromScenarios(HKEY hive, const std::u16string& path, std::u16string_view user) {
  StoreHandle key = OpenAbsolute(hive, path);
  std::u16string name;
  for (std::int32_t index = 0; RegEnumSubKeys(key, index, name); ++index) {
    const std::u16string subkey_path = schema::Path(path, name);
    if (name == schema::kUser) RemoveUserFromList(hive, subkey_path, user);
    RemoveUserFromScenarios(hive, subkey_path, user);
  }
  return RegCloseKeyHandle(key);
}

}  // namespace

ObjectPtr<User> Utilisateurs::NewUser(const std::u16string& wUser, const Variant& wPassword,
                                      const Variant& wPwdConf, std::int16_t wPermission) {
  if (wUser.empty()) HandleError(lMXUserError_UserRequired, kNewUserSource);
  if (wPassword.Equals(u"")) HandleError(lMXUserError_BadPassword, kNewUserSource);
  if (!wPwdConf.SameAs(wPassword)) HandleError(lMXUserError_ConfPassword, kNewUserSource);
  ObjectPtr<User> user = User::Create();
  user->key = wUser;
  Variant scrambled = wPassword;
  ScrambleText(scrambled);
  user->SetPasswordCrypted(scrambled);
  user->SetPermission(wPermission);
  user->Validate();
  Add(*user);
  return user;
}

Status Utilisateurs::DeleteUser(const User& wUser) {
  RegDeleteKeyPath(schema::kUser, wUser.key);
  return RemoveUserFromScenarios(Settings().RootHive,
                                 Settings().RootPath + std::u16string(schema::kScenarios), wUser.key);
}

}  // namespace moxel
