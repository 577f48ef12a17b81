// What the product keeps in the registry, byte by byte. Needs nothing but the platform.
#pragma once

#include <gtest/gtest.h>

#include <cstring>
#include <ostream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tests/support/registry_access.h"

namespace moxel::test {

// The type and the bytes of a value in the registry.
struct Stored {
  DWORD type = REG_NONE;
  std::string bytes;
  bool operator==(const Stored&) const = default;
};

inline std::ostream& operator<<(std::ostream& out, const Stored& stored) {
  out << "type " << stored.type << ":";
  for (const char byte : stored.bytes.substr(0, 40)) out << ' ' << int{static_cast<unsigned char>(byte)};
  return out;
}

template <class Number>
std::string BytesOf(Number number) {
  std::string bytes(sizeof number, '\0');
  std::memcpy(bytes.data(), &number, sizeof number);
  return bytes;
}

inline Stored StoredText(std::string_view text) { return {REG_SZ, std::string(text) + '\0'}; }
inline Stored StoredNumber(std::int32_t number) { return {REG_DWORD, BytesOf(number)}; }
inline Stored StoredReal(double number) { return {REG_DWORD, BytesOf(number)}; }
inline Stored StoredPassword(std::string text) {
  for (char& byte : text) byte = static_cast<char>(~byte);
  return StoredText(text);
}

// All values of a key in the order in which they were first written; nothing for a missing key.
using Record = std::vector<std::pair<std::string, Stored>>;

inline std::string AbsolutePath(const std::string& path) { return "SOFTWARE\\MOXEL\\" + path; }

inline bool Exists(const std::string& path) {
  return Open(HKEY_LOCAL_MACHINE, AbsolutePath(path)).answer == 0;
}

inline Record ReadRecord(const std::string& path) {
  Record record;
  const Key key = Open(HKEY_LOCAL_MACHINE, AbsolutePath(path));
  for (DWORD index = 0; const auto name = NameAt(kValues, key, index); ++index) {
    Stored stored;
    RegQueryValueExA(key, name->c_str(), nullptr, &stored.type, nullptr, nullptr);
    stored.bytes = Get(key, *name).value_or("unreadable");
    record.emplace_back(*name, stored);
  }
  return record;
}

inline void WriteRecord(const std::string& path, const Record& record) {
  Key key = Create(HKEY_LOCAL_MACHINE, AbsolutePath(path));
  for (const auto& [name, stored] : record) ASSERT_EQ(Set(key, name, stored.bytes, stored.type), 0) << name;
}

inline void SetLanguage(const Stored& language) { WriteRecord("Configuration", {{"Lang", language}}); }

}  // namespace moxel::test
