// Names and paths of keys and values: from the code page of the entry points to the UTF-8 of the file, where
// administrators can read them, and to the folded form under which names that differ only in letter case are
// one.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "moxel/platform.h"

namespace moxel::platform {

inline constexpr std::size_t kMaxKeyNameLength = 255;
inline constexpr std::size_t kMaxValueNameLength = 16383;
inline constexpr std::ptrdiff_t kMaxDepth = 512;

// A name or a path in both forms. They have the same length, so one offset serves both.
struct Name {
  std::string text;    // as typed, UTF-8
  std::string folded;  // upper-cased, UTF-8: its byte order is the order of the character codes
};

Name MakeName(std::string_view ansi);

// A relative key path with doubled and trailing backslashes dropped. ERROR_BAD_PATHNAME when it begins with
// one.
Name MakePath(LPCSTR ansi);

// `base` followed by `relative`, either of which may be empty.
Name JoinPaths(Name base, Name relative);

// True when a level of the path is longer than a key's name may be.
bool HasOverlongLevel(const Name& path);

// The bytes of a stored name in the code page of the entry points.
std::string ToAnsi(std::string_view utf8);

}  // namespace moxel::platform
