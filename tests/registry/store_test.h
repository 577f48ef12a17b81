// What the store's tests share: the stored form of a value, put there and looked at without the store.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <tuple>

#include "moxel/variant.h"
#include "registry/ansi.h"
#include "tests/platform/locale/scoped_locale.h"
#include "tests/support/product_test.h"
#include "tests/support/stored_records.h"

namespace moxel::test {

using namespace std::string_literals;

// A table of cases.
auto Cases(auto... rows) { return std::array{std::move(rows)...}; }

class StoreTest : public ProductTest {
 protected:
  static std::string Long(std::size_t size) { return std::string(size, 'x'); }

  static Key CreateKey(const std::string& path) { return Create(HKEY_LOCAL_MACHINE, AbsolutePath(path)); }
  static Key OpenKey(const std::string& path) { return Open(HKEY_LOCAL_MACHINE, AbsolutePath(path)); }

  static void Put(const std::string& path, const std::string& name, DWORD type, const std::string& bytes) {
    WriteRecord(path, {{name, {type, bytes}}});
  }

  static std::optional<Stored> Find(const std::string& path, const std::string& name) {
    for (const auto& [found, stored] : ReadRecord(path))
      if (found == name) return stored;
    return std::nullopt;
  }

  // A value as it reads in a table of cases: a number, a text in quotes or "empty".
  static std::string Shown(const Variant& value) {
    if (value.is_empty()) return "empty";
    if (value.is_text()) return "'" + ToAnsi(value.text()) + "'";
    return value.vt == VT_I4 ? std::to_string(value.lVal) : "type " + std::to_string(value.vt);
  }

  // Numbers in texts are written with a point, whatever the locale of the machine.
  ScopedLocale locale_{"C"};
};

}  // namespace moxel::test
