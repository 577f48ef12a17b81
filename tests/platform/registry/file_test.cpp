// The file itself: what reads leave alone, files that are not ours or damaged, accounts without rights, full
// disks.
#include <grp.h>
#include <sched.h>
#include <sqlite3.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <fstream>
#include <iterator>
#include <random>
#include <set>

#include "registry_helpers.h"

namespace moxel::test {
namespace {

namespace fs = std::filesystem;

constexpr const char* kPath = "SOFTWARE\\X";

std::string BytesOf(const fs::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

void WriteBytes(const fs::path& file, std::string_view bytes) {
  std::ofstream(file, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

void ExecuteSql(const fs::path& file, const char* sql) {
  sqlite3* database = nullptr;
  ASSERT_EQ(sqlite3_open(file.c_str(), &database), SQLITE_OK);
  EXPECT_EQ(sqlite3_exec(database, sql, nullptr, nullptr, nullptr), SQLITE_OK) << sqlite3_errmsg(database);
  sqlite3_close(database);
}

std::size_t FilesIn(const fs::path& folder) {
  return static_cast<std::size_t>(std::distance(fs::directory_iterator(folder), {}));
}

class RegistryFile : public RegistryTest {
 protected:
  std::string log() const { return file().string() + "-wal"; }

  // A sound file with `keys` keys of three values each, closed again: no log stands beside it.
  void MakeFile(int keys) {
    OnAnotherThread([&] {
      ASSERT_EQ(RegFileBegin(), 0);
      for (int i = 0; i < keys; ++i) {
        Key key = Create(HKEY_LOCAL_MACHINE, std::string(kPath) + "\\key" + std::to_string(i));
        for (const char* name : {"a", "b", "c"}) ASSERT_EQ(Set(key, name, std::string(40, *name)), 0);
      }
      ASSERT_EQ(RegFileCommit(), 0);
    });
    ASSERT_FALSE(fs::exists(log()));
  }
};

TEST_F(RegistryFile, ReadsOfAMissingFileCreateNothing) {
  EXPECT_EQ(TryOpen(HKEY_LOCAL_MACHINE, kPath, KEY_ALL_ACCESS), 2);
  EXPECT_EQ(TryOpen(HKEY_LOCAL_MACHINE, "", KEY_ALL_ACCESS), 0);
  EXPECT_EQ(SubkeyName(HKEY_LOCAL_MACHINE, 0), std::nullopt);
  EXPECT_EQ(ValueName(HKEY_CLASSES_ROOT, 0), std::nullopt);
  EXPECT_EQ(Get(HKEY_LOCAL_MACHINE, "v"), std::nullopt);
  EXPECT_EQ(RegDeleteKeyA(HKEY_LOCAL_MACHINE, kPath), 2);
  EXPECT_EQ(RegDeleteValueA(HKEY_LOCAL_MACHINE, "v"), 2);
  EXPECT_EQ(RegFileCheck(), 0);
  EXPECT_EQ(RegFilePath(), file().string());
  EXPECT_EQ(FilesIn(folder()), 0u);
}

TEST_F(RegistryFile, ReadsAndTheCreationOfWhatExistsWriteNothing) {
  MakeFile(5);
  Key key = Create(HKEY_LOCAL_MACHINE, kPath);
  ASSERT_EQ(Set(key, "v", "1"), 0);
  const std::string bytes = BytesOf(file()), logged = BytesOf(log());
  ASSERT_FALSE(logged.empty());
  auto read_all = [&] {
    EXPECT_EQ(TryCreate(HKEY_LOCAL_MACHINE, "software\\x\\KEY0\\"), 0);
    EXPECT_EQ(TryOpen(key, "key1", KEY_ALL_ACCESS), 0);
    EXPECT_EQ(TryOpen(key, "none", KEY_ALL_ACCESS), 2);
    EXPECT_EQ(NamesOf(key, SubkeyName).size(), 5u);
    EXPECT_EQ(NamesOf(key, ValueName).size(), 1u);
    EXPECT_EQ(Get(key, "v"), "1");
    EXPECT_EQ(Get(key, "none"), std::nullopt);
    EXPECT_EQ(RegDeleteKeyA(key, "none"), 2);
    EXPECT_EQ(RegFileCheck(), 0);
  };
  read_all();
  OnAnotherThread(read_all);
  EXPECT_TRUE(BytesOf(file()) == bytes);
  EXPECT_TRUE(BytesOf(log()) == logged);
}

TEST_F(RegistryFile, AnEmptyFileIsAnEmptyHive) {
  WriteBytes(file(), "");
  EXPECT_EQ(TryOpen(HKEY_LOCAL_MACHINE, kPath), 2);
  EXPECT_EQ(RegFileCheck(), 0);
  EXPECT_EQ(fs::file_size(file()), 0u);
  EXPECT_EQ(TryCreate(HKEY_LOCAL_MACHINE, kPath), 0);
  EXPECT_EQ(TryOpen(HKEY_LOCAL_MACHINE, kPath), 0);
}

// Every call on a file that cannot be the registry answers the same code, names the file and leaves it alone.
TEST_F(RegistryFile, WhatIsNotARegistryIsRefusedAndLeftAsItIs) {
  auto expect_refused = [&](LSTATUS code, const char* what) {
    SCOPED_TRACE(what);
    bool is_file = fs::is_regular_file(file());
    std::string bytes = is_file ? BytesOf(file()) : "";
    OnAnotherThread([&] {
      HKEY root = HKEY_LOCAL_MACHINE;
      for (const auto& call : std::initializer_list<std::function<LSTATUS()>>{
               [&] { return TryOpen(root, kPath); }, [&] { return TryOpen(root, "", KEY_WRITE); },
               [&] { return TryCreate(root, kPath); }, [&] { return Set(root, "v", "1"); },
               [&] { return RegQueryValueExA(root, "v", nullptr, nullptr, nullptr, nullptr); },
               [&] { return RegDeleteKeyA(root, kPath); }, [&] { return RegDeleteValueA(root, "v"); },
               RegFileBegin, RegFileCheck}) {
        EXPECT_EQ(call(), code);
        std::string cause = RegFileCause();
        EXPECT_EQ(cause.find(file().string() + ": "), 0u) << cause;
        EXPECT_GT(cause.size(), file().string().size() + 5) << cause;
      }
    });
    EXPECT_TRUE(!is_file || BytesOf(file()) == bytes);
    EXPECT_FALSE(fs::exists(log()));
  };
  WriteBytes(file(), "hello");
  expect_refused(ERROR_BADDB, "a short text");
  WriteBytes(file(), std::string(10000, 'x'));
  expect_refused(ERROR_BADDB, "a long text");
  fs::remove(file());
  ExecuteSql(file(), "CREATE TABLE theirs(a); INSERT INTO theirs VALUES(1)");
  expect_refused(ERROR_BADDB, "another program's database");
  fs::remove(file());
  ExecuteSql(file(), "PRAGMA application_id = 7");
  expect_refused(ERROR_BADDB, "another program's empty database");
  fs::remove(file());
  MakeFile(3);
  ExecuteSql(file(), "PRAGMA user_version = 99");
  expect_refused(ERROR_BADDB, "a newer version");
  WriteBytes(file(), BytesOf(file()).substr(0, 50));
  expect_refused(ERROR_BADDB, "a file cut within its header");
  fs::remove(file());
  fs::create_directory(file());
  expect_refused(ERROR_ACCESS_DENIED, "a folder");
}

TEST_F(RegistryFile, ALaterSuccessClearsTheCause) {
  WriteBytes(file(), "hello");
  EXPECT_EQ(TryOpen(HKEY_LOCAL_MACHINE, kPath), ERROR_BADDB);
  EXPECT_NE(std::string(RegFileCause()), "");
  fs::remove(file());
  EXPECT_EQ(TryOpen(HKEY_LOCAL_MACHINE, kPath), 2);
  EXPECT_EQ(std::string(RegFileCause()), "");
}

// All kinds of calls; what each answers is collected.
void Exercise(std::set<LSTATUS>& answers) {
  Key key;
  answers.insert(RegOpenKeyExA(HKEY_LOCAL_MACHINE, kPath, 0, KEY_READ, key.Out()));
  char name[300];
  BYTE data[100];
  for (DWORD i = 0; i < 100; ++i) {
    DWORD length = sizeof name, size = sizeof data;
    LSTATUS answer = RegEnumKeyExA(key, i, name, &length, nullptr, nullptr, nullptr, nullptr);
    answers.insert(answer);
    if (answer != 0) break;
    Key child;
    answers.insert(RegOpenKeyExA(key, name, 0, KEY_READ, child.Out()));
    answers.insert(RegQueryValueExA(child, "b", nullptr, nullptr, data, &size));
    length = sizeof name, size = sizeof data;
    answers.insert(RegEnumValueA(child, i % 4, name, &length, nullptr, nullptr, data, &size));
  }
  answers.insert(RegFileCheck());
  for (const char* path : {"key3", "new", "key30", "SOFTWARE\\X\\key50"}) {
    Key child;
    answers.insert(RegCreateKeyExA(HKEY_LOCAL_MACHINE, (std::string(kPath) + "\\" + path).c_str(), 0, nullptr,
                                   0, KEY_ALL_ACCESS, nullptr, child.Out(), nullptr));
    answers.insert(Set(child, "b", std::string(300, 'n')));
    answers.insert(RegDeleteValueA(child, "c"));
    answers.insert(RegDeleteKeyA(child, ""));
  }
}

TEST_F(RegistryFile, DamageIsAnsweredWithCodes) {
  MakeFile(80);
  const std::string sound = BytesOf(file());
  const std::set<LSTATUS> documented{0, 2, 3, 5, 6, 14, 112, 170, 234, 259, 1009, 1016, 1018};
  std::set<LSTATUS> answers;
  int found = 0;
  std::mt19937 random(7);
  for (int round = 0; round < 120; ++round) {
    std::string damaged = sound;
    if (round % 10 == 0) {
      damaged.resize(100 + random() % (sound.size() - 100));
    } else {
      // The header and the roots of the tables lie in front: half of the damage goes there.
      std::size_t reach = round % 2 == 0 ? 4096 : sound.size();
      for (auto n = 1 + random() % 12; n > 0; --n)
        damaged[100 * (round % 3 != 0) + random() % (reach - 100)] = static_cast<char>(random());
    }
    ::setenv("MOXEL_REGISTRY", (folder() / std::to_string(round)).c_str(), 1);
    WriteBytes(RegFilePath(), damaged);
    std::set<LSTATUS> now;
    OnAnotherThread([&] { Exercise(now); });
    found += static_cast<int>(now.count(ERROR_BADDB));
    answers.merge(now);
  }
  for (LSTATUS answer : answers) EXPECT_TRUE(documented.count(answer)) << answer;
  EXPECT_GT(found, 40);
}

TEST_F(RegistryFile, TheCheckNamesWhatIsWrong) {
  MakeFile(3);
  ExecuteSql(file(), "UPDATE keys SET parent = 9999 WHERE name = 'key1'");
  EXPECT_EQ(RegFileCheck(), ERROR_BADDB);
  EXPECT_NE(std::string(RegFileCause()).find("KEY1"), std::string::npos) << RegFileCause();
}

TEST_F(RegistryFile, AFolderThatIsMissingOrIsNone) {
  WriteBytes(folder() / "plain", "text");
  for (const char* path : {"missing/registry.db", "plain/registry.db"}) {
    ::setenv("MOXEL_REGISTRY", (folder() / path).c_str(), 1);
    EXPECT_EQ(TryCreate(HKEY_LOCAL_MACHINE, kPath), ERROR_PATH_NOT_FOUND) << path;
    EXPECT_EQ(std::string(RegFileCause()).find(RegFilePath()), 0u) << RegFileCause();
  }
}

// Accounts other than the owner's, in a folder whose rights the test sets.
class RegistryAccount : public RegistryFile {
 protected:
  void SetUp() override {
    if (::geteuid() != 0) GTEST_SKIP() << "only root can act for other accounts";
  }
  void TearDown() override { ::chmod(folder().c_str(), 0700); }

  static bool BecomeNobody() {
    return ::setgroups(0, nullptr) == 0 && ::setgid(65534) == 0 && ::setuid(65534) == 0;
  }

  // What a sequence of calls answers to the account nobody: opening for reading and for writing in four ways,
  // setting, creating what exists and what does not, deleting, setting with all that may be had, and reading.
  static std::string Transcript() {
    if (!BecomeNobody()) return "still root";
    std::string answers;
    auto add = [&](LSTATUS answer) { answers += std::to_string(answer) + " "; };
    const std::string path = std::string(kPath) + "\\key0";
    add(TryOpen(HKEY_LOCAL_MACHINE, path));
    for (REGSAM access : {KEY_SET_VALUE, KEY_CREATE_SUB_KEY, GENERIC_WRITE, GENERIC_ALL})
      add(TryOpen(HKEY_LOCAL_MACHINE, path, access));
    add(Set(HKEY_LOCAL_MACHINE, "v", "1"));
    add(TryCreate(HKEY_LOCAL_MACHINE, path));
    add(TryCreate(HKEY_LOCAL_MACHINE, "new"));
    add(RegDeleteKeyA(HKEY_LOCAL_MACHINE, path.c_str()));
    Key key = Open(HKEY_LOCAL_MACHINE, path, MAXIMUM_ALLOWED);
    add(Set(key, "a", "new"));
    return answers + Get(key, "a").value_or("-");
  }
};

TEST_F(RegistryAccount, MayDoWhatTheFileAndItsFolderAllow) {
  struct {
    const char* story;
    mode_t file, folder;
    const char* transcript;
  } const cases[] = {
      {"all allowed", 0666, 0777, "0 0 0 0 0 0 0 0 0 6 -"},
      {"may read, and create the log", 0644, 0777, "0 5 5 5 5 5 0 5 5 5 aaa"},
      {"may read only", 0644, 0755, "0 5 5 5 5 5 0 5 5 5 aaa"},
      {"may write the file but not create the log", 0666, 0755, "0 5 5 5 5 5 0 5 5 5 aaa"},
      {"may not read the file", 0600, 0777, "5 5 5 5 5 5 5 5 5 6 -"},
      {"may not enter the folder", 0666, 0700, "5 5 5 5 5 5 5 5 5 6 -"},
  };
  for (bool writer_active : {false, true}) {
    for (const auto& c : cases) {
      if (writer_active && c.file == 0666) continue;  // then the log decides, which its own case covers
      SCOPED_TRACE(std::string(c.story) + (writer_active ? ", beside a writer" : ""));
      ::chmod(folder().c_str(), 0755);
      fs::path path = folder() / (std::string(c.story) + (writer_active ? " and writer" : "") + "?#%.db");
      ::setenv("MOXEL_REGISTRY", path.c_str(), 1);
      OnAnotherThread(
          [&] { ASSERT_EQ(Set(Create(HKEY_LOCAL_MACHINE, "SOFTWARE\\X\\key0"), "a", "aaa"), 0); });
      ::chmod(path.c_str(), c.file);
      Pipe gate;
      Child child([&] {
        gate.WaitForClose();
        return Transcript();
      });
      // After the fork, which closes all connections.
      if (writer_active) {
        ASSERT_EQ(Set(HKEY_LOCAL_MACHINE, "v", "1"), 0);
        ASSERT_TRUE(fs::exists(path.string() + "-wal"));
      }
      ::chmod(folder().c_str(), c.folder);
      gate.CloseWriting();
      EXPECT_EQ(child.Answer(), c.transcript);
    }
  }
}

TEST_F(RegistryAccount, WithoutRightsOnTheFolderNothingIsCreated) {
  ::chmod(folder().c_str(), 0755);
  Child child([&]() -> std::string {
    if (!BecomeNobody()) return "still root";
    LSTATUS read = TryOpen(HKEY_LOCAL_MACHINE, kPath), created = TryCreate(HKEY_LOCAL_MACHINE, kPath);
    return std::to_string(read) + " " + std::to_string(created) + " " + RegFileCause();
  });
  std::string answer = child.Answer();
  EXPECT_EQ(answer.find("2 5 " + file().string() + ": "), 0u) << answer;
  EXPECT_EQ(FilesIn(folder()), 0u);
}

// The reader opens the file alone, beside the log of a writer, after the writer has gone, and after it was
// killed.
TEST_F(RegistryAccount, AReaderWithoutRightsSeesEveryChange) {
  MakeFile(1);
  ::chmod(file().c_str(), 0644);
  ::chmod(folder().c_str(), 0755);
  Pipe ask, tell;
  Child reader([&]() -> std::string {
    if (!BecomeNobody()) return "still root";
    ask.CloseWriting();
    for (char c; ask.Receive(c);) tell.Send(Get(Open(HKEY_LOCAL_MACHINE, kPath), "v").value_or("-").front());
    return "";
  });
  tell.CloseWriting();
  auto seen = [&] {
    char c = '!';
    ask.Send(c);
    tell.Receive(c);
    return c;
  };
  auto set = [](std::string text) { return Set(Create(HKEY_LOCAL_MACHINE, kPath), "v", text); };
  EXPECT_EQ(seen(), '-');
  for (char c = 'a'; c <= 'z'; ++c) {  // each writer comes and goes, on a file system that knows seconds only
    OnAnotherThread([&] { EXPECT_EQ(set(std::string(1, c)), 0); });
    fs::last_write_time(file(), std::chrono::floor<std::chrono::seconds>(fs::file_time_type::clock::now()));
    EXPECT_EQ(seen(), c);
  }
  OnAnotherThread([&] {
    for (char c = 'A'; c <= 'Z'; ++c) {  // one stays
      EXPECT_EQ(set(std::string(1, c)), 0);
      EXPECT_EQ(seen(), c);
    }
  });
  EXPECT_EQ(seen(), 'Z');
  Child killed([&]() -> std::string {
    set("9");
    ::kill(::getpid(), SIGKILL);
    return "";
  });
  killed.Answer();
  EXPECT_TRUE(fs::exists(log()));
  EXPECT_EQ(seen(), '9');
  OnAnotherThread([&] { EXPECT_EQ(set("8"), 0); });
  EXPECT_EQ(seen(), '8');
  ask.CloseWriting();
  EXPECT_EQ(reader.Answer(), "");
}

TEST_F(RegistryAccount, RightsTakenAwayCountAtOnce) {
  MakeFile(1);
  ::chmod(file().c_str(), 0666);
  ::chmod(folder().c_str(), 0777);
  Child child([&]() -> std::string {
    if (::setegid(65534) != 0 || ::seteuid(65534) != 0) return "still root";
    std::string answers = std::to_string(TryOpen(HKEY_LOCAL_MACHINE, kPath, KEY_WRITE));
    if (::seteuid(0) != 0 || ::chmod(file().c_str(), 0644) != 0 || ::seteuid(65534) != 0) return "not root";
    return answers + " " + std::to_string(TryOpen(HKEY_LOCAL_MACHINE, kPath, KEY_WRITE)) + " " +
           std::to_string(TryOpen(HKEY_LOCAL_MACHINE, kPath));
  });
  EXPECT_EQ(child.Answer(), "0 5 0");
}

// Writes until there is no room, then looks whether everything that was acknowledged is there.
std::string FillUp(const std::function<void()>& make_room) {
  Key key = Create(HKEY_LOCAL_MACHINE, kPath);
  std::mt19937 random(1);
  std::vector<std::string> stored;
  LSTATUS answer = 0;
  while (stored.size() < 2000) {
    std::string data(500 + random() % 6000, static_cast<char>('a' + stored.size() % 26));
    answer = Set(key, std::to_string(stored.size()), data);
    if (answer != 0) break;
    stored.push_back(data);
  }
  std::string report = std::to_string(answer);
  if (std::string(RegFileCause()).find(std::string(RegFilePath()) + ": ") != 0) report += " no cause";
  if (LSTATUS created = TryCreate(key, std::string(200, 'k') + "\\" + std::string(200, 'l')))
    report += " then " + std::to_string(created);
  auto look = [&](const char* when) {
    for (std::size_t i = 0; i < stored.size(); ++i)
      if (Get(key, std::to_string(i)) != stored[i]) report += " lost " + std::to_string(i) + when;
    if (RegFileCheck() != 0) report += std::string(" damaged") + when;
  };
  look(" at once");
  OnAnotherThread([&] { look(" in a new connection"); });
  make_room();
  if (LSTATUS later = Set(key, "later", "1")) report += " no use of new room: " + std::to_string(later);
  look(" later");
  return stored.size() < 5 ? report + " stored only " + std::to_string(stored.size()) : report;
}

TEST_F(RegistryFile, AFullDiskIsReportedAndLosesNothing) {
  fs::path disk = folder() / "disk";
  fs::create_directory(disk);
  Child child([&]() -> std::string {
    // The mount is this child's own and goes with it.
    if (::unshare(CLONE_NEWNS) != 0 || ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
        ::mount("tmpfs", disk.c_str(), "tmpfs", 0, "size=1m") != 0)
      return "no mount";
    WriteBytes(disk / "ballast", std::string(500000, 'b'));
    ::setenv("MOXEL_REGISTRY", (disk / "registry.db").c_str(), 1);
    return FillUp([&] { fs::remove(disk / "ballast"); });
  });
  std::string answer = child.Answer();
  if (answer == "no mount") GTEST_SKIP() << "this machine lets no file system be mounted";
  EXPECT_EQ(answer.substr(0, 3), std::to_string(ERROR_DISK_FULL));
  EXPECT_TRUE(answer == "112" || answer == "112 then 112") << answer;
}

TEST_F(RegistryFile, AFullDiskLetsNoFileBeCreated) {
  fs::path disk = folder() / "disk";
  fs::create_directory(disk);
  for (const char* options : {"size=40k", "size=1m,nr_inodes=2"}) {
    Child child([&]() -> std::string {
      if (::unshare(CLONE_NEWNS) != 0 || ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
          ::mount("tmpfs", disk.c_str(), "tmpfs", 0, options) != 0)
        return "no mount";
      WriteBytes(disk / "ballast", std::string(40960, 'b'));
      ::setenv("MOXEL_REGISTRY", (disk / "registry.db").c_str(), 1);
      std::string full = std::to_string(TryCreate(HKEY_LOCAL_MACHINE, kPath));
      std::string cause = std::string(RegFileCause()).find(RegFilePath()) == 0 ? " named " : " ";
      fs::remove(disk / "ballast");
      ::mount(nullptr, disk.c_str(), nullptr, MS_REMOUNT, "size=2m,nr_inodes=20");
      return full + cause + std::to_string(TryCreate(HKEY_LOCAL_MACHINE, kPath));
    });
    std::string answer = child.Answer();
    if (answer == "no mount") GTEST_SKIP() << "this machine lets no file system be mounted";
    EXPECT_EQ(answer, "112 named 0") << options;
  }
}

TEST_F(RegistryFile, ALimitOnTheSizeOfFilesIsAFullDisk) {
  Child child([&]() -> std::string {
    ::signal(SIGXFSZ, SIG_IGN);
    rlimit limit{300000, RLIM_INFINITY};
    if (::setrlimit(RLIMIT_FSIZE, &limit) != 0) return "no limit";
    return FillUp([] {
      rlimit none{RLIM_INFINITY, RLIM_INFINITY};
      ::setrlimit(RLIMIT_FSIZE, &none);
    });
  });
  std::string answer = child.Answer();
  EXPECT_TRUE(answer == "112" || answer == "112 then 112") << answer;
}

}  // namespace
}  // namespace moxel::test
