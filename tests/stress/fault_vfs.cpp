#include "fault_vfs.h"

#include <cerrno>

namespace moxel::test {
namespace {

Fault fault;
int met = 0;

// The code of the fault where it is this call's turn to fail; else 0.
int Strike(Call call) {
  if (call != fault.call || call == kNone) return SQLITE_OK;
  if (++met < fault.at || (met > fault.at && !fault.lasts)) return SQLITE_OK;
  errno = fault.error_number;
  return fault.code;
}

sqlite3_vfs* real_system = nullptr;

// The real system's file lies behind ours, which is nothing but its methods.
sqlite3_file* RealOf(sqlite3_file* file) { return file + 1; }

template <auto kMethod, Call kCall = kNone, class Result, class... Arguments>
Result Forward(sqlite3_file* file, Arguments... arguments) {
  if constexpr (kCall != kNone)
    if (int code = Strike(kCall)) return code;
  sqlite3_file* real = RealOf(file);
  return (real->pMethods->*kMethod)(real, arguments...);
}

// A disk that fills up takes the first half.
int Write(sqlite3_file* file, const void* data, int size, sqlite3_int64 offset) {
  sqlite3_file* real = RealOf(file);
  if (int code = Strike(kWrite)) {
    const int error_number = errno;
    real->pMethods->xWrite(real, data, size / 2, offset);
    errno = error_number;
    return code;
  }
  return real->pMethods->xWrite(real, data, size, offset);
}

// Only taking a lock fails: giving one back does not, and nobody could help it.
int LockIndex(sqlite3_file* file, int offset, int count, int flags) {
  const int code = (flags & SQLITE_SHM_LOCK) != 0 ? Strike(kMapLock) : SQLITE_OK;
  sqlite3_file* real = RealOf(file);
  return code != 0 ? code : real->pMethods->xShmLock(real, offset, count, flags);
}

using Methods = sqlite3_io_methods;

const Methods kMethods = {3,
                          Forward<&Methods::xClose>,
                          Forward<&Methods::xRead, kRead>,
                          Write,
                          Forward<&Methods::xTruncate, kTruncate>,
                          Forward<&Methods::xSync, kSync>,
                          Forward<&Methods::xFileSize, kSize>,
                          Forward<&Methods::xLock, kLock>,
                          Forward<&Methods::xUnlock>,
                          Forward<&Methods::xCheckReservedLock>,
                          Forward<&Methods::xFileControl>,
                          Forward<&Methods::xSectorSize>,
                          Forward<&Methods::xDeviceCharacteristics>,
                          Forward<&Methods::xShmMap, kMap>,
                          LockIndex,
                          Forward<&Methods::xShmBarrier>,
                          Forward<&Methods::xShmUnmap>,
                          Forward<&Methods::xFetch>,
                          Forward<&Methods::xUnfetch>};

int Open(sqlite3_vfs*, const char* name, sqlite3_file* file, int flags, int* granted) {
  file->pMethods = RealOf(file)->pMethods = nullptr;
  if (int code = Strike(kOpen)) return code;
  const int code = real_system->xOpen(real_system, name, RealOf(file), flags, granted);
  if (RealOf(file)->pMethods != nullptr) file->pMethods = &kMethods;
  return code;
}

template <auto kMethod, Call kCall, class... Arguments>
int OfSystem(sqlite3_vfs*, Arguments... arguments) {
  const int code = Strike(kCall);
  return code != 0 ? code : (real_system->*kMethod)(real_system, arguments...);
}

}  // namespace

void RegisterFaultyFileSystem() {
  if (real_system != nullptr) return;
  real_system = sqlite3_vfs_find(nullptr);
  static sqlite3_vfs faulty = *real_system;
  faulty.szOsFile += static_cast<int>(sizeof(sqlite3_file));
  faulty.zName = "faulty";
  faulty.pNext = nullptr;
  faulty.xOpen = Open;
  faulty.xDelete = OfSystem<&sqlite3_vfs::xDelete, kDelete>;
  faulty.xAccess = OfSystem<&sqlite3_vfs::xAccess, kAccess>;
  sqlite3_vfs_register(&faulty, 1);
}

void SetFault(const Fault& next) {
  fault = next;
  met = 0;
}

void LiftFault() { fault.call = kNone; }

bool FaultHasStruck() { return met >= fault.at; }

}  // namespace moxel::test
