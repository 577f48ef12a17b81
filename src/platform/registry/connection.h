// SQLite behind small owners: a connection that knows how to open, recognise and create a registry file, its
// prepared statements, and transactions.
#pragma once

#include <sqlite3.h>
#include <sys/stat.h>

#include <array>
#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "platform/registry/change_mark.h"
#include "platform/registry/schema.h"

namespace moxel::platform {

class Connection;

// One prepared statement. Bind, then Step until false; Row() must not outlive the next Reset.
class Statement {
 public:
  Statement(Connection& connection, const char* sql);

  Statement& Bind(int index, std::int64_t value);
  Statement& Bind(int index, std::string_view text);
  Statement& BindBlob(int index, std::string_view bytes);

  // True when a row is there. RegistryFailure on any failure.
  bool Step();
  void Reset() { sqlite3_reset(handle_.get()); }

  std::int64_t Integer(int column) const { return sqlite3_column_int64(handle_.get(), column); }
  bool IsNull(int column) const { return sqlite3_column_type(handle_.get(), column) == SQLITE_NULL; }
  // Valid until the next Step or Reset.
  std::string_view Text(int column) const;

 private:
  struct Finalizer {
    void operator()(sqlite3_stmt* handle) const { sqlite3_finalize(handle); }
  };
  std::unique_ptr<sqlite3_stmt, Finalizer> handle_;
  Connection* connection_;
};

// Lends a statement for one use and resets it afterwards, which ends the implicit transaction.
class Query {
 public:
  explicit Query(Statement& statement) : statement_(statement) {}
  ~Query() { statement_.Reset(); }
  Query(const Query&) = delete;
  Query& operator=(const Query&) = delete;
  Statement* operator->() { return &statement_; }
  Statement& operator*() { return statement_; }

 private:
  Statement& statement_;
};

class LookUps;

class Connection {
 public:
  ~Connection();

  // Opens a registry file. Null when there is none, or an empty file that no writer has made a registry yet:
  // an empty hive.
  static std::unique_ptr<Connection> OpenForReading(const std::string& path);
  // Opens a registry file, or creates it.
  static std::unique_ptr<Connection> OpenForWriting(const std::string& path);

  Statement& Get(Sql sql);
  Statement Prepare(const char* sql) { return Statement(*this, sql); }
  void Execute(const char* sql);
  void Execute(Sql sql) { Query(Get(sql))->Step(); }

  LookUps& look_ups();
  // The file's marks, or none where it is read without its log.
  ChangeMarkReader change_marks();

  // Replaces everything by what the source holds, in one transaction of its own.
  void CopyFrom(Connection& source);
  // Makes a new file of what the source holds. After a failure there may be a part of it.
  static void WriteCopy(Connection& source, const std::string& path);
  // RegistryFailure ERROR_BADDB with the first thing that is wrong.
  void Check();

  const std::string& path() const { return path_; }
  // Tells the open file from every other one, also from one that took its name or its place on the disk.
  const std::string& file_id() const { return file_id_; }
  // Asked anew each time: the file's rights may change while it is open.
  bool writable() const;
  // True where it was opened for reading, and the rights on the file are more by now.
  bool has_gained_rights() const;
  std::int64_t changes() const { return sqlite3_changes64(database_.get()); }
  // The id of the key that the last statement added.
  std::int64_t added_id() const { return sqlite3_last_insert_rowid(database_.get()); }
  // A transaction over several calls.
  void BeginBatch();
  // The number of the batch that is open, which no other has; else 0.
  std::uint64_t batch() const { return in_transaction() ? batch_ : 0; }
  bool in_transaction() const { return sqlite3_get_autocommit(database_.get()) == 0; }
  // True when the file must be opened anew: its name stands for another file by now, or for none; or this
  // connection reads the bare file, without a log, and the file or its log changed. Not every read looks,
  // since that costs more than the read: what a reader finds may be those milliseconds old, as if it had read
  // then.
  enum class Look { kNow, kNowAndThen };
  bool outdated(Look look);
  // True when a read failed since a killed writer left the log's header half written. Readers can do without
  // it as soon as nobody has it open.
  bool header_is_torn() const { return header_is_torn_; }

 private:
  friend class Statement;
  enum class Access { kWrite, kRead, kReadBareFile };

  // What tells that a file read without its log has changed.
  struct Stamp {
    bool has_log;
    ino_t inode;
    off_t size;
    std::int64_t modified;
    bool settled;  // the last change is old enough for the next to have another time
    bool operator==(const Stamp&) const = default;
  };

  struct Closer {
    void operator()(sqlite3* database) const { sqlite3_close_v2(database); }
  };

  Connection(const std::string& path, Access access, bool create);
  static std::unique_ptr<Connection> OpenExisting(const std::string& path);
  static Stamp StampOf(const std::string& path);
  // Which file a name stands for; nothing where it stands for none.
  struct FileIdentity {
    dev_t device;
    ino_t inode;
    bool operator==(const FileIdentity&) const = default;
  };
  static std::optional<FileIdentity> IdentityOf(const std::string& path);
  static std::string FileIdOf(const std::string& path);
  // Whether the account in effect has the rights on the file; errno says why not.
  static bool IsAllowed(const std::string& path, int mode);
  void SetBusyHandler();
  static int WaitForLock(void* self, int attempts);
  [[noreturn]] void Fail(int code);

  // True when the file is a registry, false when it is empty; RegistryFailure when it is anything else.
  bool Recognize();
  void Create();
  void SwitchToLog();

  const std::string path_;
  const bool bare_;
  Stamp stamp_{};
  std::optional<FileIdentity> identity_;
  std::string file_id_;
  std::int64_t looked_at_ = 0;
  std::uint64_t batch_ = 0;
  bool header_is_torn_ = false;
  std::chrono::steady_clock::time_point waiting_since_{};
  std::unique_ptr<sqlite3, Closer> database_;
  std::array<std::unique_ptr<Statement>, kSqlCount> statements_;
  std::unique_ptr<LookUps> look_ups_;
};

// A transaction over several statements; inside a batch it is a savepoint of the batch. Rolled back unless
// committed.
class Transaction {
 public:
  enum class Kind { kRead, kWrite };

  Transaction(Connection& connection, Kind kind);
  ~Transaction();
  Transaction(const Transaction&) = delete;
  Transaction& operator=(const Transaction&) = delete;
  void Commit();

 private:
  Connection& connection_;
  const bool nested_;
  bool open_ = true;
};

}  // namespace moxel::platform
