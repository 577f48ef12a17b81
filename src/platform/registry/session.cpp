#include "platform/registry/session.h"

#include <pthread.h>

#include <cstdlib>
#include <vector>

#include "platform/registry/failure.h"
#include "platform/registry/handles.h"

namespace moxel::platform {

// Every thread's session. A fork finds all connections closed: an inherited one would share its locks with
// the parent, and its log could be removed under the other side. Each side opens its own at its next call.
class SessionList {
 public:
  static SessionList& Instance() {
    static SessionList* const list = new SessionList;  // outlives every thread's session
    return *list;
  }

  void Add(Session* session) {
    std::lock_guard lock(mutex_);
    sessions_.push_back(session);
  }

  void Remove(Session* session) {
    std::lock_guard lock(mutex_);
    std::erase(sessions_, session);
  }

 private:
  SessionList() {
    pthread_atfork([] { Instance().BeforeFork(); }, [] { Instance().AfterFork(); },
                   [] { Instance().AfterForkInChild(); });
  }

  void BeforeFork() {
    mutex_.lock();
    for (Session* session : sessions_) {
      session->mutex_.lock();
      session->connection_.reset();
    }
    HandleTable::Instance().Lock();
  }

  void AfterFork() {
    HandleTable::Instance().Unlock();
    for (Session* session : sessions_) session->mutex_.unlock();
    mutex_.unlock();
  }

  // The other threads do not exist here, and their sessions' memory is used again.
  void AfterForkInChild() {
    AfterFork();
    std::erase_if(sessions_, [](const Session* session) { return session->thread_ != pthread_self(); });
  }

  std::mutex mutex_;
  std::vector<Session*> sessions_;
};

Session::Session() { SessionList::Instance().Add(this); }

// Closed while a fork in another thread still finds it.
Session::~Session() {
  {
    std::lock_guard lock(mutex_);
    connection_.reset();
  }
  SessionList::Instance().Remove(this);
}

Session& Session::OfThisThread() {
  thread_local Session session;
  return session;
}

const char* Session::FilePath() {
  const char* path = std::getenv("MOXEL_REGISTRY");
  return path && *path ? path : "/var/lib/moxel/registry.db";
}

void Session::DropUnusable(Connection::Look look) {
  if (!connection_ || in_batch_) return;
  if (connection_->path() != FilePath() || connection_->outdated(look)) connection_.reset();
}

Session::Lease::~Lease() {
  if (session_.connection_ && session_.connection_->header_is_torn()) session_.connection_.reset();
}

void Session::Lease::CheckBatch() const {
  if (session_.in_batch_ && !(session_.connection_ && session_.connection_->in_transaction()))
    throw RegistryFailure(ERROR_REGISTRY_IO_FAILED,
                          std::string(Session::FilePath()) + ": the transaction was rolled back");
}

Connection* Session::Lease::ForReading() {
  CheckBatch();
  session_.DropUnusable(Connection::Look::kNowAndThen);
  if (!session_.connection_) session_.connection_ = Connection::OpenForReading(FilePath());
  return session_.connection_.get();
}

Connection& Session::Lease::ForWriting() {
  CheckBatch();
  session_.DropUnusable(Connection::Look::kNow);
  if (!session_.connection_) session_.connection_ = Connection::OpenForWriting(FilePath());
  return *session_.connection_;
}

bool Session::Lease::MayWrite() {
  Connection* connection = ForReading();
  if (connection && connection->has_gained_rights() && !session_.in_batch_) {
    session_.connection_.reset();
    connection = ForReading();
  }
  return !connection || connection->writable();
}

void Session::Lease::RequireRights() {
  if (!MayWrite())
    throw RegistryFailure(ERROR_ACCESS_DENIED, std::string(FilePath()) + ": may not be written");
}

void Session::Lease::Begin() {
  if (session_.in_batch_) throw RegistryFailure(ERROR_INVALID_PARAMETER);
  RequireRights();  // SQLite itself would begin a transaction that only reads
  ForWriting().BeginBatch();
  session_.in_batch_ = true;
}

void Session::Lease::Commit() {
  if (!session_.in_batch_) throw RegistryFailure(ERROR_INVALID_PARAMETER);
  try {
    CheckBatch();
    session_.connection_->Execute(Sql::kCommit);
    session_.in_batch_ = false;
  } catch (...) {
    Rollback();
    throw;
  }
}

void Session::Lease::Rollback() {
  if (!session_.in_batch_) throw RegistryFailure(ERROR_INVALID_PARAMETER);
  session_.in_batch_ = false;
  if (session_.connection_ && session_.connection_->in_transaction())
    session_.connection_->Execute("ROLLBACK");
}

}  // namespace moxel::platform
