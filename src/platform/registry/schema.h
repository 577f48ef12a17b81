// The file's layout and every statement that runs on it.
//
// keys     one row a key. `path` is the folded path from the hive's root: a key is found in one look-up
// however deep it
//          lies, and siblings sort by it as by their names. Ids are never used again, so a handle on a
//          deleted key stays dead (unless a restore brings that very key back).
// vals     one row a value, found by the key and the folded name in one look-up; `ordinal` is its place among
// the key's values. changes  the latest additions to and removals from each list (the subkeys of key k are
// list 2k, its values 2k + 1),
//          with the place where they happened. From them a handle that steps through a list by index corrects
//          its position instead of counting from the start.
#pragma once

#include <cstddef>
#include <cstdint>

namespace moxel::platform {

inline constexpr std::int64_t kApplicationId = 0x4D4F5852;
inline constexpr std::int64_t kSchemaVersion = 1;

using KeyId = std::int64_t;
inline constexpr KeyId kRootKey = 1;

// How many changes of a list are kept. A list that changes more often than that between two steps of an
// enumeration is counted from its start again, which then costs less than the changes did.
inline constexpr std::int64_t kKeptChanges = 64;

extern const char* const kCreateSchema;

enum class Sql {
  kFindKey,
  kPathOfKey,
  kAddKey,
  kHasSubkeys,
  kDeleteKey,
  kFindValue,
  kAllValues,
  kChangeValue,
  kAddValue,
  kDeleteValue,
  kListVersion,
  kListChanges,
  kNextSubkey,
  kPreviousSubkey,
  kNextValue,
  kPreviousValue,
  kFollowingSubkeys,
  kFollowingValues,
  kBegin,
  kBeginWriting,
  kCommit,
  kBeginNested,
  kCommitNested,
};
inline constexpr std::size_t kSqlCount = 23;

const char* TextOf(Sql sql);

}  // namespace moxel::platform
