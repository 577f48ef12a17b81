// The keyed collection: the container inside every collection of an object model.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "moxel/automation_error.h"
#include "moxel/variant.h"

namespace moxel {

// A key without regard to letter case, over the characters of code page 1252: what key names of the registry
// know.
inline std::u16string FoldKey(std::u16string_view key) {
  auto upper = [](char16_t unit) -> char16_t {
    bool plain = unit >= u'a' && unit <= u'z';
    bool accented = unit >= u'\u00E0' && unit <= u'\u00FE' && unit != u'\u00F7';
    if (plain || accented) return static_cast<char16_t>(unit - 0x20);
    if (unit == u'\u0161' || unit == u'\u0153' || unit == u'\u017E') return static_cast<char16_t>(unit - 1);
    return unit == u'\u00FF' ? u'\u0178' : unit;
  };
  std::u16string folded(key);
  std::transform(folded.begin(), folded.end(), folded.begin(), upper);
  return folded;
}

// Elements in the order added, each addressable by its 1-based position or by its text key, letter case
// ignored. A text index is always a key; a number is a position, rounded to the nearest integer with ties to
// even.
template <class Element>
class KeyedCollection {
 public:
  KeyedCollection() = default;
  KeyedCollection(const KeyedCollection&) = delete;
  KeyedCollection& operator=(const KeyedCollection&) = delete;

  std::int32_t Count() const { return static_cast<std::int32_t>(entries_.size()); }

  // Appends an element under a key. Error 457 when the key is there already.
  void Add(Element element, std::u16string_view key) {
    std::u16string folded = FoldKey(key);
    if (by_key_.contains(folded)) throw AutomationError::DuplicateKey();
    Entry* entry = Append(std::move(element));
    entry->key = &by_key_.emplace(std::move(folded), entry).first->first;
  }

  // Appends an element that only its position addresses.
  void Add(Element element) { Append(std::move(element)); }

  // Error 5 for an unknown key, 9 for a position out of range, 13 for any other kind of index.
  const Element& Item(const Variant& index) const { return entries_[Find(index)]->element; }

  // Errors as for Item. The elements behind move up; open walks go on.
  void Remove(const Variant& index) {
    std::size_t position = Find(index);
    std::unique_ptr<Entry> removed = std::move(entries_[position]);
    entries_.erase(entries_.begin() + static_cast<std::ptrdiff_t>(position));
    if (removed->key) by_key_.erase(by_key_.find(*removed->key));
  }

  // A walk from the first element to the last that stays right whatever is added or removed meanwhile.
  class Walk {
   public:
    explicit Walk(const KeyedCollection& collection) : collection_(&collection) {}

    // The next element; null at the end.
    const Element* Next() {
      auto next = collection_->From(next_serial_);
      if (next == collection_->entries_.end()) return nullptr;
      next_serial_ = (*next)->serial + 1;
      return &(*next)->element;
    }

   private:
    const KeyedCollection* collection_;
    std::uint64_t next_serial_ = 0;
  };

 private:
  struct Entry {
    std::uint64_t serial;  // ascending in the order added, never used again
    Element element;
    const std::u16string* key = nullptr;
  };
  using Entries = std::vector<std::unique_ptr<Entry>>;

  Entry* Append(Element element) {
    entries_.push_back(std::make_unique<Entry>(Entry{next_serial_++, std::move(element)}));
    return entries_.back().get();
  }

  typename Entries::const_iterator From(std::uint64_t serial) const {
    return std::lower_bound(entries_.begin(), entries_.end(), serial,
                            [](const auto& entry, std::uint64_t wanted) { return entry->serial < wanted; });
  }

  std::size_t Find(const Variant& index) const {
    switch (index.vt) {
      case VT_BSTR: return FindKey(index.text());
      case VT_I2:
      case VT_I4:
      case VT_R8: return FindPosition(index.ToR8());
      default: throw AutomationError::TypeMismatch();
    }
  }

  std::size_t FindKey(std::u16string_view key) const {
    auto found = by_key_.find(FoldKey(key));
    if (found == by_key_.end()) throw AutomationError::InvalidProcedureCall();
    return static_cast<std::size_t>(From(found->second->serial) - entries_.begin());
  }

  std::size_t FindPosition(double number) const {
    double position = std::nearbyint(number);  // ties to even
    bool in_range = position >= 1 && position <= static_cast<double>(entries_.size());
    if (!in_range) throw AutomationError::SubscriptOutOfRange();
    return static_cast<std::size_t>(position) - 1;
  }

  Entries entries_;
  std::unordered_map<std::u16string, Entry*> by_key_;
  std::uint64_t next_serial_ = 0;
};

}  // namespace moxel
