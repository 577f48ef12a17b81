// Administration of the file that stands in for the registry. None of this exists on the real platform, so
// the component never includes this header; tools do, and clients that want to know of writes that failed.
#pragma once

#include "moxel/platform/registry.h"

#pragma GCC visibility push(default)
extern "C" {

// From RegFileBegin to RegFileCommit or RegFileRollback the calling thread's registry calls form one
// transaction: other threads and processes see all of it or nothing. It holds the write lock, so keep it
// short. ERROR_SUCCESS, or the code of the failure (ERROR_BUSY where another writer does not finish). A
// second RegFileBegin on the same thread, or an end without a begin: ERROR_INVALID_PARAMETER. A fork or a
// failed commit rolls everything back; the commit then reports it.
LSTATUS RegFileBegin(void);
LSTATUS RegFileCommit(void);
LSTATUS RegFileRollback(void);

// Checks the whole file. ERROR_SUCCESS when it is sound (a missing file is), ERROR_BADDB when not,
// RegFileCause saying what was found.
LSTATUS RegFileCheck(void);

// Copies the whole registry as it is at one moment into a file of its own, while others may go on writing. A
// file of that name is replaced once the copy is whole, and left as it was where the copy fails.
// ERROR_FILE_NOT_FOUND when there is no registry file yet, ERROR_INVALID_PARAMETER inside a transaction and
// for the registry's own name, ERROR_BUSY when a program has the file of that name open, or the code of the
// failure.
LSTATUS RegFileBackup(LPCSTR lpFile);
// Makes the registry what a backup holds, in one step, also while others use it. ERROR_BADDB, and nothing
// changed, when the backup is not sound.
LSTATUS RegFileRestore(LPCSTR lpFile);

// The path of the file and, in one line, why the calling thread's last failing registry call failed in the
// file (for example "/srv/registry.db: file is not a database"); "" when it did not. UTF-8, valid until the
// thread's next call.
LPCSTR RegFileCause(void);
LPCSTR RegFilePath(void);

}  // extern "C"
#pragma GCC visibility pop
