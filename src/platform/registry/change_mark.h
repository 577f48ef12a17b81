// Tells without a lock whether a registry file has changed. SQLite keeps the state of the log in memory that
// all processes share, in a header that every commit writes twice: what both copies say alike is the state of
// the file, and a writer that was killed between them leaves copies that differ until the next one repairs
// them.
#pragma once

#include <sqlite3.h>

#include <array>
#include <cstdint>
#include <optional>

namespace moxel::platform {

// Equal marks of one file: no change was committed between them.
using ChangeMark = std::array<std::uint32_t, 12>;

class ChangeMarkReader {
 public:
  // Reads no mark ever.
  ChangeMarkReader() = default;
  // `database` uses a log, has read its file before, and stays open for as long as marks are read.
  explicit ChangeMarkReader(sqlite3* database);

  // Nothing while a change is being committed, and for a file that has no log.
  std::optional<ChangeMark> Read() const;

 private:
  std::uint32_t* header_ = nullptr;
};

}  // namespace moxel::platform
