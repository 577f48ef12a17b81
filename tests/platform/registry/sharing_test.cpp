// One file under many hands: threads, processes, forks and transactions.
#include <algorithm>
#include <atomic>
#include <chrono>

#include "tests/support/registry_access.h"

namespace moxel::test {
namespace {

std::string SeenByAnother(HKEY key) {
  return Child([key] { return Names(kSubkeys, key) + Names(kValues, key); }).Answer();
}

using RegistrySharing = RegistryKeyTest;

TEST_F(RegistrySharing, ManyProcessesAndThreadsMayCreateTheFileAtTheSameMoment) {
  for (int round = 0; round < 8; ++round) {
    ::setenv("MOXEL_REGISTRY", (folder() / Digits(round)).c_str(), 1);
    std::string answers = AllAtOnce(kProcesses, 6, [](int process) {
      return AllAtOnce(kThreads, 2, [process](int thread) {
        const int me = process * 2 + thread;
        Key own = Create(kRoot, "P\\" + Digits(me));
        int n = 0;
        while (n < 30 && Set(own, "n", Digits(n)) == 0 && Get(own, "n") == Digits(n)) ++n;
        return Text({own.answer, n});
      });
    });
    Answers expected;
    for (int me = 0; me < 12; ++me) expected.insert(expected.end(), {0, 30});
    EXPECT_EQ(answers, Text(expected));
    EXPECT_EQ(Names(kSubkeys, Open(kRoot, "P")), "0,1,10,11,2,3,4,5,6,7,8,9,");
    EXPECT_EQ(RegFileCheck(), 0) << RegFileCause();
  }
}

// A process whose threads are busy in the registry forks again and again; so do its children, which start
// threads too.
TEST_F(RegistrySharing, BothSidesOfAForkGoOn) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  GTEST_SKIP() << "a sanitizer's own locks do not survive a fork beside running threads";
#endif
  auto use = [&](const std::string& name, const std::string& data = "x") {
    bool well = Set(key_, name, data) == 0 && Get(key_, name) == data && Create(key_, name).answer == 0;
    return well ? "" : name + " failed " + RegFileCause();
  };
  Child family([&] {
    std::atomic<bool> stop = false;
    return AllAtOnce(kThreads, 4, [&](int me) {
      std::string answer;
      for (int n = 1; me < 3 && !stop; ++n) answer += use("busy" + Digits(me), Digits(n));
      for (int round = 0; me == 3 && round < 40; ++round) {
        std::string number = Digits(round);
        auto in_thread = [&](int) {
          return use("thread" + number) + Child([&] { return use("grandchild" + number); }).Answer();
        };
        Child child([&] { return use("child" + number) + AllAtOnce(kThreads, 3, in_thread); });
        answer += use("parent" + number) + child.Answer();
      }
      stop = stop || me == 3;
      return answer;
    });
  });
  EXPECT_EQ(family.Answer(), "");
  EXPECT_EQ(std::ranges::count(Names(kSubkeys, key_), ','), 163);
  EXPECT_EQ(RegFileCheck(), 0) << RegFileCause();
}

// The thread that forks ends as the file's last user on its side, which removes the log.
TEST_F(RegistrySharing, TheLogIsNotRemovedUnderTheOtherSideOfAFork) {
  ::setenv("MOXEL_REGISTRY", (folder() / "other.db").c_str(), 1);
  Pipe gate;
  std::optional<Child> child;
  OnAnotherThread([&] {
    EXPECT_EQ(Create(kRoot, "new").answer, 0);
    child.emplace([&] { return gate.Rest(), Digits(Set(kRoot, "child", "1")); });
    EXPECT_EQ(Set(kRoot, "parent", "1"), 0);
  });
  gate.CloseWriting();
  EXPECT_EQ(child->Answer(), "0");
  EXPECT_EQ(Names(kValues, kRoot), "parent,child,");
}

using RegistryTransaction = RegistryKeyTest;

TEST_F(RegistryTransaction, ACallThatFailsInsideSpoilsNothingAndAThreadThatEndsInsideRollsItBack) {
  ASSERT_EQ(Create(key_, "full\\child").answer, 0);
  OnAnotherThread([&] { EXPECT_EQ(Text({RegFileBegin(), Set(key_, "lost", "1")}), "0 0 "); });
  EXPECT_EQ(Text({RegFileCommit(), RegFileRollback(), RegFileBegin(), RegFileBegin()}), "87 87 0 87 ");
  EXPECT_EQ(Text({Set(key_, "v", "1"), RegDeleteKeyA(key_, "full")}), "0 5 ");
  EXPECT_EQ(Text({Create(key_, "new\\" + std::string(256, 'x')).answer, Create(key_, "later").answer}),
            "87 0 ");
  EXPECT_EQ(Names(kSubkeys, key_), "full,later,");
  EXPECT_EQ(Text({RegFileCommit(), RegFileCommit()}), "0 87 ");
  EXPECT_EQ(SeenByAnother(key_), "full,later,v,");
}

// What happens next gives the list the version, and a key the place, that the transaction had given.
TEST_F(RegistryTransaction, HandlesKeepNothingOfWhatIsRolledBack) {
  for (const char* name : {"A", "B", "C", "D", "E"}) Create(key_, name);
  Key top = Open(key_, "", KEY_ALL_ACCESS);
  ASSERT_EQ(Text({RegFileBegin(), Remove(kSubkeys, top, "A")}), "0 0 ");
  Key undone = Create(top, "undone");
  EXPECT_EQ(NameAt(kSubkeys, top, 2), "D");
  EXPECT_EQ(RegFileRollback(), 0);
  EXPECT_EQ(Text({Remove(kSubkeys, top, "E"), Create(top, "another").answer}), "0 0 ");
  EXPECT_EQ(NameAt(kSubkeys, top, 2), "B");
  EXPECT_EQ(Text({Set(undone, "v", "1"), Create(undone, "below").answer}), "1018 1018 ");
}

TEST_F(RegistryTransaction, AForkRollsItBackAndTheCommitSaysSo) {
  ASSERT_EQ(Text({RegFileBegin(), Set(key_, "lost", "1")}), "0 0 ");
  Child child([&] { return Text({RegFileCommit(), Set(key_, "child", "1")}); });
  EXPECT_EQ(child.Answer(), "1016 0 ");
  EXPECT_EQ(Text({Set(key_, "late", "1"), Query(key_, "child"), RegFileCommit()}), "1016 1016 1016 ");
  EXPECT_TRUE(CauseNamesTheFile()) << RegFileCause();
  EXPECT_EQ(Set(key_, "after", "1"), 0);
  EXPECT_EQ(SeenByAnother(key_), "child,after,");
}

TEST_F(RegistryTransaction, AWriterThatDoesNotFinishHoldsUpWritersForATimeAndReadersNever) {
  const std::string backup = folder() / "backup.db";
  ASSERT_EQ(Text({Set(key_, "v", "1"), RegFileBackup(backup.c_str()), RegFileBegin(), Set(key_, "v", "2")}),
            "0 0 0 0 ");
  OnAnotherThread([&] {
    auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(Get(key_, "v"), "1");
    EXPECT_EQ(Create(kRoot, kPath, KEY_READ).answer, 0);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));
    auto named = [](LSTATUS answer) { return Digits(answer) + (CauseNamesTheFile() ? " named " : " "); };
    std::string answers = AllAtOnce(kThreads, 2, [&](int writer) {
      if (writer == 0) return named(Set(key_, "v", "3"));
      const std::string first = named(RegFileBegin());
      return first + named(RegFileRestore(backup.c_str()));
    });
    EXPECT_EQ(answers, "170 named 170 named 170 named ");
    const auto waited = std::chrono::steady_clock::now() - start;
    EXPECT_TRUE(waited > std::chrono::seconds(15) && waited < std::chrono::seconds(25));
  });
  EXPECT_EQ(RegFileRollback(), 0);
  EXPECT_EQ(Get(key_, "v"), "1");
}

}  // namespace
}  // namespace moxel::test
