#include "platform/registry/change_mark.h"

#include <atomic>

namespace moxel::platform {
namespace {

// The first piece of the shared index and what its header is, as the database library's file format says.
constexpr int kIndexPieceSize = 32768;
constexpr std::uint32_t kHeaderVersion = 3007000;
constexpr std::size_t kInitializedWord = 3;

ChangeMark Load(std::uint32_t* words) {
  ChangeMark mark;
  for (std::size_t i = 0; i < mark.size(); ++i)
    mark[i] = std::atomic_ref(words[i]).load(std::memory_order_acquire);
  return mark;
}

}  // namespace

ChangeMarkReader::ChangeMarkReader(sqlite3* database) {
  sqlite3_file* file = nullptr;
  sqlite3_file_control(database, "main", SQLITE_FCNTL_FILE_POINTER, &file);
  if (!file || !file->pMethods || file->pMethods->iVersion < 2) return;
  void volatile* piece = nullptr;
  // Already mapped by the connection's own reading, or else not to be had. Read-only memory will do.
  file->pMethods->xShmMap(file, 0, kIndexPieceSize, 0, &piece);
  header_ = static_cast<std::uint32_t*>(const_cast<void*>(piece));
}

// A writer changes the second copy first: who finds the first one changed finds both.
std::optional<ChangeMark> ChangeMarkReader::Read() const {
  if (!header_) return std::nullopt;
  const ChangeMark first = Load(header_);
  const ChangeMark second = Load(header_ + first.size());
  const bool initialized = first[0] == kHeaderVersion && (first[kInitializedWord] & 0xFF) != 0;
  if (!initialized || first != second) return std::nullopt;
  return first;
}

}  // namespace moxel::platform
