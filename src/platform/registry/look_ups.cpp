#include "platform/registry/look_ups.h"

#include <algorithm>

#include "platform/registry/failure.h"

namespace moxel::platform {
namespace {

// A thread keeps no more than this, and no single value that is large.
constexpr std::size_t kMaxKept = 1 << 20;
constexpr std::size_t kMaxEntry = 4096;

// No more values of a key are read ahead, and none that is larger, with its name.
constexpr std::size_t kMaxValues = 32;
constexpr std::size_t kMaxValue = 2048;

// An enumeration that goes on from page to page doubles them up to this many entries.
constexpr std::size_t kMaxPage = 64;

constexpr std::size_t kEntryOverhead = 96;  // of the tables themselves

}  // namespace

LookUps::LookUps(Connection& connection) : connection_(connection), marks_(connection.change_marks()) {}

bool LookUps::MayKeep() {
  // What a transaction has changed shows in no mark yet.
  const std::optional<ChangeMark> now = connection_.in_transaction() ? std::nullopt : marks_.Read();
  if (now != mark_ || size_ > kMaxKept) Forget();
  mark_ = now;
  return now.has_value();
}

template <class Name, class Answer, class View, class Ask>
const Answer& LookUps::Find(Table<Name, Answer>& table, const View& name, Ask ask) {
  const bool may_keep = MayKeep();
  if (may_keep)
    if (auto found = table.kept.find(name); found != table.kept.end()) return found->second;
  Answer answer = ask();
  // Only what no change came between belongs to the mark.
  const std::size_t size = kEntryOverhead + SizeOf(name) + SizeOf(answer);
  if (!may_keep || size > kMaxEntry || marks_.Read() != mark_) return table.passing = std::move(answer);
  const auto [kept, is_new] = table.kept.try_emplace(Name(name), std::move(answer));
  if (is_new) size_ += size;
  return kept->second;
}

void LookUps::Forget() {
  keys_.kept.clear();
  paths_.kept.clear();
  values_.kept.clear();
  extents_.clear();
  subkeys_.kept.clear();
  list_values_.kept.clear();
  size_ = 0;
}

KeyId LookUps::FindKey(std::string_view folded_path) {
  return Find(keys_, folded_path, [&]() -> KeyId {
    Query query(connection_.Get(Sql::kFindKey));
    query->Bind(1, folded_path);
    return query->Step() ? query->Integer(0) : 0;
  });
}

const std::optional<std::string>& LookUps::PathOf(KeyId key) {
  return Find(paths_, key, [&]() -> std::optional<std::string> {
    Query query(connection_.Get(Sql::kPathOfKey));
    query->Bind(1, key);
    if (!query->Step()) return std::nullopt;
    return std::string(query->Text(0));
  });
}

const std::optional<StoredValue>& LookUps::FindValue(KeyId key, std::string_view folded_name) {
  return Find(values_, ValueNameView{key, folded_name}, [&] { return ReadValue(key, folded_name); });
}

std::optional<StoredValue> LookUps::ReadValue(KeyId key, std::string_view folded_name) {
  if (mark_) {
    auto [known, is_new] = extents_.try_emplace(key, Extent::kOne);
    if (is_new) {
      size_ += kEntryOverhead;
    } else if (known->second == Extent::kOne) {
      known->second = Extent::kTooMuch;
      if (ReadAllValues(key)) known->second = Extent::kAll;
    }
    if (known->second == Extent::kAll) {
      const auto found = values_.kept.find(ValueNameView{key, folded_name});
      return found == values_.kept.end() ? std::nullopt : found->second;
    }
  }
  Query query(connection_.Get(Sql::kFindValue));
  query->Bind(1, key).Bind(2, folded_name);
  if (!query->Step()) return std::nullopt;
  return StoredValue{static_cast<DWORD>(query->Integer(0)), std::string(query->Text(1))};
}

bool LookUps::ReadAllValues(KeyId key) try {
  std::vector<std::pair<ValueName, StoredValue>> all;
  Query query(connection_.Get(Sql::kAllValues));
  query->Bind(1, key).Bind(2, std::int64_t{kMaxValues + 1}).Bind(3, std::int64_t{kMaxValue});
  while (query->Step()) {
    if (query->IsNull(2) || all.size() == kMaxValues) return false;
    all.push_back({{key, std::string(query->Text(0))},
                   {static_cast<DWORD>(query->Integer(1)), std::string(query->Text(2))}});
  }
  if (marks_.Read() != mark_) return false;
  for (auto& [name, value] : all) {
    const std::size_t size = kEntryOverhead + name.folded.size() + value.data.size();
    if (values_.kept.try_emplace(std::move(name), std::move(value)).second) size_ += size;
  }
  return true;
} catch (const RegistryFailure&) {
  return false;  // one of them cannot be read; it need not be the one that is asked for
}

template <class Entry>
std::optional<const Entry*> LookUps::KnownEntryAt(KeyId key, std::int64_t index) {
  if (!MayKeep()) return std::nullopt;
  const auto& pages = PagesOf<Entry>().kept;
  const auto found = pages.find(key);
  if (found == pages.end()) return std::nullopt;
  const Page<Entry>& page = found->second;
  const auto count = static_cast<std::int64_t>(page.entries.size());
  if (index >= page.first && index < page.first + count)
    return &page.entries[static_cast<std::size_t>(index - page.first)];
  return page.ends && index >= page.first + count ? std::optional(nullptr) : std::nullopt;
}

template <class Entry, class Position>
const Entry* LookUps::EntryAt(KeyId key, std::int64_t index, Position& position) {
  const bool may_keep = MayKeep();
  auto& [kept, passing] = PagesOf<Entry>();
  std::size_t wanted = 1;
  if (const auto before = kept.find(key); may_keep && before != kept.end()) {
    const auto& [first, entries, ends, size] = before->second;
    if (index == first + static_cast<std::int64_t>(entries.size()))
      wanted = std::min(2 * entries.size(), kMaxPage);
  }
  Page<Entry> page{index};
  if (auto entry = platform::EntryAt(connection_, key, index, position)) {
    page.entries.push_back(std::move(*entry));
    if (wanted > 1) ReadAhead(key, wanted - 1, position, page.entries);
  } else {
    page.ends = true;
  }
  page.size = kEntryOverhead;
  for (const Entry& entry : page.entries) page.size += kEntryOverhead + entry.size();
  Page<Entry>& target = may_keep ? kept[key] : passing;
  if (may_keep) size_ += page.size - target.size;
  target = std::move(page);
  return target.entries.empty() ? nullptr : target.entries.data();
}

template <class Entry, class Position>
void LookUps::ReadAhead(KeyId key, std::size_t count, Position& position, std::vector<Entry>& entries) {
  Position ahead = position;
  try {
    ReadOn(connection_, key, count, ahead, entries);
    if (marks_.Read() == mark_) {
      position = ahead;
      return;
    }
  } catch (const RegistryFailure&) {
    // One of them cannot be read; it is not the one that is asked for.
  }
  entries.resize(1);
}

template std::optional<const SubkeyEntry*> LookUps::KnownEntryAt(KeyId, std::int64_t);
template std::optional<const ValueEntry*> LookUps::KnownEntryAt(KeyId, std::int64_t);
template const SubkeyEntry* LookUps::EntryAt(KeyId, std::int64_t, SubkeyPosition&);
template const ValueEntry* LookUps::EntryAt(KeyId, std::int64_t, ValuePosition&);

}  // namespace moxel::platform
