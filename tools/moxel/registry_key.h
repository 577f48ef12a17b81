#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "moxel/key_path.h"
#include "moxel/reg_document.h"

namespace moxel::tool {

struct RegistryValue {
  std::string name;
  RegData data;
};

// An open key of the registry; closes its handle. Every failure that is not stated otherwise throws
// ToolError, with the key's name, and where there is one the path of the registry file and the cause.
class RegistryKey {
 public:
  // Nothing when the key does not exist.
  static std::optional<RegistryKey> Open(const KeyPath& path, REGSAM access);
  // Creates what is missing of the path; an existing key is only opened.
  static RegistryKey Create(const KeyPath& path);

  RegistryKey(RegistryKey&& other) noexcept;
  RegistryKey& operator=(RegistryKey&& other) noexcept;
  ~RegistryKey();

  const KeyPath& path() const { return path_; }

  // Nothing when there is no such subkey, or when this key was deleted meanwhile.
  std::optional<RegistryKey> OpenSubkey(const std::string& name, REGSAM access) const;

  // Of any length and number, in the registry's order; they end early when this key is deleted meanwhile.
  std::vector<std::string> SubkeyNames() const;
  std::optional<std::string> FirstSubkeyName() const { return SubkeyName(0); }
  std::vector<RegistryValue> Values() const;

  void SetValue(const std::string& name, const RegData& data) const;
  // False when there was none.
  bool DeleteValue(const std::string& name) const;
  bool DeleteSubkey(const std::string& name) const;

 private:
  RegistryKey(KeyPath path, HKEY handle) : path_(std::move(path)), handle_(handle) {}

  std::optional<std::string> SubkeyName(DWORD index) const;
  std::optional<RegistryValue> Value(DWORD index) const;

  KeyPath path_;
  HKEY handle_;
};

// The same key, its components in the letter case in which they are stored; a path that does not exist is
// unchanged.
KeyPath StoredPath(const KeyPath& path);

// Visits the key and all below it, parents before children. False when the key does not exist.
bool WalkTree(const KeyPath& root, const std::function<void(const RegistryKey&)>& visit);

// Deletes the key with all below it; how many keys that were, 0 when it did not exist. Begin a transaction
// first: the deletion goes key by key.
size_t DeleteTree(const KeyPath& path);

// Makes the thread's registry calls one transaction, which is undone unless it was committed.
class RegistryTransaction {
 public:
  RegistryTransaction();
  ~RegistryTransaction();
  RegistryTransaction(const RegistryTransaction&) = delete;
  RegistryTransaction& operator=(const RegistryTransaction&) = delete;

  void Commit();

 private:
  bool open_ = true;
};

}  // namespace moxel::tool
