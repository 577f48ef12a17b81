#include "platform/registry/connection.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <ctime>
#include <thread>

#include "platform/registry/failure.h"
#include "platform/registry/look_ups.h"

namespace moxel::platform {
namespace {

// How long a call waits for another writer before it gives up with ERROR_BUSY.
constexpr std::chrono::seconds kLockTimeout{10};

// How long a reader goes on without looking whether its file was replaced.
constexpr std::int64_t kLookInterval = 50'000'000;

// A file changed less than this ago may change again without a new time of change.
constexpr std::int64_t kClockGrain = 2'000'000'000;

// A limit on the size of a file is a full disk to whoever meets it.
bool IsOutOfSpace(int error_number) {
  return error_number == ENOSPC || error_number == EDQUOT || error_number == EFBIG;
}

LSTATUS CodeOfOpenError(int error_number) {
  if (IsOutOfSpace(error_number)) return ERROR_DISK_FULL;
  switch (error_number) {
    case ENOENT:
    case ENOTDIR: return ERROR_PATH_NOT_FOUND;
    case EACCES:
    case EPERM:
    case EROFS:
    case EISDIR: return ERROR_ACCESS_DENIED;
    default: return ERROR_REGISTRY_IO_FAILED;
  }
}

LSTATUS CodeOf(int sqlite_code, int error_number) {
  switch (sqlite_code & 0xFF) {
    case SQLITE_ERROR:  // the tables are not what they must be
    case SQLITE_CONSTRAINT:
    case SQLITE_MISMATCH:
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB:
    case SQLITE_FORMAT: return ERROR_BADDB;
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
    case SQLITE_PROTOCOL: return ERROR_BUSY;
    case SQLITE_READONLY:
    case SQLITE_PERM:
    case SQLITE_AUTH: return ERROR_ACCESS_DENIED;
    case SQLITE_FULL: return ERROR_DISK_FULL;
    case SQLITE_NOMEM:
    case SQLITE_TOOBIG: return ERROR_OUTOFMEMORY;
    case SQLITE_CANTOPEN: return CodeOfOpenError(error_number);
    default: return IsOutOfSpace(error_number) ? ERROR_DISK_FULL : ERROR_REGISTRY_IO_FAILED;
  }
}

std::int64_t Nanoseconds(const timespec& time) {
  return std::int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
}

// The system's own error behind a failure. Of a failed write or read SQLite keeps it with the file only.
int SystemErrorOf(sqlite3* database, int code) {
  if (!database) return 0;
  int error_number = 0;
  if ((code & 0xFF) == SQLITE_IOERR) {
    sqlite3_file* log = nullptr;
    sqlite3_file_control(database, "main", SQLITE_FCNTL_JOURNAL_POINTER, &log);
    if (log && log->pMethods) log->pMethods->xFileControl(log, SQLITE_FCNTL_LAST_ERRNO, &error_number);
    if (error_number == 0) sqlite3_file_control(database, "main", SQLITE_FCNTL_LAST_ERRNO, &error_number);
  }
  return error_number != 0 ? error_number : sqlite3_system_errno(database);
}

[[noreturn]] void FailToOpen(int error_number, const std::string& path) {
  throw RegistryFailure(CodeOfOpenError(error_number), path + ": " + std::strerror(error_number));
}

// In a folder that its group may write, and whose files take the folder's group, the file is that group's.
void ShareWithGroup(const std::string& path) {
  struct stat folder;
  const std::string::size_type end = path.find_last_of('/');
  const std::string parent = end == std::string::npos ? "." : path.substr(0, end + 1);
  if (::stat(parent.c_str(), &folder) == 0 && (folder.st_mode & S_ISGID) != 0 &&
      (folder.st_mode & S_IWGRP) != 0)
    ::chmod(path.c_str(), 0664);
}

// False where there is one of that name.
bool CreateEmptyFile(const std::string& path) {
  // SQLite would try to open what it cannot create and report why that failed.
  if (::mknod(path.c_str(), S_IFREG | 0644, 0) == 0) return ShareWithGroup(path), true;
  if (errno == EEXIST) return false;
  FailToOpen(errno, path);
}

// What a sound database may still have wrong as a registry: no root, keys without parents, values without
// keys, no numbers left for new keys or numbers that keys have had.
constexpr const char* kFindFlaw =
    "SELECT 'the root is missing' WHERE NOT EXISTS (SELECT 1 FROM keys WHERE id = 1)"
    " UNION ALL SELECT 'key ' || path || ' has no parent' FROM keys k WHERE id <> 1"
    " AND NOT EXISTS (SELECT 1 FROM keys p WHERE p.id = k.parent)"
    " UNION ALL SELECT 'value ' || name || ' belongs to no key' FROM vals"
    " WHERE NOT EXISTS (SELECT 1 FROM keys WHERE id = vals.key)"
    " UNION ALL SELECT 'the sequence of keys is wrong' WHERE NOT EXISTS (SELECT 1 FROM sqlite_sequence"
    " WHERE name = 'keys' AND typeof(seq) = 'integer' AND seq BETWEEN (SELECT max(id) FROM keys) AND 1 << 62)"
    " LIMIT 1";

// A file name as an SQLite URI for a file that is read without a log and without locks.
std::string BareFileUri(const std::string& path) {
  std::string uri = "file:";
  for (char c : path) {
    static constexpr char kHex[] = "0123456789ABCDEF";
    auto byte = static_cast<unsigned char>(c);
    if (std::strchr("%?#", c) != nullptr) {
      uri += {'%', kHex[byte >> 4], kHex[byte & 15]};
    } else {
      uri += c;
    }
  }
  return uri + "?immutable=1";
}

// Who may not repair the log's header takes one that is just being written for one that a killed writer left.
// Only the latter stays so.
template <class Call>
int Persist(Call call) {
  int code = call();
  for (int attempts = 0; code == SQLITE_READONLY_RECOVERY && attempts < 100; ++attempts) {
    std::this_thread::sleep_for(std::chrono::microseconds(10) * attempts);
    code = call();
  }
  return code;
}

}  // namespace

Statement::Statement(Connection& connection, const char* sql) : connection_(&connection) {
  sqlite3* database = connection.database_.get();
  sqlite3_stmt* handle = nullptr;
  int code = Persist(
      [&] { return sqlite3_prepare_v3(database, sql, -1, SQLITE_PREPARE_PERSISTENT, &handle, nullptr); });
  if (code != SQLITE_OK) connection.Fail(code);
  handle_.reset(handle);
}

Statement& Statement::Bind(int index, std::int64_t value) {
  sqlite3_bind_int64(handle_.get(), index, value);
  return *this;
}

Statement& Statement::Bind(int index, std::string_view text) {
  sqlite3_bind_text64(handle_.get(), index, text.data() ? text.data() : "", text.size(), SQLITE_STATIC,
                      SQLITE_UTF8);
  return *this;
}

Statement& Statement::BindBlob(int index, std::string_view bytes) {
  sqlite3_bind_blob64(handle_.get(), index, bytes.data() ? bytes.data() : "", bytes.size(), SQLITE_STATIC);
  return *this;
}

bool Statement::Step() {
  // It begins anew after a failure.
  int code = Persist([this] { return sqlite3_step(handle_.get()); });
  if (code == SQLITE_ROW) return true;
  if (code == SQLITE_DONE) return false;
  connection_->Fail(code);
}

std::string_view Statement::Text(int column) const {
  const void* bytes = sqlite3_column_blob(handle_.get(), column);
  return {static_cast<const char*>(bytes),
          static_cast<std::size_t>(sqlite3_column_bytes(handle_.get(), column))};
}

Connection::Connection(const std::string& path, Access access, bool create)
    : path_(path), bare_(access == Access::kReadBareFile) {
  if (bare_) stamp_ = StampOf(path);
  int flags = SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE;
  flags |= access == Access::kWrite ? SQLITE_OPEN_READWRITE : SQLITE_OPEN_READONLY;
  if (create) flags |= SQLITE_OPEN_CREATE;
  if (bare_) flags |= SQLITE_OPEN_URI;
  file_id_ = FileIdOf(path);
  identity_ = IdentityOf(path);  // before: where it is replaced in between, this one is outdated
  sqlite3* database = nullptr;
  int code = sqlite3_open_v2((bare_ ? BareFileUri(path) : path).c_str(), &database, flags, nullptr);
  database_.reset(database);
  if (code != SQLITE_OK) Fail(code);
  SetBusyHandler();
  Execute("PRAGMA synchronous = NORMAL");
  Execute("PRAGMA cache_size = -65536");
}

Connection::~Connection() = default;

std::unique_ptr<Connection> Connection::OpenExisting(const std::string& path) {
  struct stat status;
  if (::stat(path.c_str(), &status) != 0) {
    if (errno == ENOENT) return nullptr;
    FailToOpen(errno, path);
  }
  if (S_ISDIR(status.st_mode)) throw RegistryFailure(ERROR_ACCESS_DENIED, path + ": is a directory");
  if (!IsAllowed(path, R_OK)) FailToOpen(errno, path);
  auto open = [&path](Access access) {
    std::unique_ptr<Connection> connection(new Connection(path, access, false));
    return connection->Recognize() ? std::move(connection) : nullptr;
  };
  Access access = IsAllowed(path, W_OK) ? Access::kWrite : Access::kRead;
  for (int attempts = 10;; --attempts) {
    try {
      return open(access);
    } catch (const RegistryFailure& failure) {
      bool log_refused = failure.code() == ERROR_ACCESS_DENIED || failure.code() == ERROR_PATH_NOT_FOUND;
      if (!log_refused || attempts <= 0) throw;
    }
    // Without a log beside the file, an account that may not create one can only read the bare file. Where
    // there is one now, a writer has come meanwhile.
    if (StampOf(path).has_log) continue;
    auto bare = open(Access::kReadBareFile);
    if (!StampOf(path).has_log) return bare;
  }
}

std::unique_ptr<Connection> Connection::OpenForReading(const std::string& path) { return OpenExisting(path); }

std::unique_ptr<Connection> Connection::OpenForWriting(const std::string& path) {
  if (auto existing = OpenExisting(path)) return existing;
  CreateEmptyFile(path);
  std::unique_ptr<Connection> connection(new Connection(path, Access::kWrite, true));
  connection->Create();
  return connection;
}

bool Connection::Recognize() {
  Transaction whole(*this, Transaction::Kind::kRead);
  auto read_integer = [this](const char* sql) {
    Statement statement = Prepare(sql);
    return statement.Step() ? statement.Integer(0) : 0;
  };
  std::int64_t application = read_integer("PRAGMA application_id");
  std::int64_t version = read_integer("PRAGMA user_version");
  std::int64_t objects = read_integer("SELECT count(*) FROM sqlite_schema");
  whole.Commit();
  if (application == 0 && version == 0 && objects == 0) return false;
  if (application != kApplicationId) throw RegistryFailure(ERROR_BADDB, path_ + ": is not a registry file");
  if (version > kSchemaVersion)
    throw RegistryFailure(ERROR_BADDB, path_ + ": was written by a newer version of this program");
  return true;
}

void Connection::Create() {
  if (!Recognize()) SwitchToLog();
  Transaction whole(*this, Transaction::Kind::kWrite);
  if (!Recognize()) {
    Execute(kCreateSchema);
    // A handle on a key of a file that this one replaces must find none under its id.
    Execute("UPDATE sqlite_sequence SET seq = seq + (random() & 0xFFFFFFFFFF) WHERE name = 'keys'");
    Execute(("PRAGMA application_id = " + std::to_string(kApplicationId)).c_str());
    Execute(("PRAGMA user_version = " + std::to_string(kSchemaVersion)).c_str());
  }
  whole.Commit();
}

// SQLite does not wait by itself where several processes turn a new file to write-ahead logging at once.
void Connection::SwitchToLog() {
  for (auto deadline = std::chrono::steady_clock::now() + kLockTimeout;;) {
    int code = sqlite3_exec(database_.get(), "PRAGMA journal_mode = WAL", nullptr, nullptr, nullptr);
    if (code == SQLITE_OK) return;
    if ((code & 0xFF) != SQLITE_BUSY || std::chrono::steady_clock::now() > deadline) Fail(code);
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
}

void Connection::SetBusyHandler() { sqlite3_busy_handler(database_.get(), &Connection::WaitForLock, this); }

int Connection::WaitForLock(void* self, int attempts) {
  auto* connection = static_cast<Connection*>(self);
  auto now = std::chrono::steady_clock::now();
  if (attempts == 0) connection->waiting_since_ = now;
  if (now - connection->waiting_since_ > kLockTimeout) return 0;
  std::this_thread::sleep_for(std::chrono::microseconds(50) * std::min(attempts + 1, 100));
  return 1;
}

Statement& Connection::Get(Sql sql) {
  auto& statement = statements_[static_cast<std::size_t>(sql)];
  if (!statement) statement = std::make_unique<Statement>(*this, TextOf(sql));
  return *statement;
}

void Connection::BeginBatch() {
  static std::atomic<std::uint64_t> latest = 0;
  Execute(Sql::kBeginWriting);
  batch_ = ++latest;
}

LookUps& Connection::look_ups() {
  if (!look_ups_) look_ups_ = std::make_unique<LookUps>(*this);
  return *look_ups_;
}

ChangeMarkReader Connection::change_marks() {
  if (bare_) return {};
  Statement journal_mode = Prepare("PRAGMA journal_mode");
  return journal_mode.Step() && journal_mode.Text(0) == "wal" ? ChangeMarkReader(database_.get())
                                                              : ChangeMarkReader();
}

void Connection::CopyFrom(Connection& source) {
  // Holds the moment that is copied. The copy would begin to read the source by itself, but keeps a header
  // that is just being written for broken.
  Statement moment = source.Prepare("SELECT 1 FROM sqlite_schema");
  moment.Step();
  sqlite3_backup* copy = sqlite3_backup_init(database_.get(), "main", source.database_.get(), "main");
  if (!copy) Fail(sqlite3_errcode(database_.get()));
  SetBusyHandler();  // it goes on counting attempts where the last statement ended
  sqlite3_backup_step(copy, -1);
  const int code = sqlite3_backup_finish(copy);
  if (code != SQLITE_OK) Fail(code);
}

void Connection::WriteCopy(Connection& source, const std::string& path) {
  if (!CreateEmptyFile(path)) FailToOpen(EEXIST, path);
  Connection copy(path, Access::kWrite, false);
  // A log would still have to go into the file when it is closed, and nobody hears of it where that fails.
  copy.Execute("PRAGMA journal_mode = OFF");
  copy.CopyFrom(source);
}

void Connection::Check() {
  for (const char* sql : {"PRAGMA integrity_check(1)", kFindFlaw}) {
    Statement statement = Prepare(sql);
    const std::string finding(statement.Step() ? statement.Text(0) : "ok");
    // Some findings come under a heading.
    if (finding != "ok")
      throw RegistryFailure(ERROR_BADDB, path_ + ": " + finding.substr(finding.find_last_of('\n') + 1));
  }
}

void Connection::Execute(const char* sql) {
  int code = Persist([&] { return sqlite3_exec(database_.get(), sql, nullptr, nullptr, nullptr); });
  if (code != SQLITE_OK) Fail(code);
}

void Connection::Fail(int code) {
  header_is_torn_ = code == SQLITE_READONLY_RECOVERY;
  int error_number = SystemErrorOf(database_.get(), code);
  std::string reason = database_ ? sqlite3_errmsg(database_.get()) : sqlite3_errstr(code);
  bool system_failure = (code & 0xFF) == SQLITE_CANTOPEN || (code & 0xFF) == SQLITE_IOERR;
  if (system_failure && error_number != 0) reason += std::string(" (") + std::strerror(error_number) + ")";
  throw RegistryFailure(CodeOf(code, error_number), path_ + ": " + reason);
}

Connection::Stamp Connection::StampOf(const std::string& path) {
  struct stat status {};
  Stamp stamp{};
  stamp.has_log = ::stat((path + "-wal").c_str(), &status) == 0;
  status = {};
  if (::stat(path.c_str(), &status) == 0) {
    stamp.inode = status.st_ino;
    stamp.size = status.st_size;
    stamp.modified = Nanoseconds(status.st_mtim);
    timespec now{};
    ::clock_gettime(CLOCK_REALTIME, &now);
    stamp.settled = Nanoseconds(now) - stamp.modified > kClockGrain;
  }
  return stamp;
}

std::optional<Connection::FileIdentity> Connection::IdentityOf(const std::string& path) {
  struct stat status;
  if (::stat(path.c_str(), &status) != 0) return std::nullopt;
  return FileIdentity{status.st_dev, status.st_ino};
}

std::string Connection::FileIdOf(const std::string& path) {
  struct statx status {};
  ::statx(AT_FDCWD, path.c_str(), 0, STATX_INO | STATX_BTIME, &status);
  std::string id = path;
  for (std::uint64_t part :
       {std::uint64_t{status.stx_dev_major}, std::uint64_t{status.stx_dev_minor},
        std::uint64_t{status.stx_ino}, static_cast<std::uint64_t>(status.stx_btime.tv_sec),
        std::uint64_t{status.stx_btime.tv_nsec}})
    id.append(":").append(std::to_string(part));
  return id;
}

bool Connection::outdated(Look look) {
  if (bare_) return !stamp_.settled || StampOf(path_) != stamp_;
  timespec time{};
  ::clock_gettime(CLOCK_MONOTONIC_COARSE, &time);  // the cheapest clock there is
  const std::int64_t now = Nanoseconds(time);
  if (look == Look::kNowAndThen && now - looked_at_ < kLookInterval) return false;
  looked_at_ = now;
  return IdentityOf(path_) != identity_;
}

bool Connection::IsAllowed(const std::string& path, int mode) {
  return ::faccessat(AT_FDCWD, path.c_str(), mode, AT_EACCESS) == 0;
}

bool Connection::writable() const {
  return !sqlite3_db_readonly(database_.get(), "main") && IsAllowed(path_, W_OK);
}

bool Connection::has_gained_rights() const {
  return sqlite3_db_readonly(database_.get(), "main") != 0 && IsAllowed(path_, W_OK);
}

Transaction::Transaction(Connection& connection, Kind kind)
    : connection_(connection), nested_(connection.in_transaction()) {
  if (nested_)
    connection_.Execute(Sql::kBeginNested);
  else
    connection_.Execute(kind == Kind::kWrite ? Sql::kBeginWriting : Sql::kBegin);
}

void Transaction::Commit() {
  connection_.Execute(nested_ ? Sql::kCommitNested : Sql::kCommit);
  open_ = false;
}

Transaction::~Transaction() {
  if (!open_ || !connection_.in_transaction()) return;
  try {
    connection_.Execute(nested_ ? "ROLLBACK TO nested; RELEASE nested" : "ROLLBACK");
  } catch (const RegistryFailure&) {
    // SQLite has rolled back by itself; there is nothing left to undo.
  }
}

}  // namespace moxel::platform
