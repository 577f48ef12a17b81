// Configurations as the product's other programs leave them in the registry, written and read back as text:
//
//   Scenarios\Night         Etat=dword:3  Dir=C:\Night
//   Scenarios\Night\Ordre   tsk1=Load  tsk2=Check
//
// Line breaks and two or more blanks separate. What has no "=" is the path of a key below the product's root,
// what has one is a value of the key before it, without name where nothing stands before the "=". Its data:
// dword:7 a number, real:2.5 the eight bytes of a double, hidden:abc a scrambled text, nothing: no byte at
// all, and everything else a text.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "moxel/platform/registry_file.h"
#include "tests/support/stored_records.h"

namespace moxel::test {

inline std::vector<std::string> TokensOf(std::string_view text) {
  std::vector<std::string> tokens;
  while (!text.empty()) {
    const std::size_t end = std::min({text.find('\n'), text.find("  "), text.size()});
    const std::string_view token = text.substr(0, end);
    const std::size_t begin = token.find_first_not_of(' ');
    if (begin != token.npos)
      tokens.emplace_back(token.substr(begin, token.find_last_not_of(' ') + 1 - begin));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return tokens;
}

inline bool IsKey(const std::string& token) { return token.find('=') == std::string::npos; }

inline Stored StoredFrom(const std::string& data) {
  const std::size_t colon = data.find(':') + 1;
  if (data.starts_with("dword:")) return StoredNumber(std::stoi(data.substr(colon)));
  if (data.starts_with("real:")) return StoredReal(std::stod(data.substr(colon)));
  if (data.starts_with("hidden:")) return StoredPassword(data.substr(colon));
  if (data == "nothing:") return {REG_SZ, ""};
  return StoredText(data);
}

inline std::string TextOf(const Stored& stored) {
  std::string bytes = stored.bytes;
  if (bytes.empty()) return "nothing:";
  if (stored.type == REG_DWORD && bytes.size() == sizeof(double)) {
    double number;
    std::memcpy(&number, bytes.data(), sizeof number);
    char digits[40];
    std::snprintf(digits, sizeof digits, "real:%.17g", number);
    return digits;
  }
  if (stored.type == REG_DWORD) {
    std::int32_t number = 0;
    std::memcpy(&number, bytes.data(), std::min(bytes.size(), sizeof number));
    return "dword:" + std::to_string(number);
  }
  bytes.pop_back();
  auto is_hidden = [](char byte) { return byte < 0 && static_cast<char>(~byte) >= ' '; };
  if (bytes.empty() || !std::all_of(bytes.begin(), bytes.end(), is_hidden)) return bytes;
  return "hidden:" + StoredPassword(bytes).bytes.substr(0, bytes.size());
}

// Writes a configuration into the registry, over what is there.
inline void Configure(std::string_view text) {
  ASSERT_EQ(RegFileBegin(), 0);
  std::string path;
  for (const std::string& token : TokensOf(text)) {
    if (IsKey(token)) path = AbsolutePath(token);
    const Key key = Create(HKEY_LOCAL_MACHINE, path);
    if (IsKey(token)) continue;
    const std::size_t equals = token.find('=');
    const Stored stored = StoredFrom(token.substr(equals + 1));
    ASSERT_EQ(Set(key, token.substr(0, equals), stored.bytes, stored.type), 0) << token;
  }
  ASSERT_EQ(RegFileCommit(), 0);
}

// What lies in the registry at a path and below it, one key a line; empty where nothing does.
inline std::string ConfigurationAt(const std::string& path) {
  if (!Exists(path)) return {};
  std::string text = path;
  for (const auto& [name, stored] : ReadRecord(path)) text += "  " + name + "=" + TextOf(stored);
  text += '\n';
  const Key key = Open(HKEY_LOCAL_MACHINE, AbsolutePath(path));
  for (DWORD index = 0; const auto name = NameAt(kSubkeys, key, index); ++index)
    text += ConfigurationAt(path + '\\' + *name);
  return text;
}

// A configuration in the form in which ConfigurationAt answers, keys in the order given.
inline std::string Tidy(std::string_view text) {
  std::string tidy;
  for (const std::string& token : TokensOf(text))
    tidy += (!IsKey(token) ? "  " : tidy.empty() ? "" : "\n") + token;
  return tidy + (tidy.empty() ? "" : "\n");
}

}  // namespace moxel::test
