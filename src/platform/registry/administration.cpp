// Administration of the registry file: transactions over several calls, the check, and causes in words.
#include "moxel/platform/registry_file.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "platform/registry/calls.h"
#include "platform/registry/failure.h"
#include "platform/registry/session.h"

namespace moxel::platform {

std::string& LastCause() {
  thread_local std::string cause;
  return cause;
}

namespace {

LSTATUS Check() {
  auto lease = Session::OfThisThread().Use();
  if (Connection* connection = lease.ForReading()) connection->Check();
  return ERROR_SUCCESS;
}

// Written beside the file that it becomes, so that an older backup of that name is lost only to a whole one.
LSTATUS Backup(LPCSTR path) {
  if (!path || !*path) return ERROR_INVALID_PARAMETER;
  auto lease = Session::OfThisThread().Use();
  Connection* source = lease.ForReading();
  if (!source)
    throw RegistryFailure(ERROR_FILE_NOT_FOUND, std::string(Session::FilePath()) + ": there is no such file");
  if (source->in_transaction()) return ERROR_INVALID_PARAMETER;
  const std::string part = std::string(path) + ".part";
  std::remove(part.c_str());
  try {
    Connection::OpenForWriting(part)->CopyFrom(*source);
    if (std::rename(part.c_str(), path) == 0) return ERROR_SUCCESS;
    const LSTATUS code = errno == EISDIR ? ERROR_ACCESS_DENIED : ERROR_REGISTRY_IO_FAILED;
    throw RegistryFailure(code, std::string(path) + ": " + std::strerror(errno));
  } catch (const RegistryFailure&) {
    std::remove(part.c_str());
    throw;
  }
}

LSTATUS Restore(LPCSTR path) {
  if (!path || !*path) return ERROR_INVALID_PARAMETER;
  auto lease = Session::OfThisThread().Use();
  const std::unique_ptr<Connection> source = Connection::OpenForReading(path);
  if (!source) throw RegistryFailure(ERROR_FILE_NOT_FOUND, std::string(path) + ": there is no such backup");
  source->Check();
  if (!lease.MayWrite()) return ERROR_ACCESS_DENIED;
  Connection& target = lease.ForWriting();
  if (target.in_transaction()) return ERROR_INVALID_PARAMETER;
  target.CopyFrom(*source);
  return ERROR_SUCCESS;
}

}  // namespace
}  // namespace moxel::platform

using moxel::platform::Answer;
using moxel::platform::Session;

LSTATUS RegFileBegin() {
  return Answer([] { return Session::OfThisThread().Use().Begin(), ERROR_SUCCESS; });
}

LSTATUS RegFileCommit() {
  return Answer([] { return Session::OfThisThread().Use().Commit(), ERROR_SUCCESS; });
}

LSTATUS RegFileRollback() {
  return Answer([] { return Session::OfThisThread().Use().Rollback(), ERROR_SUCCESS; });
}

LSTATUS RegFileCheck() { return Answer(moxel::platform::Check); }

LSTATUS RegFileBackup(LPCSTR lpFile) {
  return Answer([&] { return moxel::platform::Backup(lpFile); });
}

LSTATUS RegFileRestore(LPCSTR lpFile) {
  return Answer([&] { return moxel::platform::Restore(lpFile); });
}

LPCSTR RegFileCause() { return moxel::platform::LastCause().c_str(); }

LPCSTR RegFilePath() {
  thread_local std::string path;
  return path.assign(Session::FilePath()).c_str();
}
