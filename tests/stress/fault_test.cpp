// A disk, a file or an account that fails under its users: each operation below SQLite in turn, damage of
// every kind, and rights and folders that come and go.
#include <sys/resource.h>
#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <fstream>
#include <map>
#include <set>
#include <sstream>

#include "fault_vfs.h"
#include "load.h"

namespace moxel::test {
namespace {

namespace fs = std::filesystem;

const int kStride = Setting("MOXEL_STRESS_STRIDE", 97);
const int kDamages = Setting("MOXEL_STRESS_DAMAGES", 100);

void UseFile(const fs::path& path) { ::setenv("MOXEL_REGISTRY", path.c_str(), 1); }

// A whole tree in words; the code of the first call that fails.
LSTATUS Describe(HKEY key, std::string& text) {
  std::string name;
  LSTATUS answer = 0;
  for (DWORD i = 0; (answer = Step(kValues, key, i, &name)) == 0; ++i) {
    std::string data(70000, '\0');
    DWORD size = 70000;
    if ((answer = Query(key, name, data.data(), &size)) != 0) return answer;
    text +=
        name + "=" + (data.substr(0, size) == Uniform(size) ? Digits(static_cast<int>(size)) : "torn") + " ";
  }
  for (DWORD i = 0; answer == 259 && (answer = Step(kSubkeys, key, i, &name)) == 0; ++i) {
    Key child = Open(key, name);
    text += name + "{";
    if (child.answer != 0 || (answer = Describe(child, text)) != 0) return child.answer + answer;
    text += "} ";
    answer = 259;
  }
  return answer == 259 ? 0 : answer;
}

LSTATUS SetBelow(const std::string& path, const std::string& name, std::size_t size) {
  Key key = Open(kRoot, path, KEY_ALL_ACCESS);
  return key.answer != 0 ? key.answer : Set(key, name, Uniform(size));
}

LSTATUS RemoveBelow(const std::string& path, const std::string& name) {
  Key key = Open(kRoot, path, KEY_ALL_ACCESS);
  return key.answer != 0 ? key.answer : Remove(kValues, key, name);
}

LSTATUS Batch() {
  LSTATUS answer = RegFileBegin();
  if (answer != 0) return answer;
  answer = SetBelow("S\\a", "left", 9000);
  if (answer == 0) answer = Create(kRoot, "S\\batch").answer;
  if (answer == 0) answer = SetBelow("S\\batch", "right", 20);
  if (answer == 0) return RegFileCommit();
  RegFileRollback();
  return answer;
}

std::string BackupPath() { return RegFilePath() + std::string(".backup"); }
LSTATUS BackUp() { return RegFileBackup(BackupPath().c_str()); }
LSTATUS Restore() { return RegFileRestore(BackupPath().c_str()); }

using Action = std::function<LSTATUS(std::string& read)>;

// What two programs do, one after the other: the second goes on with a connection of its own.
const std::vector<Action> kPrograms[] = {
    {[](auto&) { return Create(kRoot, "S\\a\\b").answer; },
     [](auto&) { return SetBelow("S\\a", "left", 5000); }, [](auto&) { return SetBelow("S\\a", "v", 0); },
     [](auto&) { return Create(kRoot, "S\\c").answer; }, [](auto& read) { return Describe(kRoot, read); },
     [](auto&) { return Batch(); }, [](auto& read) { return Describe(kRoot, read); },
     [](auto&) { return BackUp(); }},
    {[](auto& read) { return Describe(kRoot, read); }, [](auto&) { return SetBelow("S\\a", "left", 30); },
     [](auto&) { return RemoveBelow("S\\a", "v"); }, [](auto&) { return Remove(kSubkeys, kRoot, "S\\a\\b"); },
     [](auto&) { return SetBelow("S\\c", "large", 60000); }, [](auto&) { return Batch(); },
     [](auto&) { return RegFileCheck(); }, [](auto& read) { return Describe(kRoot, read); },
     [](auto&) { return Restore(); }, [](auto& read) { return Describe(kRoot, read); },
     [](auto&) { return SetBelow("S\\c", "last", 40); }, [](auto&) { return BackUp(); }}};

constexpr std::size_t kCheckStep = 14, kRestoreStep = 16;

struct Outcome {
  std::vector<bool> done;         // the steps that succeeded
  std::vector<std::string> read;  // what they read
  std::set<LSTATUS> codes;
  std::string after;   // what is there at last
  std::string backup;  // what the last backup holds, if one was made
};

// Runs the programs, or those steps of them that are wanted, while the fault lasts. The last connection that
// met it goes on when it is lifted.
Outcome RunPrograms(const Fault& fault, const std::vector<bool>* wanted = nullptr) {
  Outcome outcome;
  SetFault(fault);
  for (const auto& program : kPrograms) {
    OnAnotherThread([&] {
      for (const Action& step : program) {
        const std::size_t number = outcome.done.size();
        std::string read;
        const bool run = wanted == nullptr || (*wanted)[number];
        const LSTATUS answer = run ? step(read) : 2;
        // To the check, a page that cannot be read is damage.
        if (answer != 1009 || (number != kCheckStep && number != kRestoreStep)) outcome.codes.insert(answer);
        outcome.done.push_back(answer == 0);
        outcome.read.push_back(answer == 0 ? read : "");
      }
      if (&program == std::end(kPrograms) - 1) {
        LiftFault();
        EXPECT_EQ(Create(kRoot, "after").answer, 0) << RegFileCause();
        EXPECT_EQ(Describe(kRoot, outcome.after), 0) << RegFileCause();
        const std::string file = RegFilePath();
        UseFile(BackupPath());
        EXPECT_EQ(RegFileCheck(), 0) << RegFileCause();
        EXPECT_EQ(Describe(kRoot, outcome.backup), 0) << RegFileCause();
        UseFile(file);
      }
    });
  }
  return outcome;
}

class Faults : public RegistryLoad {
 protected:
  // In memory, where there is room: failures are tried here, thousands of them, not the disk.
  static void SetUpTestSuite() {
    RegisterFaultyFileSystem();
    if (::access("/dev/shm", W_OK) == 0) ::setenv("TMPDIR", "/dev/shm", 0);
  }

  // The files that a program leaves that is killed while it uses them: some of it in the file, some in the
  // log.
  void MakeLeftBehind(const fs::path& file, int keys = 0) {
    UseFile(file);
    Child([&] {
      OnAnotherThread([&] {
        Batch(), Create(kRoot, "S\\a\\old");
        for (int i = 0; i < keys; ++i) Set(Create(kRoot, "S\\key" + Digits(i)), "v", Uniform(600));
      });
      Batch(), SetBelow("S\\a", "v", 12000), Batch();
      return std::to_string(::raise(SIGKILL));
    }).Answer();
    EXPECT_TRUE(fs::exists(file.string() + "-wal"));
  }

  static void CopyFiles(const fs::path& from, const fs::path& to) {
    for (const char* end : {"", "-wal", "-shm"})
      if (fs::exists(from.string() + end)) fs::copy_file(from.string() + end, to.string() + end);
  }
};

const std::tuple<const char*, Call, int, int> kFaults[] = {
    {"open", kOpen, SQLITE_CANTOPEN, EMFILE},
    {"delete", kDelete, SQLITE_IOERR_DELETE, EIO},
    {"access", kAccess, SQLITE_IOERR_ACCESS, EIO},
    {"read", kRead, SQLITE_IOERR_READ, EIO},
    {"write", kWrite, SQLITE_IOERR_WRITE, EIO},
    {"write, full", kWrite, SQLITE_FULL, ENOSPC},
    {"truncate", kTruncate, SQLITE_IOERR_TRUNCATE, EIO},
    {"sync", kSync, SQLITE_IOERR_FSYNC, EIO},
    {"size", kSize, SQLITE_IOERR_FSTAT, EIO},
    {"lock", kLock, SQLITE_IOERR_LOCK, EIO},
    {"map", kMap, SQLITE_IOERR_SHMMAP, ENOMEM},
    {"map, full", kMap, SQLITE_FULL, ENOSPC},
    {"lock of the index", kMapLock, SQLITE_IOERR_SHMLOCK, EIO},
};

// A call that fails does nothing, all others do all: the same tree as where the failing ones were left out.
TEST_F(Faults, EachOperationInTurnFailsAndOnlyItsCallDoes) {
  MakeLeftBehind(folder() / "left.db");
  std::map<std::pair<bool, std::vector<bool>>, Outcome> twins;
  int points = 0;
  for (auto [what, operation, code, error_number] : kFaults) {
    std::set<LSTATUS> codes;
    for (int variant = 0; variant < 4; ++variant) {
      const bool lasts = variant % 2 == 1, left_behind = variant >= 2;
      auto use_new_file = [&](const std::string& name) {
        for (const char* end : {"", "-wal", "-shm", ".backup", ".backup-wal", ".backup-shm"})
          fs::remove((folder() / name).string() + end);
        if (left_behind) CopyFiles(folder() / "left.db", folder() / name);
        UseFile(folder() / name);
      };
      int at = 1 + static_cast<int>(std::random_device{}() % static_cast<unsigned>(kStride));
      for (bool struck = true; struck && !HasFailure(); at += kStride, points += struck ? 1 : 0) {
        SCOPED_TRACE(what + std::string(lasts ? ", from " : ", only ") + Digits(at) +
                     (left_behind ? ", left behind" : ""));
        use_new_file("faulty");
        Outcome outcome = board_.Time([&, o = operation, c = code, e = error_number] {
          return RunPrograms({o, c, e, at, lasts});
        });
        struck = FaultHasStruck();
        OnAnotherThread([&] {
          std::string now;
          EXPECT_EQ(RegFileCheck(), 0) << RegFileCause();
          EXPECT_EQ(Describe(kRoot, now), 0);
          EXPECT_EQ(now, outcome.after);
        });
        codes.insert(outcome.codes.begin(), outcome.codes.end());
        Outcome& twin = twins[{left_behind, outcome.done}];
        if (twin.done.empty()) use_new_file("twin"), twin = RunPrograms({}, &outcome.done);
        EXPECT_EQ(outcome.read, twin.read);
        EXPECT_EQ(outcome.after, twin.after);
        EXPECT_EQ(outcome.backup, twin.backup);
        EXPECT_EQ(outcome.done, twin.done);
      }
    }
    std::cout << "[ figures  ] " << what << ": " << Text({codes.begin(), codes.end()}) << "\n";
    for (LSTATUS documented : {0, 2, 3, 5, 112, 170, 1016}) codes.erase(documented);
    EXPECT_EQ(Text({codes.begin(), codes.end()}), "") << what;
  }
  std::cout << "[ figures  ] " << points << " points\n";
  board_.Print();
}

// The codes that no failing file may answer.
std::string Undocumented(std::set<std::int64_t> codes) {
  for (int code : {0, 2, 3, 5, 6, 14, 112, 170, 234, 259, 1009, 1016, 1018}) codes.erase(code);
  return Text({codes.begin(), codes.end()});
}

// Every call on every key that is still to be seen.
void Exercise(HKEY key, int depth, std::set<std::int64_t>& codes) {
  std::string name;
  for (DWORD i = 0; i < 20 && depth < 5 && Step(kSubkeys, key, i, &name) == 0; ++i)
    Exercise(Open(key, name, KEY_ALL_ACCESS), depth + 1, codes);
  for (DWORD i = 0; i < 20 && Step(kValues, key, i, &name) == 0; ++i) codes.insert(Query(key, name));
  for (auto code : AllCalls(key)) codes.insert(code);
  codes.insert({RegFileCheck(), Batch()});
}

void Damage(const fs::path& file, int manner, std::mt19937& random, const fs::path& other) {
  std::string bytes = (std::ostringstream() << std::ifstream(file).rdbuf()).str();
  if (bytes.empty()) return;
  const std::size_t at =
      random() % (manner % 2 == 0 ? std::min<std::size_t>(bytes.size(), 200) : bytes.size());
  switch (manner / 2) {
    case 0: fs::remove(file); return;
    case 1: fs::copy_file(other, file, fs::copy_options::overwrite_existing); return;
    case 2: fs::resize_file(file, at); return;
    case 3: bytes.replace(at, std::min<std::size_t>(bytes.size() - at, random() % 5000), 300, '\0'); break;
    default:
      for (auto n = 1 + random() % 12; n > 0; --n)
        bytes[(at + random() % 64) % bytes.size()] = static_cast<char>(random());
  }
  std::ofstream(file, std::ios::in | std::ios::out) << bytes;
}

// The file, its log or the index of it: spoiled, cut, missing, or another's, before a program opens the file
// or while it uses it.
TEST_F(Faults, DamageOfTheFilesIsAnsweredWithCodes) {
  MakeLeftBehind(folder() / "left.db", 40);
  MakeLeftBehind(folder() / "other.db", 60);
  const unsigned seed = std::random_device{}();
  std::mt19937 random(seed);
  int found = 0;
  for (int round = 0; round < kDamages && !HasFailure(); ++round) {
    const std::string end = std::array{"", "-wal", "-shm"}[random() % 3];
    const fs::path copy = folder() / Digits(round);
    const bool in_use = random() % 2 == 0;
    // The index is memory that programs share: whoever cuts it takes it from under them.
    const int manner = static_cast<int>(end == "-shm" && in_use ? 6 + random() % 4 : random() % 10);
    SCOPED_TRACE("seed " + std::to_string(seed) + ", round " + Digits(round) + end + " manner " +
                 Digits(manner) + (in_use ? " in use" : ""));
    CopyFiles(folder() / "left.db", copy);
    UseFile(copy);
    Pipe ready, gate;
    Child program([&] {
      std::set<std::int64_t> codes;
      ::alarm(60);
      if (in_use) codes.insert({SetBelow("S\\a", "w", 9), Step(kSubkeys, kRoot, 0)});
      ready.Send(1), gate.Rest();
      Exercise(kRoot, 0, codes);
      return Undocumented(codes) + (codes.contains(1009) ? "found" : "");
    });
    int number = 0;
    ready.Receive(number);
    Damage(copy.string() + end, manner, random, folder() / ("other.db" + end));
    gate.CloseWriting();
    const std::string answer = program.Answer();
    EXPECT_TRUE(answer.empty() || answer == "found") << answer;
    found += answer == "found" ? 1 : 0;
  }
  std::cout << "[ figures  ] " << kDamages << " times damaged, " << found << " found\n";
  EXPECT_GT(found, kDamages / 20);
}

TEST_F(Faults, FileDescriptorsThatRunOutAreReportedAndForgotten) {
#if defined(__SANITIZE_ADDRESS__)
  GTEST_SKIP() << "the sanitizers look at memory through descriptors of their own";
#endif
  for (rlim_t descriptors = 3; descriptors < 20; ++descriptors) {
    UseFile(folder() / Digits(static_cast<int>(descriptors)));
    Child program([&] {
      rlimit limit{};
      ::getrlimit(RLIMIT_NOFILE, &limit);
      const rlim_t plenty = std::exchange(limit.rlim_cur, descriptors);
      ::setrlimit(RLIMIT_NOFILE, &limit);
      const LSTATUS created = Create(kRoot, "S\\a").answer;
      const std::set<std::int64_t> codes{created, SetBelow("S\\a", "v", 9), Step(kSubkeys, kRoot, 0),
                                         Batch()};
      limit.rlim_cur = plenty;
      ::setrlimit(RLIMIT_NOFILE, &limit);
      return Undocumented(codes) +
             Text({Create(kRoot, "S\\a").answer, SetBelow("S\\a", "w", 9), RegFileCheck()});
    });
    EXPECT_EQ(program.Answer(), "0 0 0 ") << descriptors;
  }
}

TEST_F(Faults, AFolderThatGoesAwayAndComesBack) {
  const fs::path here = folder() / "here", away = folder() / "away";
  fs::create_directory(here);
  UseFile(here / "registry.db");
  Key key = Create(kRoot, kPath);
  auto calls = [&] { return Text({Open(kRoot, kPath).answer, Query(key, "v"), Set(key, "v", "1")}); };
  ASSERT_EQ(Set(key, "v", "0"), 0);
  for (const char* answers : {"2 1018 3 ", "0 0 0 "}) {
    fs::exists(here) ? fs::rename(here, away) : fs::rename(away, here);
    ::usleep(80000);
    EXPECT_EQ(calls(), answers) << RegFileCause();
  }
}

TEST_F(Faults, RightsThatAreGivenCountAtOnce) {
  if (::geteuid() != 0) GTEST_SKIP() << "only root can act for other accounts";
  MakeLeftBehind(file());
  ::chmod(folder().c_str(), 0777);
  auto calls_under = [&](mode_t mode) {
    for (const char* end : {"", "-wal", "-shm"}) ::chmod((file().string() + end).c_str(), mode);
    return ::seteuid(65534) != 0
               ? "no other account"
               : Text({Open(kRoot, "S", KEY_READ).answer, Open(kRoot, "S", KEY_WRITE).answer,
                       Set(kRoot, "v", "1"), Batch(), ::seteuid(0)});
  };
  Child program(
      [&] { return calls_under(0444) + calls_under(0666) + calls_under(0444) + calls_under(0666); });
  EXPECT_EQ(program.Answer(), "0 5 5 5 0 0 0 0 0 0 0 5 5 5 0 0 0 0 0 0 ");
}

}  // namespace
}  // namespace moxel::test
