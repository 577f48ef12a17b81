// Administration of the registry file: transactions over several calls, the check, and causes in words.
#include "moxel/platform/registry_file.h"

#include "platform/registry/calls.h"
#include "platform/registry/session.h"

namespace moxel::platform {

std::string& LastCause() {
  thread_local std::string cause;
  return cause;
}

namespace {

// What a sound database may still have wrong as a registry: keys without parents, values without keys.
constexpr const char* kFindOrphan =
    "SELECT 'key ' || path || ' has no parent' FROM keys k WHERE id <> 1"
    " AND NOT EXISTS (SELECT 1 FROM keys p WHERE p.id = k.parent)"
    " UNION ALL SELECT 'value ' || name || ' belongs to no key' FROM vals"
    " WHERE NOT EXISTS (SELECT 1 FROM keys WHERE id = vals.key) LIMIT 1";

LSTATUS Check() {
  auto lease = Session::OfThisThread().Use();
  Connection* connection = lease.ForReading();
  if (!connection) return ERROR_SUCCESS;
  auto first_finding = [&](const char* sql) {
    Statement statement = connection->Prepare(sql);
    return statement.Step() ? std::string(statement.Text(0)) : "ok";
  };
  for (const char* sql : {"PRAGMA integrity_check(1)", kFindOrphan}) {
    std::string finding = first_finding(sql);
    if (finding != "ok") throw RegistryFailure(ERROR_BADDB, connection->path() + ": " + finding);
  }
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

LPCSTR RegFileCause() { return moxel::platform::LastCause().c_str(); }

LPCSTR RegFilePath() {
  thread_local std::string path;
  return path.assign(Session::FilePath()).c_str();
}
