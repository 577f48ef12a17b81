#include "fault_vfs.h"

#include <cerrno>
#include <cstddef>

namespace moxel::test {
namespace {

Fault fault;
int met = 0;
bool struck = false;

// The code of the fault where it is this operation's turn to fail; else 0.
int Strike(Operation operation) {
  if (operation != fault.operation || fault.operation == Operation::kNone) return SQLITE_OK;
  ++met;
  if (met != fault.at && (met < fault.at || !fault.lasts)) return SQLITE_OK;
  struck = true;
  errno = fault.error_number;
  return fault.code;
}

sqlite3_vfs* real_system = nullptr;

struct File {
  const sqlite3_io_methods* methods;
  sqlite3_file* RealFile() { return reinterpret_cast<sqlite3_file*>(this + 1); }
};

sqlite3_file* RealOf(sqlite3_file* file) { return reinterpret_cast<File*>(file)->RealFile(); }

template <auto kMethod, Operation kOperation = Operation::kNone, class Result, class... Arguments>
Result Forward(sqlite3_file* file, Arguments... arguments) {
  if constexpr (kOperation != Operation::kNone)
    if (int code = Strike(kOperation)) return code;
  sqlite3_file* real = RealOf(file);
  return (real->pMethods->*kMethod)(real, arguments...);
}

// A disk that fills up takes the first half.
int Write(sqlite3_file* file, const void* data, int size, sqlite3_int64 offset) {
  sqlite3_file* real = RealOf(file);
  if (int code = Strike(Operation::kWrite)) {
    const int error_number = errno;
    real->pMethods->xWrite(real, data, size / 2, offset);
    errno = error_number;
    return code;
  }
  return real->pMethods->xWrite(real, data, size, offset);
}

// Only taking a lock fails: giving one back does not, and nobody could help it.
int LockIndex(sqlite3_file* file, int offset, int count, int flags) {
  const int code = (flags & SQLITE_SHM_LOCK) != 0 ? Strike(Operation::kShmLock) : SQLITE_OK;
  sqlite3_file* real = RealOf(file);
  return code != 0 ? code : real->pMethods->xShmLock(real, offset, count, flags);
}

using Methods = sqlite3_io_methods;

const Methods kMethods = {3,
                          Forward<&Methods::xClose>,
                          Forward<&Methods::xRead, Operation::kRead>,
                          Write,
                          Forward<&Methods::xTruncate, Operation::kTruncate>,
                          Forward<&Methods::xSync, Operation::kSync>,
                          Forward<&Methods::xFileSize, Operation::kFileSize>,
                          Forward<&Methods::xLock, Operation::kLock>,
                          Forward<&Methods::xUnlock>,
                          Forward<&Methods::xCheckReservedLock>,
                          Forward<&Methods::xFileControl>,
                          Forward<&Methods::xSectorSize>,
                          Forward<&Methods::xDeviceCharacteristics>,
                          Forward<&Methods::xShmMap, Operation::kShmMap>,
                          LockIndex,
                          Forward<&Methods::xShmBarrier>,
                          Forward<&Methods::xShmUnmap>,
                          Forward<&Methods::xFetch>,
                          Forward<&Methods::xUnfetch>};

int Open(sqlite3_vfs*, const char* name, sqlite3_file* file, int flags, int* granted) {
  auto* own = reinterpret_cast<File*>(file);
  own->methods = nullptr;
  own->RealFile()->pMethods = nullptr;
  if (int code = Strike(Operation::kOpen)) return code;
  const int code = real_system->xOpen(real_system, name, own->RealFile(), flags, granted);
  if (own->RealFile()->pMethods != nullptr) own->methods = &kMethods;
  return code;
}

int Delete(sqlite3_vfs*, const char* name, int sync) {
  const int code = Strike(Operation::kDelete);
  return code != 0 ? code : real_system->xDelete(real_system, name, sync);
}

int Access(sqlite3_vfs*, const char* name, int flags, int* answer) {
  const int code = Strike(Operation::kAccess);
  return code != 0 ? code : real_system->xAccess(real_system, name, flags, answer);
}

}  // namespace

void RegisterFaultyFileSystem() {
  if (real_system != nullptr) return;
  real_system = sqlite3_vfs_find(nullptr);
  static sqlite3_vfs faulty = *real_system;
  faulty.szOsFile += static_cast<int>(sizeof(File));
  faulty.zName = "faulty";
  faulty.pNext = nullptr;
  faulty.xOpen = Open;
  faulty.xDelete = Delete;
  faulty.xAccess = Access;
  sqlite3_vfs_register(&faulty, 1);
}

void SetFault(const Fault& next) {
  fault = next;
  met = 0;
  struck = false;
}

void LiftFault() { fault.operation = Operation::kNone; }

bool FaultHasStruck() { return struck; }

}  // namespace moxel::test
