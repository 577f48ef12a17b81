// Administration of the registry file: transactions over several calls, the check, and causes in words.
#include "moxel/platform/registry_file.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <random>

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

// Closes a file that is to be replaced: what its log holds goes into it, and the log away, since it would be
// taken for that of the new file.
void PutLogAway(const std::string& path) {
  if (std::error_code ignored; !std::filesystem::exists(path + "-wal", ignored)) return;
  Connection::OpenForWriting(path);
  if (std::error_code ignored; std::filesystem::exists(path + "-wal", ignored))
    throw RegistryFailure(ERROR_BUSY, path + ": is in use");
}

// Written beside the file that it becomes, so that an older backup of that name is lost only to a whole one;
// under a name of its own, since others may do the same.
LSTATUS Backup(LPCSTR path) {
  if (!path || !*path) return ERROR_INVALID_PARAMETER;
  auto lease = Session::OfThisThread().Use();
  Connection* source = lease.ForReading();
  if (!source)
    throw RegistryFailure(ERROR_FILE_NOT_FOUND, std::string(Session::FilePath()) + ": there is no such file");
  if (source->in_transaction()) return ERROR_INVALID_PARAMETER;
  if (std::error_code ignored; std::filesystem::equivalent(path, source->path(), ignored))
    throw RegistryFailure(ERROR_INVALID_PARAMETER, std::string(path) + ": is the registry itself");
  const std::string part = std::string(path) + "." + std::to_string(std::random_device()()) + ".part";
  try {
    Connection::WriteCopy(*source, part);
    PutLogAway(path);
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
  lease.RequireRights();
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
