// A file system below SQLite that fails when it is told to. It passes everything on to the real one.
#pragma once

#include <sqlite3.h>

namespace moxel::test {

enum Call { kNone, kOpen, kDelete, kAccess, kRead, kWrite, kTruncate, kSync, kSize, kLock, kMap, kMapLock };

struct Fault {
  Call call = kNone;
  int code = 0;          // what the call answers, as SQLite knows it
  int error_number = 0;  // and as the system does
  int at = 0;            // the first one that fails
  bool lasts = false;    // as do all behind it
};

// Takes the place of the default file system of the process.
void RegisterFaultyFileSystem();

// From now on, until the next call. Not while other threads use files.
void SetFault(const Fault& fault);
void LiftFault();

// Whether the fault that was last set has struck.
bool FaultHasStruck();

}  // namespace moxel::test
