// Stepping through a key's subkeys or values by index at the cost of a step each, exact also while the list
// changes.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "moxel/platform.h"
#include "platform/registry/connection.h"

namespace moxel::platform {

// Where an enumeration stands: `rank` entries lie at or before `place` in version `version` of the list.
// The initial position, before all entries, holds in every version.
template <class Place>
struct Position {
  std::int64_t rank = 0;
  std::int64_t version = 0;
  Place place{};
};

using SubkeyPosition = Position<std::string>;  // place: folded path
using ValuePosition = Position<std::int64_t>;  // place: ordinal

struct SubkeyEntry {
  std::string name;  // UTF-8
  std::size_t size() const { return name.size(); }
};

struct ValueEntry {
  std::string name;  // UTF-8
  DWORD type = 0;
  std::string data;
  std::size_t size() const { return name.size() + data.size(); }
};

// The entry at a zero-based index, or nothing past the end; the position moves there.
// RegistryFailure ERROR_KEY_DELETED when the key is gone.
std::optional<SubkeyEntry> EntryAt(Connection& connection, KeyId key, std::int64_t index,
                                   SubkeyPosition& position);
std::optional<ValueEntry> EntryAt(Connection& connection, KeyId key, std::int64_t index,
                                  ValuePosition& position);

// Appends at most `count` entries behind the position, which moves with them. Right only while the list is as
// the position knows it. Stops early behind much data.
void ReadOn(Connection& connection, KeyId key, std::size_t count, SubkeyPosition& position,
            std::vector<SubkeyEntry>& entries);
void ReadOn(Connection& connection, KeyId key, std::size_t count, ValuePosition& position,
            std::vector<ValueEntry>& entries);

}  // namespace moxel::platform
