// Key handles: small numbers for small records. A record holds no statement and no transaction, so a handle
// that is never closed costs a few bytes and blocks nobody.
#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>

#include "platform/registry/enumeration.h"

namespace moxel::platform {

struct KeyHandle {
  KeyId key = 0;
  REGSAM access = 0;
};

// Where the enumerations through one handle stand, and in which key of which file: a predefined handle's may
// change. What was read in a batch (0: in none) counts there only, since its versions of the list may be
// undone and come again as others.
struct Positions {
  std::string file;
  KeyId key = 0;
  std::uint64_t batch = 0;
  SubkeyPosition subkeys;
  ValuePosition values;
};

// All handles of the process, shared by its threads.
class HandleTable {
 public:
  static HandleTable& Instance();

  HKEY Open(KeyHandle handle);
  // False for an unknown handle.
  bool Close(HKEY handle);
  // Nothing for an unknown handle.
  std::optional<KeyHandle> Get(HKEY handle);

  // The positions last set for the handle, or initial ones where those belong to another key, file or batch.
  Positions GetPositions(HKEY handle, const std::string& file, KeyId key, std::uint64_t batch);
  void SetPositions(HKEY handle, const Positions& positions);

  // For the moment of a fork only.
  void Lock() { mutex_.lock(); }
  void Unlock() { mutex_.unlock(); }

 private:
  struct Record {
    KeyHandle handle;
    std::unique_ptr<Positions> positions;
  };

  HandleTable();
  Record* Find(HKEY handle);

  std::mutex mutex_;
  std::unordered_map<HKEY, Record> records_;
  HKEY next_ = 0x100;
};

}  // namespace moxel::platform
