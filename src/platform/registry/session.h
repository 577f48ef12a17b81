// One thread's way into the registry file: its connection, opened at first use, and its transaction, if any.
#pragma once

#include <pthread.h>

#include <memory>
#include <mutex>
#include <string>

#include "platform/registry/connection.h"

namespace moxel::platform {

class Session {
 public:
  // The right to use the session for one call. Held by its own thread during each call and by a forking
  // thread while it closes every session, so that no connection crosses a fork.
  class Lease {
   public:
    explicit Lease(Session& session) : session_(session), lock_(session.mutex_) {}
    ~Lease();
    Lease(const Lease&) = delete;
    Lease& operator=(const Lease&) = delete;

    // The connection, or null where no registry file exists: an empty hive.
    Connection* ForReading();
    // The connection; creates the file where there is none.
    Connection& ForWriting();
    // False when a file exists that the account may not write.
    bool MayWrite();
    // ERROR_ACCESS_DENIED with the cause where that is so.
    void RequireRights();

    void Begin();
    void Commit();
    void Rollback();

   private:
    // Where the batch's connection is gone, so are its changes: nothing may go on as if they were there.
    void CheckBatch() const;

    Session& session_;
    std::unique_lock<std::mutex> lock_;
  };

  static Session& OfThisThread();
  // The file that the environment names.
  static const char* FilePath();

  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  Lease Use() { return Lease(*this); }

 private:
  friend class SessionList;
  Session();
  void DropUnusable(Connection::Look look);

  const pthread_t thread_ = pthread_self();
  std::mutex mutex_;
  std::unique_ptr<Connection> connection_;
  bool in_batch_ = false;
};

}  // namespace moxel::platform
