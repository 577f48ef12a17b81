// One file under many hands: threads, processes, forks, killed writers and transactions.
#include <algorithm>
#include <atomic>
#include <chrono>
#include <deque>
#include <random>

#include "registry_helpers.h"

namespace moxel::test {
namespace {

using Work = std::function<std::string(int)>;

std::string Digits(int number) { return std::to_string(number); }

int NumberIn(HKEY key, const std::string& name) { return std::stoi(Get(key, name).value_or("0")); }

// What threads answer one after the other that work at the same time.
std::string InThreads(int count, const Work& work) {
  std::deque<std::string> answers;
  std::deque<std::thread> threads;
  for (int i = 0; i < count; ++i)
    threads.emplace_back([&work, i, &answer = answers.emplace_back()] { answer = work(i); });
  std::string all;
  for (int i = 0; i < count; ++i) threads[i].join(), all += answers[i];
  return all;
}

std::string InProcesses(int count, const Work& work) {
  Pipe gate;
  std::deque<Child> children;
  for (int i = 0; i < count; ++i) {
    children.emplace_back([&, i] {
      gate.Rest();
      return work(i);
    });
  }
  gate.CloseWriting();
  std::string all;
  for (auto& child : children) all += child.Answer();
  return all;
}

class RegistrySharing : public RegistryKeyTest {
 protected:
  std::string SeenByAnother() {
    return Child([this] { return Names(kSubkeys, key_) + Names(kValues, key_); }).Answer();
  }
};

TEST_F(RegistrySharing, ManyProcessesAndThreadsMayCreateTheFileAtTheSameMoment) {
  for (int round = 0; round < 8; ++round) {
    ::setenv("MOXEL_REGISTRY", (folder() / Digits(round)).c_str(), 1);
    auto create = [](const std::string& path) {
      return Text({Create(HKEY_LOCAL_MACHINE, path).answer, Open(HKEY_LOCAL_MACHINE, path).answer});
    };
    std::string answers = InProcesses(6, [&](int process) {
      return InThreads(2,
                       [&](int thread) { return create("P\\" + Digits(process) + "\\" + Digits(thread)); });
    });
    EXPECT_EQ(answers, Text(Answers(24, 0)));
    EXPECT_EQ(Names(kSubkeys, Open(HKEY_LOCAL_MACHINE, "P")), "0,1,2,3,4,5,");
    EXPECT_EQ(RegFileCheck(), 0) << RegFileCause();
  }
}

// Each hand counts in a value of its own and all write one value of equal bytes, which nobody may see torn.
TEST_F(RegistrySharing, NoUpdateIsLostAndNoValueTorn) {
  auto work = [](int me) -> std::string {
    std::mt19937 random(static_cast<unsigned>(me));
    Key key = Open(HKEY_LOCAL_MACHINE, kPath, KEY_ALL_ACCESS);
    for (int i = 0; i < 150; ++i) {
      std::string equal(1 + random() % 9000, static_cast<char>(random())), name = Digits(me);
      if (Set(key, name, Digits(NumberIn(key, name) + 1)) != 0 || Set(key, "e", equal) != 0) return "failed";
      std::string seen = Get(key, "e").value_or("lost");
      if (seen.find_first_not_of(seen.front()) != std::string::npos) return "a torn value";
    }
    return "";
  };
  auto process = [&](int number) {
    return InThreads(2, [&](int thread) { return work(number * 2 + thread); });
  };
  EXPECT_EQ(InProcesses(4, process), "");
  for (int me = 0; me < 8; ++me) EXPECT_EQ(NumberIn(key_, Digits(me)), 150) << me;
}

TEST_F(RegistrySharing, AReaderSeesAWriteAsSoonAsTheWritersCallReturned) {
  Pipe written, seen;
  Child reader([&] {
    written.CloseWriting();
    for (int number; written.Receive(number);)
      seen.Send(NumberIn(key_, "v") == number && Open(key_, Digits(number)).answer == 0 ? number : -1);
    return "";
  });
  seen.CloseWriting();
  for (int number = 1, echo = 0; number <= 300; ++number) {
    EXPECT_EQ(Text({Set(key_, "v", Digits(number)), Create(key_, Digits(number)).answer}), "0 0 ");
    written.Send(number);
    ASSERT_TRUE(seen.Receive(echo) && echo == number) << number;
  }
}

// A process whose threads are busy in the registry forks again and again; so do its children, which start
// threads too.
TEST_F(RegistrySharing, BothSidesOfAForkGoOn) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  GTEST_SKIP() << "a sanitizer's own locks do not survive a fork beside running threads";
#endif
  Child family([&] {
    std::atomic<bool> stop = false;
    std::string lost, answer;
    std::thread busy([&] {
      lost = InThreads(3, [&](int thread) {
        std::string name = "t" + Digits(thread);
        for (int n = 1; !stop; ++n)
          if (Set(key_, name, Digits(n)) != 0 || NumberIn(key_, name) != n) return name + " lost an update";
        return std::string();
      });
    });
    auto use = [&](const std::string& name) {
      bool well = Set(key_, name, name) == 0 && Get(key_, name) == name && Create(key_, name).answer == 0;
      return well ? "" : name + " failed " + RegFileCause();
    };
    for (int round = 0; round < 6; ++round) {
      std::string number = Digits(round);
      std::thread brief([&] { answer += use("brief" + number); });
      Child child([&] {
        return use("child" + number) + InThreads(3, [&](int) {
                 return use("thread" + number) + Child([&] { return use("grandchild" + number); }).Answer();
               });
      });
      brief.join();
      answer += use("parent" + number) + child.Answer();
    }
    stop = true;
    busy.join();
    return answer + lost;
  });
  EXPECT_EQ(family.Answer(), "");
  EXPECT_EQ(std::ranges::count(Names(kSubkeys, key_), ','), 30);
  EXPECT_EQ(RegFileCheck(), 0) << RegFileCause();
}

// The thread that forks ends as the file's last user on its side, which removes the log.
TEST_F(RegistrySharing, TheLogIsNotRemovedUnderTheOtherSideOfAFork) {
  ::setenv("MOXEL_REGISTRY", (folder() / "other.db").c_str(), 1);
  Pipe gate;
  std::deque<Child> child;
  OnAnotherThread([&] {
    Key key = Create(HKEY_LOCAL_MACHINE, kPath);
    child.emplace_back([&] {
      gate.Rest();
      return Digits(Set(key, "child", "1"));
    });
    EXPECT_EQ(Set(key, "parent", "1"), 0);
  });
  gate.CloseWriting();
  EXPECT_EQ(child.front().Answer(), "0");
  EXPECT_EQ(Names(kValues, Open(HKEY_LOCAL_MACHINE, kPath)), "parent,child,");
}

TEST_F(RegistrySharing, AKilledWriterLosesNothingItReportedAndTearsNothing) {
  std::mt19937 random(20);
  for (int round = 0; round < 20; ++round) {
    Pipe reports;
    Child writer([&] {
      Key key = Open(HKEY_LOCAL_MACHINE, kPath, KEY_ALL_ACCESS);
      for (int n = 1;; ++n) {
        std::string right = Digits(n) + std::string(1 + random() % 20000, 'x');
        Answers answers{RegFileBegin(), Set(key, "left", Digits(n)), Set(key, "right", right),
                        RegFileCommit(), Create(key, Digits(round) + "-" + Digits(n)).answer};
        if (answers != Answers(5, 0)) return Text(answers);
        reports.Send(n);
      }
    });
    reports.CloseWriting();
    ::usleep(2000 + static_cast<useconds_t>(random() % 20000));
    writer.Kill();
    int last = 0;
    for (int n; reports.Receive(n);) last = n;
    EXPECT_EQ(writer.Answer(), " ended with status 9");
    OnAnotherThread([&] {
      Key key = Open(HKEY_LOCAL_MACHINE, kPath);
      for (int n = 1; n <= last; ++n) EXPECT_EQ(Open(key, Digits(round) + "-" + Digits(n)).answer, 0);
      EXPECT_GE(NumberIn(key, "left"), last);
      EXPECT_EQ(Get(key, "right").value_or("0x").find(Digits(NumberIn(key, "left")) + "x"), 0u);
      EXPECT_EQ(RegFileCheck(), 0) << RegFileCause();
    });
  }
}

using RegistryTransaction = RegistrySharing;

// Another process is asked by a writer that is itself a child: a fork would end the transaction.
TEST_F(RegistryTransaction, OthersSeeAllOfItOrNothing) {
  for (auto end : {RegFileRollback, RegFileCommit}) {
    Pipe inside, go_on;
    Child writer([&] {
      std::string answers = Text({RegFileBegin(), Create(key_, "A\\B").answer, Set(key_, "v", "1")});
      answers += Names(kSubkeys, key_) + Names(kValues, key_);
      int go = 0;
      inside.Send(go);
      go_on.Receive(go);
      return answers + Digits(end());
    });
    inside.CloseWriting();
    int there = 0;
    EXPECT_TRUE(inside.Receive(there));
    EXPECT_EQ(SeenByAnother(), "");
    go_on.Send(there);
    EXPECT_EQ(writer.Answer(), "0 0 0 A,v,0");
    EXPECT_EQ(SeenByAnother(), end == RegFileCommit ? "A,v," : "");
  }
}

TEST_F(RegistryTransaction, ACallThatFailsInsideSpoilsNothing) {
  ASSERT_EQ(Create(key_, "full\\child").answer, 0);
  EXPECT_EQ(Text({RegFileCommit(), RegFileRollback(), RegFileBegin(), RegFileBegin()}), "87 87 0 87 ");
  EXPECT_EQ(Text({Set(key_, "v", "1"), RegDeleteKeyA(key_, "full")}), "0 5 ");
  EXPECT_EQ(Create(key_, "new\\" + std::string(256, 'x')).answer, 87);
  EXPECT_EQ(Create(key_, "later").answer, 0);
  EXPECT_EQ(Names(kSubkeys, key_), "full,later,");
  EXPECT_EQ(Text({RegFileCommit(), RegFileCommit()}), "0 87 ");
  EXPECT_EQ(SeenByAnother(), "full,later,v,");
}

TEST_F(RegistryTransaction, AForkRollsItBackAndTheCommitSaysSo) {
  ASSERT_EQ(Text({RegFileBegin(), Set(key_, "lost", "1")}), "0 0 ");
  Child child([&] { return Text({RegFileCommit(), Set(key_, "child", "1")}); });
  EXPECT_EQ(child.Answer(), "1016 0 ");
  EXPECT_EQ(Text({Set(key_, "late", "1"), Query(key_, "child"), RegFileCommit()}), "1016 1016 1016 ");
  EXPECT_EQ(std::string(RegFileCause()).find(RegFilePath()), 0u) << RegFileCause();
  EXPECT_EQ(Set(key_, "after", "1"), 0);
  EXPECT_EQ(SeenByAnother(), "child,after,");
}

TEST_F(RegistryTransaction, AThreadThatEndsInsideRollsItBack) {
  OnAnotherThread([&] { EXPECT_EQ(Text({RegFileBegin(), Set(key_, "lost", "1")}), "0 0 "); });
  EXPECT_EQ(Set(key_, "kept", "1"), 0);
  EXPECT_EQ(SeenByAnother(), "kept,");
}

TEST_F(RegistryTransaction, AWriterThatDoesNotFinishHoldsUpWritersForATimeAndReadersNever) {
  ASSERT_EQ(Text({Set(key_, "v", "1"), RegFileBegin()}), "0 0 ");
  OnAnotherThread([&] {
    auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(Get(key_, "v"), "1");
    EXPECT_EQ(Create(HKEY_LOCAL_MACHINE, kPath, KEY_READ).answer, 0);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));
    std::string answers = InThreads(3, [&](int writer) {
      LSTATUS answer = writer == 0   ? Set(key_, "v", "2")
                       : writer == 1 ? RegFileBegin()
                                     : RegDeleteKeyA(key_, "");
      return Digits(answer) + (std::string(RegFileCause()).starts_with(RegFilePath()) ? " named " : " ");
    });
    EXPECT_EQ(answers, "170 named 170 named 170 named ");
    EXPECT_GT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
  });
  EXPECT_EQ(RegFileCommit(), 0);
  EXPECT_EQ(Get(key_, "v"), "1");
}

}  // namespace
}  // namespace moxel::test
