#include "platform/registry/handles.h"

namespace moxel::platform {
namespace {

constexpr HKEY kHandleStep = 4;

}  // namespace

HandleTable& HandleTable::Instance() {
  static HandleTable* const table =
      new HandleTable;  // clients close handles until the very end of the process
  return *table;
}

HandleTable::HandleTable() {
  records_[HKEY_LOCAL_MACHINE] = {{kRootKey, KEY_ALL_ACCESS}, nullptr};
  records_[HKEY_CLASSES_ROOT] = {{0, KEY_ALL_ACCESS}, nullptr};
}

HandleTable::Record* HandleTable::Find(HKEY handle) {
  auto found = records_.find(handle);
  return found == records_.end() ? nullptr : &found->second;
}

// Numbers are used in turn, so that a handle closed twice does not close another's.
HKEY HandleTable::Open(KeyHandle handle) {
  std::lock_guard lock(mutex_);
  while (records_.count(next_) != 0) next_ += kHandleStep;
  HKEY number = next_;
  records_[number] = {handle, nullptr};
  next_ = number + kHandleStep < HKEY_CLASSES_ROOT ? number + kHandleStep : 0x100;
  return number;
}

bool HandleTable::Close(HKEY handle) {
  std::lock_guard lock(mutex_);
  if (handle >= HKEY_CLASSES_ROOT) return Find(handle) != nullptr;
  return records_.erase(handle) == 1;
}

std::optional<KeyHandle> HandleTable::Get(HKEY handle) {
  std::lock_guard lock(mutex_);
  const Record* record = Find(handle);
  return record ? std::optional(record->handle) : std::nullopt;
}

Positions HandleTable::GetPositions(HKEY handle, const std::string& file, KeyId key, std::uint64_t batch) {
  std::lock_guard lock(mutex_);
  Positions positions{file, key, batch, {}, {}};
  const Record* record = Find(handle);
  if (!record || !record->positions) return positions;
  const Positions& kept = *record->positions;
  if (kept.key == key && kept.file == file && (kept.batch == 0 || kept.batch == batch)) {
    positions.subkeys = kept.subkeys;
    positions.values = kept.values;
  }
  return positions;
}

void HandleTable::SetPositions(HKEY handle, const Positions& positions) {
  std::lock_guard lock(mutex_);
  Record* record = Find(handle);
  if (!record) return;  // closed meanwhile by another thread
  if (!record->positions) record->positions = std::make_unique<Positions>();
  *record->positions = positions;
}

}  // namespace moxel::platform
