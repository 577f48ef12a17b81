// Walking over what lies below a key, as loaders do.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "registry/store.h"

namespace moxel {

// A key open for as long as this object lives; none where it cannot be opened.
class OpenedKey {
 public:
  OpenedKey(std::u16string_view path, REGSAM access) : opened_(RegOpenKeyPath(path, handle_, access)) {}
  ~OpenedKey() {
    if (opened_) RegCloseKeyHandle(handle_);
  }
  OpenedKey(const OpenedKey&) = delete;
  OpenedKey& operator=(const OpenedKey&) = delete;

  explicit operator bool() const { return opened_ != VARIANT_FALSE; }
  StoreHandle handle() const { return handle_; }

 private:
  StoreHandle handle_ = 0;
  Status opened_;
};

inline bool KeyExists(std::u16string_view path) { return bool(OpenedKey(path, KEY_ENUMERATE_SUB_KEYS)); }

// Visits the name of each subkey in turn; none where the key cannot be opened.
template <class Visit>
void ForEachSubKey(std::u16string_view path, Visit&& visit) {
  OpenedKey key(path, KEY_ENUMERATE_SUB_KEYS);
  if (!key) return;
  std::u16string name;
  for (std::int32_t index = 0; RegEnumSubKeys(key.handle(), index, name); ++index) visit(std::as_const(name));
}

// Visits the name and the data of each value in turn; none where the key cannot be opened. A value without
// name or without data is visited with that of the value before it.
template <class Visit>
void ForEachValue(std::u16string_view path, REGSAM access, Visit&& visit) {
  OpenedKey key(path, access);
  if (!key) return;
  std::u16string name;
  std::u16string data;
  for (std::int32_t index = 0; RegEnumValues(key.handle(), index, data, &name); ++index)
    visit(std::as_const(name), std::as_const(data));
}

}  // namespace moxel
