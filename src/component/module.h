// What keeps the library loaded: objects alive and server locks.
#pragma once

namespace moxel::component {

void LockModule();
void UnlockModule();
bool IsModuleInUse();

// Held by every object for its life.
class ModuleLock {
 public:
  ModuleLock() { LockModule(); }
  ~ModuleLock() { UnlockModule(); }
  ModuleLock(const ModuleLock&) = delete;
  ModuleLock& operator=(const ModuleLock&) = delete;
};

}  // namespace moxel::component
