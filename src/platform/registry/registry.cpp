// The nine entry points.
#include <algorithm>
#include <cstring>

#include "platform/registry/calls.h"
#include "platform/registry/enumeration.h"
#include "platform/registry/failure.h"
#include "platform/registry/handles.h"
#include "platform/registry/key_name.h"
#include "platform/registry/look_ups.h"
#include "platform/registry/session.h"

namespace moxel::platform {
namespace {

// "SOFTWARE\Classes", what HKEY_CLASSES_ROOT stands for.
const Name& ClassesPath() {
  static const Name path = MakePath("SOFTWARE\\Classes");
  return path;
}

REGSAM ExpandGenericRights(REGSAM access) {
  if (access & GENERIC_READ) access |= KEY_READ;
  if (access & GENERIC_WRITE) access |= KEY_WRITE;
  if (access & GENERIC_ALL) access |= KEY_ALL_ACCESS;
  return access;
}

bool HasWriteRight(REGSAM access) { return (access & (KEY_SET_VALUE | KEY_CREATE_SUB_KEY)) != 0; }

// What a handle opened with these rights is granted. ERROR_ACCESS_DENIED for a write right on a file that may
// not be written.
REGSAM Grant(Session::Lease& lease, REGSAM wanted) {
  REGSAM access = ExpandGenericRights(wanted);
  if (wanted & MAXIMUM_ALLOWED) access |= lease.MayWrite() ? KEY_ALL_ACCESS : KEY_READ;
  if (HasWriteRight(access)) lease.RequireRights();
  return access;
}

KeyId FindKey(Connection* connection, const Name& path) {
  if (path.folded.empty()) return kRootKey;
  return connection ? connection->look_ups().FindKey(path.folded) : 0;
}

// What an open handle stands for. ERROR_INVALID_HANDLE for any other.
KeyHandle Opened(HKEY handle) {
  const std::optional<KeyHandle> opened = HandleTable::Instance().Get(handle);
  if (!opened) throw RegistryFailure(ERROR_INVALID_HANDLE);
  return *opened;
}

// The path of a handle's key. ERROR_KEY_DELETED when the key is gone.
Name PathOf(Connection* connection, HKEY handle) {
  KeyHandle opened = Opened(handle);
  if (handle == HKEY_CLASSES_ROOT) return ClassesPath();
  if (opened.key == kRootKey) return {};
  if (!connection) throw RegistryFailure(ERROR_KEY_DELETED);
  const std::optional<std::string>& path = connection->look_ups().PathOf(opened.key);
  if (!path) throw RegistryFailure(ERROR_KEY_DELETED);
  return {*path, *path};  // it exists, so nothing is created under its text
}

// ERROR_INVALID_HANDLE and ERROR_ACCESS_DENIED, as codes: clients go on with the handle 0 of a key that is
// not there, and what happens often must cost little.
LSTATUS CheckRight(HKEY handle, REGSAM right) {
  const std::optional<KeyHandle> opened = HandleTable::Instance().Get(handle);
  if (!opened) return ERROR_INVALID_HANDLE;
  return (opened->access & right) != 0 ? ERROR_SUCCESS : ERROR_ACCESS_DENIED;
}

// The key behind a handle; 0 where HKEY_CLASSES_ROOT stands for a key that does not exist yet.
KeyId KeyOf(Connection* connection, HKEY handle) {
  if (handle == HKEY_CLASSES_ROOT) return FindKey(connection, ClassesPath());
  KeyId key = Opened(handle).key;
  if (!connection && key != kRootKey) throw RegistryFailure(ERROR_KEY_DELETED);
  return key;
}

// Creates what is missing of a path, inside a write transaction.
KeyId AddPath(Connection& connection, const Name& path) {
  KeyId parent = kRootKey;
  for (std::size_t begin = 0; begin < path.folded.size();) {
    std::size_t end = std::min(path.folded.find('\\', begin), path.folded.size());
    Name upto{path.text.substr(0, end), path.folded.substr(0, end)};
    KeyId key = FindKey(&connection, upto);
    if (key == 0) {
      Query query(connection.Get(Sql::kAddKey));
      std::string_view name = std::string_view(path.text).substr(begin, end - begin);
      query->Bind(1, parent).Bind(2, upto.folded).Bind(3, name);
      query->Step();
      key = connection.added_id();
    }
    parent = key;
    begin = end + 1;
  }
  return parent;
}

// Copies a text with its NUL into a caller's buffer of *capacity characters and reports the length without
// it.
LSTATUS CopyName(const std::string& utf8, LPSTR buffer, DWORD* capacity) {
  std::string name = ToAnsi(utf8);
  if (name.size() >= *capacity) return ERROR_MORE_DATA;
  std::memcpy(buffer, name.c_str(), name.size() + 1);
  *capacity = static_cast<DWORD>(name.size());
  return ERROR_SUCCESS;
}

// Copies a value's data where the caller gave an area for it, and reports its size.
LSTATUS CopyData(std::string_view data, BYTE* area, DWORD* size) {
  if (!size) return ERROR_SUCCESS;
  DWORD capacity = *size;
  *size = static_cast<DWORD>(data.size());
  if (!area) return ERROR_SUCCESS;
  if (data.size() > capacity) return ERROR_MORE_DATA;
  if (!data.empty()) std::memcpy(area, data.data(), data.size());
  return ERROR_SUCCESS;
}

LSTATUS OpenKey(HKEY handle, LPCSTR subkey, REGSAM wanted, HKEY* result) {
  if (!result) return ERROR_INVALID_PARAMETER;
  *result = 0;
  auto lease = Session::OfThisThread().Use();
  Name relative = MakePath(subkey);
  Opened(handle);
  Connection* connection = lease.ForReading();
  Name path = JoinPaths(PathOf(connection, handle), std::move(relative));
  KeyId key = FindKey(connection, path);
  if (key == 0) return ERROR_FILE_NOT_FOUND;
  *result = HandleTable::Instance().Open({key, Grant(lease, wanted)});
  return ERROR_SUCCESS;
}

LSTATUS CreateKey(HKEY handle, LPCSTR subkey, REGSAM wanted, HKEY* result, DWORD* disposition) {
  if (!result || !subkey) return ERROR_INVALID_PARAMETER;
  *result = 0;
  auto lease = Session::OfThisThread().Use();
  Name relative = MakePath(subkey);
  if (HasOverlongLevel(relative)) return ERROR_INVALID_PARAMETER;
  Opened(handle);
  Connection* existing = lease.ForReading();
  Name path = JoinPaths(PathOf(existing, handle), std::move(relative));
  if (std::count(path.folded.begin(), path.folded.end(), '\\') >= kMaxDepth) return ERROR_INVALID_PARAMETER;
  KeyId key = FindKey(existing, path);
  bool created = key == 0;
  if (created) {
    lease.RequireRights();
    Connection& connection = lease.ForWriting();
    Transaction whole(connection, Transaction::Kind::kWrite);
    PathOf(&connection, handle);  // nothing is created under a key that was deleted meanwhile
    created = FindKey(&connection, path) == 0;
    key = AddPath(connection, path);
    whole.Commit();
  }
  *result = HandleTable::Instance().Open({key, Grant(lease, wanted)});
  if (disposition) *disposition = created ? REG_CREATED_NEW_KEY : REG_OPENED_EXISTING_KEY;
  return ERROR_SUCCESS;
}

LSTATUS QueryValue(HKEY handle, LPCSTR value_name, DWORD* type, BYTE* data, DWORD* size) {
  if (data && !size) return ERROR_INVALID_PARAMETER;
  auto lease = Session::OfThisThread().Use();
  Name name = MakeName(value_name ? value_name : "");
  if (LSTATUS refused = CheckRight(handle, KEY_QUERY_VALUE)) return refused;
  Connection* connection = lease.ForReading();
  if (KeyId key = KeyOf(connection, handle); connection && key != 0) {
    if (const auto& value = connection->look_ups().FindValue(key, name.folded)) {
      if (type) *type = value->type;
      return CopyData(value->data, data, size);
    }
    PathOf(connection, handle);  // reports a key that was deleted
  }
  if (type) *type = REG_NONE;
  if (size && !data) *size = 0;
  return ERROR_FILE_NOT_FOUND;
}

// False where there is no such value.
bool ChangeValue(Connection& connection, KeyId key, const Name& name, DWORD type, const std::string& bytes) {
  Query query(connection.Get(Sql::kChangeValue));
  query->Bind(1, key).Bind(2, name.folded).Bind(3, std::int64_t{type}).BindBlob(4, bytes);
  query->Step();
  return connection.changes() == 1;
}

// False where there is no such key.
bool AddValue(Connection& connection, KeyId key, const Name& name, DWORD type, const std::string& bytes) {
  Query query(connection.Get(Sql::kAddValue));
  query->Bind(1, key).Bind(2, name.folded).Bind(3, name.text).Bind(4, std::int64_t{type}).BindBlob(5, bytes);
  query->Step();
  return connection.changes() == 1;
}

LSTATUS SetValue(HKEY handle, LPCSTR value_name, DWORD type, const BYTE* data, DWORD size) {
  if (!data && size != 0) return ERROR_NOACCESS;
  auto lease = Session::OfThisThread().Use();
  Name name = MakeName(value_name ? value_name : "");
  if (std::strlen(value_name ? value_name : "") > kMaxValueNameLength) return ERROR_INVALID_PARAMETER;
  std::string bytes;
  if (size != 0) bytes.assign(reinterpret_cast<const char*>(data), size);
  if (type == REG_SZ && !bytes.empty() && bytes.back() != '\0') bytes.push_back('\0');
  if (LSTATUS refused = CheckRight(handle, KEY_SET_VALUE)) return refused;
  lease.RequireRights();
  Connection& connection = lease.ForWriting();
  Transaction whole(connection, Transaction::Kind::kWrite);
  KeyId key = KeyOf(&connection, handle);
  if (key == 0) key = AddPath(connection, ClassesPath());
  if (!ChangeValue(connection, key, name, type, bytes) && !AddValue(connection, key, name, type, bytes))
    return ERROR_KEY_DELETED;
  whole.Commit();
  return ERROR_SUCCESS;
}

// The entry of a list, null past its end; valid until the next look-up.
template <class Entry, class Position>
const Entry* EntryAt(Connection& connection, HKEY handle, KeyId key, DWORD index,
                     Position Positions::*which) {
  LookUps& look_ups = connection.look_ups();
  if (auto known = look_ups.KnownEntryAt<Entry>(key, index)) return *known;
  HandleTable& handles = HandleTable::Instance();
  Positions positions = handles.GetPositions(handle, connection.file_id(), key, connection.batch());
  const Entry* entry = look_ups.EntryAt<Entry>(key, index, positions.*which);
  handles.SetPositions(handle, positions);
  return entry;
}

LSTATUS EnumKey(HKEY handle, DWORD index, LPSTR name, DWORD* name_length, LPSTR class_name,
                DWORD* class_length, FILETIME* written) {
  if (!name || !name_length) return ERROR_INVALID_PARAMETER;
  auto lease = Session::OfThisThread().Use();
  if (LSTATUS refused = CheckRight(handle, KEY_ENUMERATE_SUB_KEYS)) return refused;
  Connection* connection = lease.ForReading();
  KeyId key = KeyOf(connection, handle);
  if (!connection || key == 0) return ERROR_NO_MORE_ITEMS;
  const auto* entry = EntryAt<SubkeyEntry>(*connection, handle, key, index, &Positions::subkeys);
  if (!entry) return ERROR_NO_MORE_ITEMS;
  LSTATUS result = CopyName(entry->name, name, name_length);
  if (result != ERROR_SUCCESS) return result;
  // Keys carry neither a class nor a time here.
  if (class_name && class_length && *class_length > 0) *class_name = '\0';
  if (class_length) *class_length = 0;
  if (written) *written = {};
  return ERROR_SUCCESS;
}

LSTATUS EnumValue(HKEY handle, DWORD index, LPSTR name, DWORD* name_length, DWORD* type, BYTE* data,
                  DWORD* size) {
  if (!name || !name_length || (data && !size)) return ERROR_INVALID_PARAMETER;
  auto lease = Session::OfThisThread().Use();
  if (LSTATUS refused = CheckRight(handle, KEY_QUERY_VALUE)) return refused;
  Connection* connection = lease.ForReading();
  KeyId key = KeyOf(connection, handle);
  if (!connection || key == 0) return ERROR_NO_MORE_ITEMS;
  const auto* entry = EntryAt<ValueEntry>(*connection, handle, key, index, &Positions::values);
  if (!entry) return ERROR_NO_MORE_ITEMS;
  if (type) *type = entry->type;
  LSTATUS name_result = CopyName(entry->name, name, name_length);
  if (name_result != ERROR_SUCCESS) {
    if (size) *size = static_cast<DWORD>(entry->data.size());
    return name_result;
  }
  return CopyData(entry->data, data, size);
}

LSTATUS DeleteKey(HKEY handle, LPCSTR subkey) {
  if (!subkey) return ERROR_INVALID_PARAMETER;
  auto lease = Session::OfThisThread().Use();
  Name relative = MakePath(subkey);
  Opened(handle);
  Connection* existing = lease.ForReading();
  Name path = JoinPaths(PathOf(existing, handle), std::move(relative));
  if (FindKey(existing, path) == 0) return ERROR_FILE_NOT_FOUND;
  if (path.folded.empty()) return ERROR_ACCESS_DENIED;
  lease.RequireRights();
  Connection& connection = lease.ForWriting();
  Transaction whole(connection, Transaction::Kind::kWrite);
  PathOf(&connection, handle);  // nothing is deleted through a key that was itself deleted meanwhile
  KeyId key = FindKey(&connection, path);
  if (key == 0) return ERROR_FILE_NOT_FOUND;
  {
    Query query(connection.Get(Sql::kHasSubkeys));
    query->Bind(1, key);
    if (query->Step()) return ERROR_ACCESS_DENIED;
  }
  {
    Query query(connection.Get(Sql::kDeleteKey));
    query->Bind(1, key);
    query->Step();
  }
  whole.Commit();
  return ERROR_SUCCESS;
}

LSTATUS DeleteValue(HKEY handle, LPCSTR value_name) {
  auto lease = Session::OfThisThread().Use();
  Name name = MakeName(value_name ? value_name : "");
  if (LSTATUS refused = CheckRight(handle, KEY_SET_VALUE)) return refused;
  Connection* existing = lease.ForReading();
  KeyId key = KeyOf(existing, handle);
  PathOf(existing, handle);  // reports a key that was deleted
  if (!existing || key == 0) return ERROR_FILE_NOT_FOUND;
  lease.RequireRights();
  Connection& connection = lease.ForWriting();
  Query query(connection.Get(Sql::kDeleteValue));
  query->Bind(1, key).Bind(2, name.folded);
  query->Step();
  return connection.changes() == 1 ? ERROR_SUCCESS : ERROR_FILE_NOT_FOUND;
}

}  // namespace
}  // namespace moxel::platform

using moxel::platform::Answer;

LSTATUS RegOpenKeyExA(HKEY hKey, LPCSTR lpSubKey, DWORD, REGSAM samDesired, HKEY* phkResult) {
  return Answer([&] { return moxel::platform::OpenKey(hKey, lpSubKey, samDesired, phkResult); });
}

LSTATUS RegCreateKeyExA(HKEY hKey, LPCSTR lpSubKey, DWORD, LPSTR, DWORD, REGSAM samDesired,
                        const SECURITY_ATTRIBUTES*, HKEY* phkResult, DWORD* lpdwDisposition) {
  return Answer(
      [&] { return moxel::platform::CreateKey(hKey, lpSubKey, samDesired, phkResult, lpdwDisposition); });
}

LSTATUS RegQueryValueExA(HKEY hKey, LPCSTR lpValueName, DWORD*, DWORD* lpType, BYTE* lpData,
                         DWORD* lpcbData) {
  return Answer([&] { return moxel::platform::QueryValue(hKey, lpValueName, lpType, lpData, lpcbData); });
}

LSTATUS RegSetValueExA(HKEY hKey, LPCSTR lpValueName, DWORD, DWORD dwType, const BYTE* lpData, DWORD cbData) {
  return Answer([&] { return moxel::platform::SetValue(hKey, lpValueName, dwType, lpData, cbData); });
}

LSTATUS RegEnumKeyExA(HKEY hKey, DWORD dwIndex, LPSTR lpName, DWORD* lpcchName, DWORD*, LPSTR lpClass,
                      DWORD* lpcchClass, FILETIME* lpftLastWriteTime) {
  return Answer([&] {
    return moxel::platform::EnumKey(hKey, dwIndex, lpName, lpcchName, lpClass, lpcchClass, lpftLastWriteTime);
  });
}

LSTATUS RegEnumValueA(HKEY hKey, DWORD dwIndex, LPSTR lpValueName, DWORD* lpcchValueName, DWORD*,
                      DWORD* lpType, BYTE* lpData, DWORD* lpcbData) {
  return Answer([&] {
    return moxel::platform::EnumValue(hKey, dwIndex, lpValueName, lpcchValueName, lpType, lpData, lpcbData);
  });
}

LSTATUS RegDeleteKeyA(HKEY hKey, LPCSTR lpSubKey) {
  return Answer([&] { return moxel::platform::DeleteKey(hKey, lpSubKey); });
}

LSTATUS RegDeleteValueA(HKEY hKey, LPCSTR lpValueName) {
  return Answer([&] { return moxel::platform::DeleteValue(hKey, lpValueName); });
}

LSTATUS RegCloseKey(HKEY hKey) {
  return Answer([&] {
    return moxel::platform::HandleTable::Instance().Close(hKey) ? ERROR_SUCCESS : ERROR_INVALID_HANDLE;
  });
}
