// One file under many hands: threads, processes, forks, killed writers and transactions.
#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstring>
#include <memory>
#include <random>

#include "registry_helpers.h"

namespace moxel::test {
namespace {

constexpr const char* kPath = "SOFTWARE\\X";

// What a child answers with when a call went wrong: enough to find it.
std::string Wrong(const std::string& what, LSTATUS answer) {
  return what + " answered " + std::to_string(answer) + " " + RegFileCause();
}

template <class Number>
std::string BytesOf(Number number) {
  return {reinterpret_cast<const char*>(&number), sizeof number};
}

std::optional<int> NumberIn(HKEY key, const std::string& name) {
  auto bytes = Get(key, name);
  int number = 0;
  if (!bytes || bytes->size() != sizeof number) return std::nullopt;
  std::memcpy(&number, bytes->data(), sizeof number);
  return number;
}

class RegistrySharing : public RegistryTest {};

TEST_F(RegistrySharing, ManyProcessesAndThreadsMayCreateTheFileAtTheSameMoment) {
  for (int round = 0; round < 8; ++round) {
    ::setenv("MOXEL_REGISTRY", (folder() / std::to_string(round)).c_str(), 1);
    Pipe gate;
    std::vector<std::unique_ptr<Child>> children;
    for (int process = 0; process < 6; ++process) {
      children.push_back(std::make_unique<Child>([&, process] {
        gate.WaitForClose();
        std::atomic<int> failures = 0;
        auto create = [&](int thread) {
          std::string path = "P\\" + std::to_string(process) + "\\" + std::to_string(thread);
          if (TryCreate(HKEY_LOCAL_MACHINE, path) != 0 || TryOpen(HKEY_LOCAL_MACHINE, path) != 0) ++failures;
        };
        std::thread other(create, 1);
        create(0);
        other.join();
        return failures == 0 ? "" : Wrong("create", failures);
      }));
    }
    gate.CloseWriting();
    for (auto& child : children) EXPECT_EQ(child->Answer(), "");
    EXPECT_EQ(NamesOf(Open(HKEY_LOCAL_MACHINE, "P"), SubkeyName).size(), 6u);
    EXPECT_EQ(RegFileCheck(), 0) << RegFileCause();
  }
}

// Each hand counts in a value of its own and all write one value of equal bytes, which nobody may see torn.
TEST_F(RegistrySharing, NoUpdateIsLostAndNoValueTorn) {
  constexpr int kSteps = 150;
  ASSERT_EQ(TryCreate(HKEY_LOCAL_MACHINE, kPath), 0);
  auto work = [](const std::string& me, unsigned seed) -> std::string {
    std::mt19937 random(seed);
    Key key = Open(HKEY_LOCAL_MACHINE, kPath, KEY_ALL_ACCESS);
    for (int i = 1; i <= kSteps; ++i) {
      int count = NumberIn(key, me).value_or(0);
      if (LSTATUS answer = Set(key, me, BytesOf(count + 1))) return Wrong("count", answer);
      std::string equal(1 + random() % 9000, static_cast<char>(random()));
      if (LSTATUS answer = Set(key, "equal", equal)) return Wrong("set", answer);
      auto seen = Get(key, "equal");
      if (!seen || seen->find_first_not_of(seen->front()) != std::string::npos) return "a torn value";
    }
    return "";
  };
  std::vector<std::unique_ptr<Child>> children;
  for (unsigned process = 0; process < 4; ++process) {
    children.push_back(std::make_unique<Child>([&work, process] {
      std::string name = "p" + std::to_string(process), in_thread;
      std::thread thread([&] { in_thread = work(name + "t", process + 100); });
      std::string here = work(name, process);
      thread.join();
      return here + in_thread;
    }));
  }
  for (auto& child : children) EXPECT_EQ(child->Answer(), "");
  Key key = Open(HKEY_LOCAL_MACHINE, kPath);
  auto names = NamesOf(key, ValueName);
  EXPECT_EQ(names.size(), 9u);
  std::erase(names, "equal");
  for (const auto& name : names) EXPECT_EQ(NumberIn(key, name), kSteps) << name;
}

TEST_F(RegistrySharing, AReaderSeesAWriteAsSoonAsTheWritersCallReturned) {
  Key key = Create(HKEY_LOCAL_MACHINE, kPath);
  Pipe written, seen;
  Child reader([&]() -> std::string {
    written.CloseWriting();
    for (int number; written.Receive(number); seen.Send(number)) {
      auto stored = NumberIn(key, "v");
      bool subkey = TryOpen(key, "k" + std::to_string(number)) == 0;
      if (stored != number || !subkey) return "missed " + std::to_string(number);
    }
    return "";
  });
  seen.CloseWriting();
  for (int number = 0, echo; number < 300; ++number) {
    ASSERT_EQ(Set(key, "v", BytesOf(number)), 0);
    ASSERT_EQ(TryCreate(key, "k" + std::to_string(number)), 0);
    written.Send(number);
    if (!seen.Receive(echo)) break;
  }
  written.CloseWriting();
  EXPECT_EQ(reader.Answer(), "");
}

// A process whose threads are busy in the registry forks again and again; so do its children, which start
// threads too.
TEST_F(RegistrySharing, BothSidesOfAForkGoOn) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  GTEST_SKIP() << "a sanitizer's own locks do not survive a fork beside running threads";
#endif
  Key key = Create(HKEY_LOCAL_MACHINE, kPath);
  Child family([&]() -> std::string {
    std::atomic<bool> stop = false;
    std::atomic<int> failures = 0;
    std::vector<std::thread> busy;
    for (int i = 0; i < 3; ++i) {
      busy.emplace_back([&, i] {
        for (int n = 1; !stop; ++n) {
          std::string name = "t" + std::to_string(i);
          if (Set(key, name, BytesOf(n)) != 0 || NumberIn(key, name) != n) ++failures;
        }
      });
    }
    auto use = [&](const std::string& name) {
      if (Set(key, name, name) == 0 && Get(key, name) == name && TryCreate(key, name) == 0)
        return std::string();
      return Wrong(name, -1);
    };
    std::string answer;
    for (int round = 0; round < 6; ++round) {
      std::string number = std::to_string(round);
      std::thread brief([&] { answer += use("brief" + number); });
      Child child([&, number] {
        std::string in_threads[3];
        std::vector<std::thread> threads;
        for (auto& text : in_threads) {
          threads.emplace_back([&] {
            text = use("thread" + number) + Child([&] { return use("grandchild" + number); }).Answer();
          });
        }
        std::string here = use("child" + number);
        for (auto& thread : threads) thread.join();
        return here + in_threads[0] + in_threads[1] + in_threads[2];
      });
      brief.join();
      answer += use("parent" + number) + child.Answer();
    }
    stop = true;
    for (auto& thread : busy) thread.join();
    return failures == 0 ? answer : answer + " and lost updates";
  });
  EXPECT_EQ(family.Answer(), "");
  EXPECT_EQ(NamesOf(key, SubkeyName).size(), 30u);
  EXPECT_EQ(RegFileCheck(), 0) << RegFileCause();
}

// The thread that forks ends as the file's last user on its side, which removes the log.
TEST_F(RegistrySharing, TheLogIsNotRemovedUnderTheOtherSideOfAFork) {
  Key key;
  Pipe gate;
  std::unique_ptr<Child> child;
  OnAnotherThread([&] {
    key = Create(HKEY_LOCAL_MACHINE, kPath);
    child = std::make_unique<Child>([&] {
      gate.WaitForClose();
      return std::to_string(Set(key, "child", "1"));
    });
    EXPECT_EQ(Set(key, "parent", "1"), 0);
  });
  gate.CloseWriting();
  EXPECT_EQ(child->Answer(), "0");
  EXPECT_EQ(NamesOf(key, ValueName), (std::vector<std::string>{"parent", "child"}));
}

TEST_F(RegistrySharing, AKilledWriterLosesNothingItReportedAndTearsNothing) {
  ASSERT_EQ(TryCreate(HKEY_LOCAL_MACHINE, kPath), 0);
  std::mt19937 random(20);
  for (int round = 0; round < 20; ++round) {
    Pipe reports;
    Child writer([&]() -> std::string {
      Key key = Open(HKEY_LOCAL_MACHINE, kPath, KEY_ALL_ACCESS);
      for (int n = 1;; ++n) {
        if (RegFileBegin() != 0 || Set(key, "left", BytesOf(n)) != 0 ||
            Set(key, "right", BytesOf(n) + std::string(random() % 20000, 'x')) != 0 || RegFileCommit() != 0)
          return "a failed transaction";
        std::string name = std::to_string(round) + "-" + std::to_string(n);
        if (LSTATUS answer = TryCreate(key, name)) return Wrong("create", answer);
        reports.Send(n);
      }
    });
    reports.CloseWriting();
    ::usleep(2000 + static_cast<useconds_t>(random() % 20000));
    writer.Kill();
    int last = 0;
    for (int n; reports.Receive(n);) last = n;
    writer.Answer();
    OnAnotherThread([&] {
      Key key = Open(HKEY_LOCAL_MACHINE, kPath);
      for (int n = 1; n <= last; ++n)
        EXPECT_EQ(TryOpen(key, std::to_string(round) + "-" + std::to_string(n)), 0);
      int left = NumberIn(key, "left").value_or(0);
      EXPECT_GE(left, last);
      EXPECT_EQ(Get(key, "right").value_or(BytesOf(0)).substr(0, sizeof left), BytesOf(left));
      EXPECT_EQ(RegFileCheck(), 0) << RegFileCause();
    });
  }
}

class RegistryTransaction : public RegistryTest {
 protected:
  Key key_ = Create(HKEY_LOCAL_MACHINE, kPath);

  // What another process finds: the names of the subkeys, then of the values.
  std::string SeenByAnother() {
    return Child([this] {
             std::string seen;
             for (const auto& name : NamesOf(key_, SubkeyName)) seen += name + " ";
             for (const auto& name : NamesOf(key_, ValueName)) seen += name + " ";
             return seen;
           })
        .Answer();
  }
};

// Another process is asked by a writer that is itself a child: a fork would end the transaction.
TEST_F(RegistryTransaction, OthersSeeAllOfItOrNothing) {
  for (bool commit : {false, true}) {
    Pipe inside, go_on;
    Child writer([&]() -> std::string {
      LSTATUS answer = RegFileBegin();
      if (answer == 0) answer = TryCreate(key_, "A\\B");
      if (answer == 0) answer = Set(key_, "v", "1");
      bool own = SubkeyName(key_, 0) == "A" && Get(key_, "v") == "1";
      inside.Send('x');
      char go;
      go_on.Receive(go);
      if (answer == 0) answer = commit ? RegFileCommit() : RegFileRollback();
      return answer == 0 && own ? "" : Wrong("transaction", answer);
    });
    inside.CloseWriting();
    char there;
    ASSERT_TRUE(inside.Receive(there));
    EXPECT_EQ(SeenByAnother(), "");
    go_on.Send('x');
    EXPECT_EQ(writer.Answer(), "");
    EXPECT_EQ(SeenByAnother(), commit ? "A v " : "");
  }
}

TEST_F(RegistryTransaction, ACallThatFailsInsideSpoilsNothing) {
  ASSERT_EQ(TryCreate(key_, "full\\child"), 0);
  ASSERT_EQ(RegFileBegin(), 0);
  EXPECT_EQ(Set(key_, "v", "1"), 0);
  EXPECT_EQ(RegDeleteKeyA(key_, "full"), 5);
  EXPECT_EQ(RegDeleteKeyA(key_, "none"), 2);
  EXPECT_EQ(TryCreate(key_, "new\\" + std::string(256, 'x')), 87);
  EXPECT_EQ(RegFileBegin(), 87);
  EXPECT_EQ(TryCreate(key_, "later"), 0);
  EXPECT_EQ(SubkeyName(key_, 1), "later");
  EXPECT_EQ(RegFileCommit(), 0);
  EXPECT_EQ(SeenByAnother(), "full later v ");
}

TEST_F(RegistryTransaction, EndsNeedABeginning) {
  EXPECT_EQ(RegFileCommit(), 87);
  EXPECT_EQ(RegFileRollback(), 87);
  for (auto end : {RegFileCommit, RegFileRollback}) {
    EXPECT_EQ(RegFileBegin(), 0);
    EXPECT_EQ(RegFileBegin(), 87);
    EXPECT_EQ(end(), 0);
    EXPECT_EQ(end(), 87);
  }
}

TEST_F(RegistryTransaction, AForkRollsItBackAndTheCommitSaysSo) {
  ASSERT_EQ(RegFileBegin(), 0);
  ASSERT_EQ(Set(key_, "lost", "1"), 0);
  Child child([&] {
    std::string committed = std::to_string(RegFileCommit());
    return committed + " " + std::to_string(Set(key_, "child", "1"));
  });
  EXPECT_EQ(child.Answer(), std::to_string(ERROR_REGISTRY_IO_FAILED) + " 0");
  EXPECT_EQ(Set(key_, "late", "1"), ERROR_REGISTRY_IO_FAILED);
  EXPECT_EQ(Get(key_, "child"), std::nullopt);
  EXPECT_EQ(RegFileCommit(), ERROR_REGISTRY_IO_FAILED);
  EXPECT_NE(std::string(RegFileCause()).find(RegFilePath()), std::string::npos);
  EXPECT_EQ(Set(key_, "after", "1"), 0);
  EXPECT_EQ(SeenByAnother(), "child after ");
}

TEST_F(RegistryTransaction, AThreadThatEndsInsideRollsItBack) {
  OnAnotherThread([&] {
    EXPECT_EQ(RegFileBegin(), 0);
    EXPECT_EQ(Set(key_, "lost", "1"), 0);
  });
  EXPECT_EQ(Set(key_, "kept", "1"), 0);
  EXPECT_EQ(SeenByAnother(), "kept ");
}

TEST_F(RegistryTransaction, AWriterThatDoesNotFinishHoldsUpWritersForATimeAndReadersNever) {
  ASSERT_EQ(Set(key_, "v", "1"), 0);
  ASSERT_EQ(RegFileBegin(), 0);
  OnAnotherThread([&] {
    auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(Get(key_, "v"), "1");
    EXPECT_EQ(TryCreate(HKEY_LOCAL_MACHINE, kPath), 0);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));
    std::vector<std::thread> writers;
    writers.emplace_back([&] { EXPECT_EQ(Set(key_, "v", "2"), ERROR_BUSY); });
    writers.emplace_back([&] { EXPECT_EQ(RegFileBegin(), ERROR_BUSY); });
    writers.emplace_back([&] {
      EXPECT_EQ(RegDeleteKeyA(HKEY_LOCAL_MACHINE, kPath), ERROR_BUSY);
      EXPECT_EQ(std::string(RegFileCause()).find(RegFilePath()), 0u) << RegFileCause();
    });
    for (auto& writer : writers) writer.join();
    EXPECT_GT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
  });
  EXPECT_EQ(RegFileCommit(), 0);
  EXPECT_EQ(Get(key_, "v"), "1");
}

}  // namespace
}  // namespace moxel::test
