// Finding keys and values in the file, and keeping what was found for as long as the file does not change.
#pragma once

#include <concepts>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "moxel/platform.h"
#include "platform/registry/change_mark.h"
#include "platform/registry/connection.h"
#include "platform/registry/enumeration.h"

namespace moxel::platform {

struct StoredValue {
  DWORD type = 0;
  std::string data;
};

// Belongs to one connection. What a look-up answers is valid until the next one.
class LookUps {
 public:
  explicit LookUps(Connection& connection);

  // 0: there is no such key.
  KeyId FindKey(std::string_view folded_path);
  // The folded path; nothing for a key that was deleted.
  const std::optional<std::string>& PathOf(KeyId key);
  const std::optional<StoredValue>& FindValue(KeyId key, std::string_view folded_name);

  // The entry of a list at an index, null past its end; the position moves at least there. Who goes from
  // entry to entry finds ever more of them read ahead.
  template <class Entry, class Position>
  const Entry* EntryAt(KeyId key, std::int64_t index, Position& position);
  // What EntryAt would answer, where it is known already.
  template <class Entry>
  std::optional<const Entry*> KnownEntryAt(KeyId key, std::int64_t index);

 private:
  struct ValueName {
    KeyId key;
    std::string folded;
  };
  struct ValueNameView {
    KeyId key;
    std::string_view folded;
    explicit operator ValueName() const { return {key, std::string(folded)}; }
  };
  // Owners and views of them meet in one table, so that a look-up copies nothing.
  struct Hash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>()(text); }
    std::size_t operator()(KeyId key) const { return std::hash<KeyId>()(key); }
    std::size_t operator()(const ValueNameView& name) const {
      return (*this)(name.folded) ^ static_cast<std::size_t>(name.key) * 0x9E3779B97F4A7C15;
    }
    std::size_t operator()(const ValueName& name) const {
      return (*this)(ValueNameView{name.key, name.folded});
    }
  };
  struct Equal {
    using is_transparent = void;
    static ValueNameView View(const ValueName& name) { return {name.key, name.folded}; }
    static ValueNameView View(const ValueNameView& name) { return name; }
    bool operator()(const auto& a, const auto& b) const {
      if constexpr (requires { View(a); })
        return View(a).key == View(b).key && View(a).folded == View(b).folded;
      else
        return a == b;
    }
  };

  template <class Name, class Answer>
  struct Table {
    std::unordered_map<Name, Answer, Hash, Equal> kept;
    Answer passing{};  // one that could not be kept
  };

  // A stretch of a list.
  template <class Entry>
  struct Page {
    std::int64_t first = 0;
    std::vector<Entry> entries = {};
    bool ends = false;     // the list ends behind it
    std::size_t size = 0;  // its part of what is kept
  };
  template <class Entry>
  struct Pages {
    std::unordered_map<KeyId, Page<Entry>> kept;
    Page<Entry> passing;  // one that could not be kept
  };

  template <class Entry>
  Pages<Entry>& PagesOf() {
    if constexpr (std::same_as<Entry, SubkeyEntry>)
      return subkeys_;
    else
      return list_values_;
  }

  // How much of a key's values is kept: who asks for a second one reads all of them, unless they are many or
  // large.
  enum class Extent { kOne, kAll, kTooMuch };

  // Whether what is read now may be kept: forgets what is kept when the file has changed since.
  bool MayKeep();
  // What the table keeps under a name, else what `ask` finds in the file.
  template <class Name, class Answer, class View, class Ask>
  const Answer& Find(Table<Name, Answer>& table, const View& name, Ask ask);
  void Forget();
  // Adds up to `count` entries behind the first, and moves the position with them; none where the file
  // changes meanwhile or one of them cannot be read.
  template <class Entry, class Position>
  void ReadAhead(KeyId key, std::size_t count, Position& position, std::vector<Entry>& entries);
  std::optional<StoredValue> ReadValue(KeyId key, std::string_view folded_name);
  // Keeps all values of a key; false where that is too much.
  bool ReadAllValues(KeyId key);

  static std::size_t SizeOf(std::string_view text) { return text.size(); }
  static std::size_t SizeOf(KeyId) { return 0; }
  static std::size_t SizeOf(const ValueNameView& name) { return name.folded.size(); }
  static std::size_t SizeOf(const std::optional<std::string>& path) { return path ? path->size() : 0; }
  static std::size_t SizeOf(const std::optional<StoredValue>& value) {
    return value ? value->data.size() : 0;
  }

  Connection& connection_;
  const ChangeMarkReader marks_;
  std::optional<ChangeMark> mark_;  // of everything kept
  std::size_t size_ = 0;            // of everything kept, roughly and in bytes
  Table<std::string, KeyId> keys_;
  Table<KeyId, std::optional<std::string>> paths_;
  Table<ValueName, std::optional<StoredValue>> values_;
  std::unordered_map<KeyId, Extent> extents_;
  Pages<SubkeyEntry> subkeys_;
  Pages<ValueEntry> list_values_;
};

}  // namespace moxel::platform
