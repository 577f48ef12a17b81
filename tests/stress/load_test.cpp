// Eight hands on one file: every call's answer, values whole, updates kept, lists as they are, changes seen
// at once.
#include <poll.h>
#include <sys/stat.h>

#include <set>

#include "load.h"

namespace moxel::test {
namespace {

const int kHands = Setting("MOXEL_STRESS_HANDS", 8);
const int kSeconds = Setting("MOXEL_STRESS_SECONDS", 2);

class ManyHands : public RegistryLoad, public ::testing::WithParamInterface<Hands> {};

INSTANTIATE_TEST_SUITE_P(, ManyHands, ::testing::Values(kThreads, kProcesses),
                         [](const auto& param) { return param.param == kThreads ? "Threads" : "Processes"; });

// Calls of all kinds at random: on keys that all hands change, and on a key of its own, of which it knows
// what must be there.
class Hand {
 public:
  Hand(Board& board, HKEY shared, int me)
      : board_(board),
        random_(static_cast<unsigned>(me) + std::random_device()()),
        shared_(shared),
        own_(Create(kRoot, "SOFTWARE\\own" + Digits(me))),
        slots_(6, {shared, true}) {}
  ~Hand() {
    for (Slot& slot : slots_) Vacate(slot);
  }
  Hand& operator=(Hand&&) = delete;

  std::string Run(bool may_fork) {
    const auto end = Clock::now() + std::chrono::seconds(kSeconds);
    for (int n = 1; problems_.empty() && Clock::now() < end; ++n) {
      UseShared();
      UseOwn();
      if (may_fork && !saved_ && n % 400 == 0) Fork(n);
    }
    if (saved_) EndBatch();
    board_.counted += known_.counted;
    return problems_;
  }

 private:
  struct Slot {
    HKEY handle;
    bool may_write;
  };
  struct Known {
    std::vector<std::string> lists[2];
    int counted = 0;
  };

  int Pick(int below) { return static_cast<int>(random_() % static_cast<unsigned>(below)); }

  void Require(bool right, const std::string& what) {
    if (!right) problems_ += what + " " + RegFileCause() + "\n";
  }

  // Makes a call that must answer one of the codes.
  template <class Call>
  LSTATUS Try(const char* what, std::initializer_list<LSTATUS> codes, Call call) {
    const LSTATUS answer = board_.Time(call);
    Require(std::ranges::find(codes, answer) != codes.end(),
            what + std::string(" answered ") + Digits(answer));
    return answer;
  }

  void Vacate(Slot& slot) {
    if (slot.handle != shared_) Try("close", {0}, [&] { return RegCloseKey(slot.handle); });
    slot = {shared_, true};
  }

  void Reopen(Slot& slot, const std::string& name) {
    const HKEY base = slots_.front().handle == slot.handle ? shared_ : slots_.front().handle;
    const bool may_write = Pick(4) != 0;
    const REGSAM access = may_write ? KEY_ALL_ACCESS : KEY_READ;
    HKEY found = 0;
    DWORD made = 0;
    const LSTATUS answer =
        Pick(2) == 0
            ? Try("open", {0, 2, 1018}, [&] { return RegOpenKeyExA(base, name.c_str(), 0, access, &found); })
            : Try("create", {0, 1018}, [&] {
                return RegCreateKeyExA(base, name.c_str(), 0, nullptr, 0, access, nullptr, &found, &made);
              });
    Require((answer == 0) == (found != 0) && made <= 2, "a handle without success, or the reverse");
    if (answer != 0) return;
    Vacate(slot);
    slot = {found, may_write};
  }

  void QueryWhole(HKEY key, const std::string& name) {
    std::string data(10000, '\0');
    DWORD size = 10000;
    if (Try("query", {0, 2, 1018}, [&] { return Query(key, name, data.data(), &size); }) == 0)
      Require(data.substr(0, size) == Uniform(size), "a torn value");
  }

  void EnumerateWhole(HKEY key, DWORD index) {
    char name[100];
    BYTE data[10000];
    DWORD length = sizeof name, size = sizeof data;
    const LSTATUS answer = Try("enumerate values", {0, 259, 1018}, [&] {
      return RegEnumValueA(key, index, name, &length, nullptr, nullptr, data, &size);
    });
    if (answer == 0)
      Require(std::string(data, data + size) == Uniform(size) || std::string_view(name) == "count",
              "a torn value in a list");
  }

  void UseShared() {
    Slot& slot = slots_[static_cast<std::size_t>(Pick(6))];
    const HKEY key = slot.handle;
    const std::string name = "s" + Digits(Pick(4)) + (Pick(3) == 0 ? "\\t" : ""),
                      value = "v" + Digits(Pick(3));
    const auto index = static_cast<DWORD>(Pick(5));
    switch (Pick(8)) {
      case 0: return Reopen(slot, name);
      case 1: return QueryWhole(key, value);
      case 2: return EnumerateWhole(key, index);
      case 3: Try("enumerate keys", {0, 259, 1018}, [&] { return Step(kSubkeys, key, index); }); break;
      case 4: Try("delete a key", {0, 2, 5, 1018}, [&] { return Remove(kSubkeys, key, name); }); break;
      case 5: return Vacate(slot);
      default: {
        const std::string data = Uniform(static_cast<std::size_t>(Pick(2) * Pick(9000)));
        if (!slot.may_write)
          Try("set without the right", {5}, [&] { return Set(key, value, data); });
        else if (Pick(3) != 0)
          Try("set", {0, 1018}, [&] { return Set(key, value, data); });
        else
          Try("delete a value", {0, 2, 1018}, [&] { return Remove(kValues, key, value); });
      }
    }
  }

  void UseOwn() {
    const std::string name = Digits(10 + Pick(30));
    const int choice = Pick(9);
    if (choice < 4) {
      Toggle(choice < 2 ? kSubkeys : kValues, name);
    } else if (choice > 4) {
      CompareLists();
    } else if (!saved_ && Pick(4) == 0) {
      Try("begin", {0}, RegFileBegin);
      saved_ = known_;
      rest_ = 1 + Pick(4);
    }
    if (!saved_) return;
    if (Pick(2) == 0)
      Try("count", {0}, [&] { return Set(shared_, "count", Digits(NumberIn(shared_, "count") + 1)); }),
          ++known_.counted;
    if (--rest_ == 0) EndBatch();
  }

  void EndBatch() {
    const bool keep = Pick(2) == 0;
    if (!keep) known_ = *saved_;
    Try("end", {0}, keep ? RegFileCommit : RegFileRollback);
    saved_.reset();
  }

  void Toggle(List list, const std::string& name) {
    auto& known = known_.lists[list];
    const bool there = std::erase(known, name) > 0;
    Try(there ? "delete an own entry" : "make an own entry", {0},
        [&] { return there ? Remove(list, own_, name) : Add(list, own_, name); });
    if (!there) known.push_back(name);
    if (list == kSubkeys) std::ranges::sort(known);
  }

  // A few entries from anywhere, by a handle that has stepped here before.
  void CompareLists() {
    const List list = Pick(2) == 0 ? kSubkeys : kValues;
    const auto& entries = known_.lists[list];
    const auto from = static_cast<std::size_t>(Pick(static_cast<int>(entries.size()) + 1));
    for (std::size_t i = from; i < from + 4; ++i) {
      std::string found = "none";
      Try("step", {0, 259}, [&] { return Step(list, own_, static_cast<DWORD>(i), &found); });
      const std::string expected = i < entries.size() ? entries[i] : "none";
      Require(found == expected, "at " + Digits(static_cast<int>(i)) + " " + found + ", not " + expected);
      if (list == kValues && found != "none")
        Require(Get(own_, found) == found, "another value than was set");
    }
  }

  // Both sides go on, and the parent sees what the child did.
  void Fork(int n) {
    Child child([&] { return Text({Set(own_, "fork", Digits(n)), Query(shared_, "count")}); });
    UseShared();
    const std::string answer = child.Answer();
    Require(answer.starts_with("0 ") && NumberIn(own_, "fork") == n, "after a fork: " + answer);
    Require(Remove(kValues, own_, "fork") == 0, "the child's value is missing");
  }

  Board& board_;
  std::mt19937 random_;
  const HKEY shared_;
  const Key own_;
  std::vector<Slot> slots_;
  Known known_;
  std::optional<Known> saved_;  // of a batch that is open: what a rollback goes back to
  int rest_ = 0;
  std::string problems_;
};

TEST_P(ManyHands, AllCallsAnswerAsTheyShould) {
  EXPECT_EQ(AllAtOnce(GetParam(), kHands,
                      [&](int me) { return Hand(board_, key_, me).Run(GetParam() == kProcesses); }),
            "");
  EXPECT_EQ(NumberIn(key_, "count"), board_.counted);
  EXPECT_GT(board_.counted, 0);
  ExpectAllWell();
}

TEST_P(ManyHands, OneOfThemCreatesAKeyTheOthersOpenIt) {
  const int rounds = 60 * kSeconds;
  std::string created = AllAtOnce(GetParam(), kHands, [&](int) {
    std::string mine;
    for (int round = 1; round <= rounds; ++round) {
      board_.Meet(round, kHands);
      DWORD made = 0;
      const std::string path = "R" + Digits(round) + "\\a\\b";
      if (board_.Time([&] { return Create(kRoot, path, KEY_READ, &made).answer; }) != 0) mine += "failed,";
      if (made == REG_CREATED_NEW_KEY) mine += Digits(round) + ",";
    }
    return mine;
  });
  std::multiset<int> sorted;
  for (std::size_t at = 0; at < created.size(); at = created.find(',', at) + 1) {
    ASSERT_NE(created[at], 'f') << created;
    sorted.insert(std::stoi(created.substr(at)));
  }
  ASSERT_EQ(sorted.size(), static_cast<std::size_t>(rounds));
  EXPECT_TRUE(std::ranges::equal(sorted, std::set(sorted.begin(), sorted.end())));
  ExpectAllWell();
}

// One change after the other, in turn: a key comes, it goes, a value comes, it goes, a number grows.
LSTATUS Change(HKEY key, int n) {
  const std::string name = Digits(n / 5);
  switch (n % 5) {
    case 0: return Add(kSubkeys, key, "k" + name);
    case 1: return Remove(kSubkeys, key, "k" + name);
    case 2: return Add(kValues, key, "v" + name);
    case 3: return Remove(kValues, key, "v" + name);
    default: {
      const bool in_batch = n / 5 % 2 == 1;
      if (LSTATUS begun = in_batch ? RegFileBegin() : 0) return begun;
      const LSTATUS set = Set(key, "number", Digits(n / 5 + 1));
      return in_batch ? RegFileCommit() : set;
    }
  }
}

// What is there behind change n, read in every way.
std::string SeenBehind(HKEY key, int n) {
  const std::string name = Digits(n / 5);
  return Names(kSubkeys, key) + Names(kValues, key) + Get(key, "number").value_or("none") + " " +
         Text({Open(key, "k" + name).answer, Query(key, "v" + name)});
}

std::string ThereBehind(int n) {
  const std::string name = Digits(n / 5);
  return (n % 5 == 0 ? "k" + name + "," : "") + "number," + (n % 5 == 2 ? "v" + name + "," : "") +
         Digits(n % 5 == 4 ? n / 5 + 1 : n / 5) + " " + (n % 5 == 0 ? "0 " : "2 ") +
         (n % 5 == 2 ? "0 " : "2 ");
}

// A reader that reads without pause, so that it keeps what it read, and must see a change as soon as it is
// told of it. One that may only read must be refused whatever it tries to write.
std::string WatchChanges(HKEY key, Board& board, Pipe& told, Pipe& done, bool may_write) {
  std::string problems;
  for (int n = 0, number = 0; n >= 0;) {
    const int now = board.Time([&] { return NumberIn(key, "number"); });
    if (now < number) problems += std::string("the number fell back ") + RegFileCause() + "\n";
    number = now;
    SeenBehind(key, n);
    pollfd ready{told.reading_end(), POLLIN, 0};
    if (::poll(&ready, 1, 0) == 0) continue;
    if (!told.Receive(n)) break;
    std::string seen = board.Time([&] { return SeenBehind(key, n); });
    if (n >= 0 && seen != ThereBehind(n))
      problems += seen + "instead of " + ThereBehind(n) + " " + RegFileCause() + "\n";
    if (!may_write && Text({Set(kRoot, "v", "1"), Create(kRoot, "mine").answer, RegFileBegin(),
                            Remove(kValues, key, "number"), Remove(kSubkeys, kRoot, kPath)}) != "5 5 5 5 5 ")
      problems += "the reader may write\n";
    done.Send(n);
  }
  return problems;
}

TEST_P(ManyHands, AChangeIsSeenAsSoonAsItsCallHasReturned) {
  constexpr int kReaders = 3, kNoisy = 2;
  Pipe told[kReaders], done[kReaders];
  ASSERT_EQ(Set(key_, "number", "0"), 0);
  ASSERT_EQ(::chmod(folder().c_str(), 0755), 0);
  auto write = [&]() -> std::string {
    const auto end = Clock::now() + std::chrono::seconds(kSeconds);
    std::string problems;
    for (int n = 0; problems.empty() && n >= 0;) {
      if (board_.Time([&] { return Change(key_, n); }) != 0) problems += "change " + Digits(n) + " failed\n";
      const int last = Clock::now() < end && problems.empty() ? n : -1;
      for (auto& pipe : told) pipe.Send(last);
      for (auto& pipe : done)
        if (int answer = 0; !pipe.Receive(answer) || answer != last) problems += "a reader has gone\n";
      n = last < 0 ? last : n + 1;
    }
    board_.stop = true;
    return problems;
  };
  auto make_noise = [&](int me) -> std::string {
    for (int n = 0; !board_.stop; ++n)
      if (Set(Create(kRoot, "noise"), Digits(me), Uniform(static_cast<std::size_t>(n) % 5000)) != 0)
        return "noise failed\n";
    return "";
  };
  EXPECT_EQ(AllAtOnce(GetParam(), 1 + kReaders + kNoisy,
                      [&](int me) {
                        if (me == 0) return write();
                        if (me > kReaders) return make_noise(me);
                        const bool may_write = me > 1 || GetParam() == kThreads || ::geteuid() != 0;
                        if (!may_write) BecomeNobody();
                        return WatchChanges(key_, board_, told[me - 1], done[me - 1], may_write);
                      }),
            "");
  std::cout << "[ figures  ] the number came to " << NumberIn(key_, "number") << "\n";
  ExpectAllWell();
}

}  // namespace
}  // namespace moxel::test
