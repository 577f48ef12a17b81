#include "component/module.h"

#include <atomic>

namespace moxel::component {
namespace {

std::atomic<long> locks{0};

}  // namespace

void LockModule() { locks.fetch_add(1, std::memory_order_relaxed); }

void UnlockModule() { locks.fetch_sub(1, std::memory_order_release); }

bool IsModuleInUse() { return locks.load(std::memory_order_acquire) != 0; }

}  // namespace moxel::component
