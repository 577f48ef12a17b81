#include "platform/registry/enumeration.h"

#include "platform/registry/failure.h"

namespace moxel::platform {
namespace {

// Reading on ends behind this many bytes.
constexpr std::size_t kReadOnLimit = 1 << 14;

// What the algorithm below needs to know of each kind of list. Columns of a row: version, place, then the
// entry.
struct Subkeys {
  using Place = std::string;
  using Entry = SubkeyEntry;
  static constexpr Sql kNext = Sql::kNextSubkey;
  static constexpr Sql kPrevious = Sql::kPreviousSubkey;
  static constexpr Sql kFollowing = Sql::kFollowingSubkeys;
  static std::int64_t ListOf(KeyId key) { return 2 * key; }
  static Place ReadPlace(const Statement& row, int column) { return Place(row.Text(column)); }
  static Entry ReadEntry(const Statement& row) { return {std::string(row.Text(2))}; }
};

struct Values {
  using Place = std::int64_t;
  using Entry = ValueEntry;
  static constexpr Sql kNext = Sql::kNextValue;
  static constexpr Sql kPrevious = Sql::kPreviousValue;
  static constexpr Sql kFollowing = Sql::kFollowingValues;
  static std::int64_t ListOf(KeyId key) { return 2 * key + 1; }
  static Place ReadPlace(const Statement& row, int column) { return row.Integer(column); }
  static Entry ReadEntry(const Statement& row) {
    return {std::string(row.Text(2)), static_cast<DWORD>(row.Integer(3)), std::string(row.Text(4))};
  }
};

// The entry `index`, provided the list still is as the position knows it; moves the position there.
template <class List>
std::optional<typename List::Entry> Step(Connection& connection, KeyId key, std::int64_t index,
                                         Position<typename List::Place>& position) {
  std::int64_t ahead = index - position.rank;
  if (ahead < 0 && index < -ahead) {  // the start is nearer
    position = {};
    ahead = index;
  }
  Query query(connection.Get(ahead >= 0 ? List::kNext : List::kPrevious));
  query->Bind(1, key).Bind(2, position.place).Bind(3, ahead >= 0 ? ahead : -ahead - 1);
  if (!query->Step()) return std::nullopt;
  std::int64_t version = query->Integer(0);
  if (position.rank != 0 && version != position.version) return std::nullopt;
  position = {index + 1, version, List::ReadPlace(*query, 1)};
  return List::ReadEntry(*query);
}

// Corrects the rank by what happened since; counts from the start where too much did, and where nothing is
// left at or before the place, since rank 0 stands for the initial position.
template <class List>
void CatchUp(Connection& connection, KeyId key, Position<typename List::Place>& position) {
  std::int64_t version = 0;
  {
    Query query(connection.Get(Sql::kListVersion));
    query->Bind(1, List::ListOf(key));
    if (query->Step()) version = query->Integer(0);
  }
  std::int64_t missed = version - position.version;
  if (position.rank != 0 && missed != 0) {
    Query query(connection.Get(Sql::kListChanges));
    query->Bind(1, List::ListOf(key)).Bind(2, position.version);
    for (; missed > 0 && query->Step(); --missed)
      if (List::ReadPlace(*query, 0) <= position.place) position.rank += query->Integer(1);
    if (missed != 0 || position.rank == 0) position = {};
  }
  position.version = version;
}

bool Exists(Connection& connection, KeyId key) {
  Query query(connection.Get(Sql::kPathOfKey));
  query->Bind(1, key);
  return query->Step();
}

template <class List>
std::optional<typename List::Entry> Find(Connection& connection, KeyId key, std::int64_t index,
                                         Position<typename List::Place>& position) {
  if (auto entry = Step<List>(connection, key, index, position)) return entry;
  Transaction snapshot(connection, Transaction::Kind::kRead);
  if (!Exists(connection, key)) throw RegistryFailure(ERROR_KEY_DELETED);
  CatchUp<List>(connection, key, position);
  auto entry = Step<List>(connection, key, index, position);
  snapshot.Commit();
  return entry;
}

template <class List>
void ReadFollowing(Connection& connection, KeyId key, std::size_t count,
                   Position<typename List::Place>& position, std::vector<typename List::Entry>& entries) {
  const std::size_t end = entries.size() + count;
  Query query(connection.Get(List::kFollowing));
  query->Bind(1, key).Bind(2, position.place).Bind(3, static_cast<std::int64_t>(count));
  for (std::size_t size = 0; size < kReadOnLimit && entries.size() < end && query->Step();) {
    position.place = List::ReadPlace(*query, 1);
    ++position.rank;
    size += entries.emplace_back(List::ReadEntry(*query)).size();
  }
}

}  // namespace

std::optional<SubkeyEntry> EntryAt(Connection& connection, KeyId key, std::int64_t index,
                                   SubkeyPosition& position) {
  return Find<Subkeys>(connection, key, index, position);
}

std::optional<ValueEntry> EntryAt(Connection& connection, KeyId key, std::int64_t index,
                                  ValuePosition& position) {
  return Find<Values>(connection, key, index, position);
}

void ReadOn(Connection& connection, KeyId key, std::size_t count, SubkeyPosition& position,
            std::vector<SubkeyEntry>& entries) {
  ReadFollowing<Subkeys>(connection, key, count, position, entries);
}

void ReadOn(Connection& connection, KeyId key, std::size_t count, ValuePosition& position,
            std::vector<ValueEntry>& entries) {
  ReadFollowing<Values>(connection, key, count, position, entries);
}

}  // namespace moxel::platform
