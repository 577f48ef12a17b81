// Programs killed at any moment, while others go on: what a call reported is there, nothing is half done, and
// nobody waits for the dead.
#include "load.h"

namespace moxel::test {
namespace {

const int kKills = Setting("MOXEL_STRESS_KILLS", 40);
constexpr int kWriters = 6, kReaders = 2;

// The calls of a change, and which of them say what.
constexpr int kCalls = 8, kCommitted = 4, kCreated = 5, kRemoved = 7;

class Killing : public RegistryLoad {
 protected:
  // One change of several calls: a batch, then a key that comes as another goes. What has returned stands on
  // the board, which outlives the writer.
  LSTATUS Change(HKEY own, int n, bool is_first, std::mt19937& random, std::atomic<int>& returned) {
    const std::string bytes = Uniform(random() % 20000);
    const std::function<LSTATUS()> calls[] = {RegFileBegin,
                                              [&] { return Set(own, "left", Digits(n)); },
                                              [&] { return Set(own, "bytes", bytes); },
                                              [&] { return Set(own, "right", Digits(n)); },
                                              RegFileCommit,
                                              [&] { return Create(own, "key" + Digits(n)).answer; },
                                              [&] { return Set(own, "last", Digits(n)); },
                                              [&] { return Remove(kSubkeys, own, "key" + Digits(n - 1)); }};
    static_assert(std::size(calls) == kCalls);
    for (int i = 0; i < kCalls; ++i) {
      const LSTATUS answer = board_.Time(calls[i]);
      // The predecessor may have been killed before it created its key.
      if (answer != 0 && !(is_first && i == kRemoved && answer == 2)) return answer;
      returned = n * kCalls + i;
    }
    return 0;
  }

  // Goes on where its predecessor was killed. Opens and closes the file often: that too is killed.
  std::string Write(int me) {
    std::mt19937 random(std::random_device{}());
    const int found = NumberIn(Open(kRoot, NameOf(me)), "left");
    int n = found;
    for (LSTATUS answer = 0; !board_.stop;) {
      OnAnotherThread([&] {
        Key own = Create(kRoot, NameOf(me));
        for (auto rest = random() % 20; answer == 0 && rest > 0; --rest)
          ++n, answer = Change(own, n, n == found + 1, random, board_.returned[me]);
      });
      if (answer != 0) return Digits(answer) + " " + RegFileCause();
    }
    return "";
  }

  // What a writer left is whole, and every call that returned has had its effect.
  static std::string Judge(HKEY own, int returned) {
    const int n = returned / kCalls, call = returned % kCalls;
    const int left = NumberIn(own, "left"), right = NumberIn(own, "right");
    const std::string bytes = Get(own, "bytes").value_or("");
    if (left != right) return "half of a batch: " + Digits(left) + " and " + Digits(right) + "\n";
    if (bytes != Uniform(bytes.size())) return "a torn value\n";
    if (left < (call >= kCommitted ? n : n - 1)) return "lost a batch\n";
    if (call >= kCreated && Open(own, "key" + Digits(n)).answer != 0) return "lost a key\n";
    if (call > kCreated && NumberIn(own, "last") < n) return "lost a value\n";
    if (call == kRemoved && Open(own, "key" + Digits(n - 1)).answer != 2) return "a deleted key is there\n";
    return "";
  }

  // Reads without pause and so keeps what it read; numbers only grow, and right is never behind left.
  std::string Read() {
    int seen[kWriters] = {};
    std::string problems;
    while (!board_.stop && problems.empty())
      for (int me = 0; me < kWriters; ++me) {
        const Key own = Open(kRoot, NameOf(me));
        const int left = board_.Time([&] { return NumberIn(own, "left"); }), right = NumberIn(own, "right");
        const std::string bytes = board_.Time([&] { return Get(own, "bytes"); }).value_or("");
        if (left < seen[me] || right < left || bytes != Uniform(bytes.size()))
          problems += "read " + Digits(left) + " and " + Digits(right) + " behind " + Digits(seen[me]) + "\n";
        seen[me] = right;
      }
    return problems;
  }

  static std::string NameOf(int me) { return "SOFTWARE\\writer" + Digits(me); }
};

TEST_F(Killing, LosesNothingReportedAndHoldsUpNobody) {
  std::mt19937 random(std::random_device{}());
  std::deque<Child> readers;
  for (int i = 0; i < kReaders; ++i) readers.emplace_back([&] { return Read(); });
  std::deque<std::optional<Child>> writers(kWriters);
  auto start = [&](std::size_t me) { writers[me].emplace([&, me] { return Write(static_cast<int>(me)); }); };
  auto kill = [&](std::size_t me) {
    writers[me]->Kill();
    EXPECT_EQ(writers[me]->Answer(), " ended with status 9");
    OnAnotherThread(
        [&] { EXPECT_EQ(Judge(Open(kRoot, NameOf(static_cast<int>(me))), board_.returned[me]), ""); });
  };
  for (std::size_t me = 0; me < kWriters; ++me) start(me);
  for (int i = 0; i < kKills && !HasFailure(); ++i) {
    ::usleep(static_cast<useconds_t>(random() % (i % 4 == 0 ? 1000 : 40000)));
    const std::size_t me = random() % kWriters;
    kill(me), start(me);
  }
  for (std::size_t me = 0; me < kWriters; ++me) kill(me);
  board_.stop = true;
  for (auto& reader : readers) EXPECT_EQ(reader.Answer(), "");
  std::cout << "[ figures  ] " << kKills + kWriters << " kills\n";
  ExpectAllWell();
}

// Killed while the first of them creates the file.
TEST_F(Killing, AFileThatWasBeingCreatedIsCreatedByTheNext) {
  std::mt19937 random(std::random_device{}());
  for (int i = 0; i < kKills && !HasFailure(); ++i) {
    ::setenv("MOXEL_REGISTRY", (folder() / Digits(i)).c_str(), 1);
    std::deque<Child> programs;
    for (int me = 0; me < 3; ++me)
      programs.emplace_back([&, me] { return Text({Create(kRoot, "a\\" + Digits(me)).answer}); });
    ::usleep(static_cast<useconds_t>(random() % 4000));
    programs[0].Kill(), programs[1].Kill();
    EXPECT_EQ(programs[2].Answer(), "0 ");
    EXPECT_EQ(Open(kRoot, "a\\2").answer, 0);
    EXPECT_EQ(RegFileCheck(), 0) << RegFileCause();
  }
  std::cout << "[ figures  ] " << 2 * kKills << " kills during creation\n";
}

}  // namespace
}  // namespace moxel::test
