#include "platform/registry/look_ups.h"

namespace moxel::platform {
namespace {

// A thread keeps no more than this, and no single value that is large.
constexpr std::size_t kMaxKept = 1 << 20;
constexpr std::size_t kMaxEntry = 4096;

constexpr std::size_t kEntryOverhead = 96;  // of the tables themselves

}  // namespace

LookUps::LookUps(Connection& connection) : connection_(connection), marks_(connection.change_marks()) {}

template <class Name, class Answer, class View, class Ask>
const Answer& LookUps::Find(Table<Name, Answer>& table, const View& name, Ask ask) {
  // What a transaction has changed shows in no mark yet.
  const std::optional<ChangeMark> before = connection_.in_transaction() ? std::nullopt : marks_.Read();
  if (before != mark_ || size_ > kMaxKept) Forget();
  mark_ = before;
  if (before)
    if (auto found = table.kept.find(name); found != table.kept.end()) return found->second;
  Answer answer = ask();
  // Only what no change came between belongs to the mark.
  const std::size_t size = kEntryOverhead + SizeOf(name) + SizeOf(answer);
  if (!before || size > kMaxEntry || marks_.Read() != before) return table.passing = std::move(answer);
  size_ += size;
  return table.kept.emplace(Name(name), std::move(answer)).first->second;
}

void LookUps::Forget() {
  keys_.kept.clear();
  paths_.kept.clear();
  values_.kept.clear();
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
  return Find(values_, ValueNameView{key, folded_name}, [&]() -> std::optional<StoredValue> {
    Query query(connection_.Get(Sql::kFindValue));
    query->Bind(1, key).Bind(2, folded_name);
    if (!query->Step()) return std::nullopt;
    return StoredValue{static_cast<DWORD>(query->Integer(0)), std::string(query->Text(1))};
  });
}

}  // namespace moxel::platform
