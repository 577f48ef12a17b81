// The file itself: what reads leave alone, files that are not ours or damaged, accounts without rights, full
// disks.
#include <grp.h>
#include <sched.h>
#include <sqlite3.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <chrono>
#include <fstream>
#include <functional>
#include <iterator>
#include <random>
#include <set>
#include <tuple>

#include "registry_helpers.h"

namespace moxel::test {
namespace {

namespace fs = std::filesystem;

std::string BytesOf(const fs::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

void WriteBytes(const fs::path& file, std::string_view bytes) {
  std::ofstream(file, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

bool CauseNamesTheFile() {
  return std::string(RegFileCause()).starts_with(RegFilePath() + std::string(": "));
}

class RegistryFile : public RegistryTest {
 protected:
  std::string log() const { return file().string() + "-wal"; }

  void ExecuteSql(const char* sql) {
    sqlite3* database = nullptr;
    EXPECT_EQ(sqlite3_open(file().c_str(), &database), SQLITE_OK);
    EXPECT_EQ(sqlite3_exec(database, sql, nullptr, nullptr, nullptr), SQLITE_OK) << sqlite3_errmsg(database);
    sqlite3_close(database);
  }

  // A sound file with `keys` keys of three values each, closed again: no log stands beside it.
  void MakeFile(int keys) {
    OnAnotherThread([&] {
      ASSERT_EQ(RegFileBegin(), 0);
      for (int i = 0; i < keys; ++i) {
        Key key = Create(HKEY_LOCAL_MACHINE, std::string(kPath) + "\\key" + std::to_string(i));
        for (const char* name : {"a", "v", "z"}) ASSERT_EQ(Set(key, name, std::string(40, *name)), 0);
      }
      ASSERT_EQ(RegFileCommit(), 0);
    });
    ASSERT_FALSE(fs::exists(log()));
  }
};

TEST_F(RegistryFile, ReadsOfAMissingOrEmptyFileCreateNothing) {
  Key root = Open(HKEY_LOCAL_MACHINE, "", KEY_ALL_ACCESS);
  for (bool missing : {true, false}) {
    if (!missing) WriteBytes(file(), "");
    Answers roots{root.answer, Step(kSubkeys, root, 0), Step(kValues, HKEY_CLASSES_ROOT, 0)};
    Answers rest{Open(root, kPath, KEY_ALL_ACCESS).answer, Query(HKEY_LOCAL_MACHINE, "v"),
                 Remove(kSubkeys, root, kPath), Remove(kValues, root, "v"), RegFileCheck()};
    EXPECT_EQ(Text(roots) + Text(rest), "0 259 259 2 2 2 2 0 ");
    EXPECT_EQ(RegFilePath(), file().string());
    EXPECT_EQ(std::distance(fs::directory_iterator(folder()), {}), missing ? 0 : 1);
    EXPECT_EQ(BytesOf(file()), "");
  }
  EXPECT_EQ(Text({Create(root, kPath).answer, Open(HKEY_LOCAL_MACHINE, kPath).answer}), "0 0 ");
}

TEST_F(RegistryFile, ReadsAndTheCreationOfWhatExistsWriteNothing) {
  MakeFile(2);
  Key key = Create(HKEY_LOCAL_MACHINE, kPath);
  ASSERT_EQ(Set(key, "v", "1"), 0);
  const std::string bytes = BytesOf(file()), logged = BytesOf(log());
  ASSERT_FALSE(logged.empty());
  auto read_all = [&] {
    Answers answers{Create(HKEY_LOCAL_MACHINE, "software\\x\\KEY0\\").answer, Remove(kSubkeys, key, "none"),
                    Open(key, "none", KEY_ALL_ACCESS).answer, RegFileCheck()};
    EXPECT_EQ(Text(answers), "0 2 2 0 ");
    EXPECT_EQ(Names(kSubkeys, key) + Names(kValues, Open(key, "key1")), "key0,key1,a,v,z,");
    EXPECT_EQ(Get(key, "v"), "1");
  };
  read_all();
  OnAnotherThread(read_all);
  EXPECT_TRUE(BytesOf(file()) == bytes);
  EXPECT_TRUE(BytesOf(log()) == logged);
}

// Every call on a file that cannot be the registry answers the same code, names the file and leaves it alone;
// a later success clears the cause.
TEST_F(RegistryFile, WhatIsNotARegistryIsRefusedAndLeftAsItIs) {
  const std::tuple<const char*, LSTATUS, std::function<void()>> cases[] = {
      {"a short text", 1009, [&] { WriteBytes(file(), "hello"); }},
      {"a long text", 1009, [&] { WriteBytes(file(), std::string(10000, 'x')); }},
      {"another program's database", 1009, [&] { ExecuteSql("CREATE TABLE theirs(a)"); }},
      {"another program's empty database", 1009, [&] { ExecuteSql("PRAGMA application_id = 7"); }},
      {"a newer version", 1009, [&] { MakeFile(3), ExecuteSql("PRAGMA user_version = 99"); }},
      {"a file cut within its header", 1009, [&] { MakeFile(3), fs::resize_file(file(), 50); }},
      {"a folder", 5, [&] { fs::create_directory(file()); }},
  };
  for (const auto& [what, code, make] : cases) {
    SCOPED_TRACE(what);
    make();
    const std::string bytes = BytesOf(file());
    EXPECT_EQ(AllCalls(HKEY_LOCAL_MACHINE), Answers(9, code));
    for (auto call : {RegFileBegin, RegFileCheck}) {
      EXPECT_EQ(call(), code);
      EXPECT_TRUE(CauseNamesTheFile()) << RegFileCause();
    }
    EXPECT_TRUE(BytesOf(file()) == bytes);
    EXPECT_FALSE(fs::exists(log()));
    fs::remove(file());
    EXPECT_EQ(Open(HKEY_LOCAL_MACHINE, kPath).answer, 2);
    EXPECT_EQ(std::string(RegFileCause()), "");
  }
}

// All kinds of calls; adds what they answer.
void Exercise(std::set<LSTATUS>& answers) {
  std::string name;
  Key key = Open(HKEY_LOCAL_MACHINE, kPath);
  for (DWORD i = 0; i < 100 && Step(kSubkeys, key, i, &name) == 0; ++i) {
    Key child = Open(key, name, KEY_ALL_ACCESS);
    answers.insert({child.answer, Query(child, "v"), Step(kValues, child, i % 4)});
    if (i % 20 != 3) continue;
    for (LSTATUS answer : AllCalls(child)) answers.insert(answer);
    answers.insert({RegDeleteKeyA(child, "new"), RegDeleteKeyA(child, ""), Step(kSubkeys, key, i)});
  }
  answers.insert({key.answer, RegFileCheck(), Create(HKEY_LOCAL_MACHINE, "new").answer});
}

TEST_F(RegistryFile, DamageIsAnsweredWithCodes) {
  MakeFile(80);
  const std::string sound = BytesOf(file());
  std::set<LSTATUS> undocumented;
  int found = 0;
  std::mt19937 random(7);
  for (int round = 0; round < 120; ++round) {
    std::string damaged = sound;
    // The header and the roots of the tables lie in front: half of the damage goes there.
    std::size_t reach = round % 2 == 0 ? 4096 : sound.size();
    for (auto n = round % 10 == 0 ? 0 : 1 + random() % 12; n > 0; --n)
      damaged[(round % 3 != 0 ? 100U : 0U) + random() % (reach - 100)] = static_cast<char>(random());
    if (round % 10 == 0) damaged.resize(100 + random() % (sound.size() - 100));
    ::setenv("MOXEL_REGISTRY", (folder() / std::to_string(round)).c_str(), 1);
    WriteBytes(RegFilePath(), damaged);
    std::set<LSTATUS> answers;
    OnAnotherThread([&] { Exercise(answers); });
    found += answers.contains(1009) ? 1 : 0;
    undocumented.merge(answers);
  }
  for (LSTATUS answer : {0, 2, 3, 5, 6, 14, 112, 170, 234, 259, 1009, 1016, 1018}) undocumented.erase(answer);
  EXPECT_EQ(Text({undocumented.begin(), undocumented.end()}), "");
  EXPECT_GT(found, 40);
}

TEST_F(RegistryFile, TheCheckNamesWhatIsWrong) {
  MakeFile(3);
  ExecuteSql("UPDATE keys SET parent = 9999 WHERE name = 'key1'");
  EXPECT_EQ(RegFileCheck(), 1009);
  EXPECT_NE(std::string(RegFileCause()).find("KEY1"), std::string::npos) << RegFileCause();
}

TEST_F(RegistryFile, AFolderThatIsMissingOrIsNone) {
  WriteBytes(folder() / "plain", "text");
  for (const char* path : {"missing/registry.db", "plain/registry.db"}) {
    ::setenv("MOXEL_REGISTRY", (folder() / path).c_str(), 1);
    EXPECT_EQ(Create(HKEY_LOCAL_MACHINE, kPath).answer, 3) << path;
    EXPECT_TRUE(CauseNamesTheFile()) << RegFileCause();
  }
}

// Accounts other than the owner's, in a folder whose rights the test sets.
class RegistryAccount : public RegistryFile {
 protected:
  void SetUp() override {
    if (::geteuid() != 0) GTEST_SKIP() << "only root can act for other accounts";
    ::chmod(folder().c_str(), 0755);
  }
  void TearDown() override { ::chmod(folder().c_str(), 0700); }

  static void BecomeNobody() {
    if (::setgroups(0, nullptr) != 0 || ::setgid(65534) != 0 || ::setuid(65534) != 0) ::_exit(1);
  }

  // What a sequence of calls answers: opening for reading and for writing in four ways, setting, creating
  // what exists and what does not, deleting, setting with all that may be had, and reading.
  static std::string Transcript() {
    const HKEY root = HKEY_LOCAL_MACHINE;
    const std::string path = std::string(kPath) + "\\key0";
    Answers answers;
    for (REGSAM access : {KEY_READ, KEY_SET_VALUE, KEY_CREATE_SUB_KEY, GENERIC_WRITE, GENERIC_ALL})
      answers.push_back(Open(root, path, access).answer);
    Answers writes{Set(root, "v", "1"), Create(root, path, KEY_READ).answer,
                   Create(root, "new", KEY_READ).answer, Remove(kSubkeys, root, path)};
    Key key = Open(root, path, MAXIMUM_ALLOWED);
    return Text(answers) + Text(writes) + Text({Set(key, "a", "new")}) + Get(key, "a").value_or("-");
  }
};

TEST_F(RegistryAccount, MayDoWhatTheFileAndItsFolderAllow) {
  const char *const kAll = "0 0 0 0 0 0 0 0 0 6 -", *kRead = "0 5 5 5 5 5 0 5 5 5 aaa",
                    *kNothing = "5 5 5 5 5 5 5 5 5 6 -", *kMissing = "2 2 2 2 2 5 5 5 2 6 -";
  struct {
    const char* story;
    mode_t file, folder;
    bool writer_active;
    const char* transcript;
  } const cases[] = {
      {"all allowed", 0666, 0777, false, kAll},
      {"may read, and create the log", 0644, 0777, false, kRead},
      {"may read only", 0644, 0755, false, kRead},
      {"may write the file but not create the log", 0666, 0755, false, kRead},
      {"may not read the file", 0600, 0777, false, kNothing},
      {"may not enter the folder", 0666, 0700, false, kNothing},
      {"may create the log, beside a writer", 0644, 0777, true, kRead},
      {"may read only, beside a writer", 0644, 0755, true, kRead},
      {"may not read the file, beside a writer", 0600, 0777, true, kNothing},
      {"there is no file and none may be created", 0, 0755, false, kMissing},
  };
  for (const auto& c : cases) {
    ::chmod(folder().c_str(), 0755);
    fs::path path = folder() / (std::string(c.story) + "?#%.db");
    ::setenv("MOXEL_REGISTRY", path.c_str(), 1);
    if (c.file != 0)
      OnAnotherThread([] { EXPECT_EQ(Set(Create(HKEY_LOCAL_MACHINE, "SOFTWARE\\X\\key0"), "a", "aaa"), 0); });
    ::chmod(path.c_str(), c.file);
    Pipe gate;
    Child child([&] {
      gate.Rest();
      BecomeNobody();
      return Transcript();
    });
    // After the fork, which closes all connections.
    if (c.writer_active) Set(HKEY_LOCAL_MACHINE, "v", "1");
    EXPECT_EQ(fs::exists(path.string() + "-wal"), c.writer_active);
    ::chmod(folder().c_str(), c.folder);
    gate.CloseWriting();
    EXPECT_EQ(child.Answer(), c.transcript) << c.story;
    EXPECT_EQ(fs::exists(path), c.file != 0);
  }
}

// The reader opens the file alone, beside the log of a writer, after the writer has gone, and after it was
// killed.
TEST_F(RegistryAccount, AReaderWithoutRightsSeesEveryChange) {
  MakeFile(1);
  ::chmod(file().c_str(), 0644);
  Pipe ask, tell;
  Child reader([&] {
    BecomeNobody();
    ask.CloseWriting();
    for (int c; ask.Receive(c);) tell.Send(Get(Open(HKEY_LOCAL_MACHINE, kPath), "v").value_or("-").front());
    return "";
  });
  tell.CloseWriting();
  auto seen = [&](int c = '!') {
    ask.Send(c);
    return tell.Receive(c) ? c : '!';
  };
  auto set = [](char c) { EXPECT_EQ(Set(Create(HKEY_LOCAL_MACHINE, kPath), "v", {&c, 1}), 0); };
  EXPECT_EQ(seen(), '-');
  for (char c = 'a'; c <= 'z'; ++c) {  // each writer comes and goes, on a file system that knows seconds only
    OnAnotherThread([&] { set(c); });
    fs::last_write_time(file(), std::chrono::floor<std::chrono::seconds>(fs::file_time_type::clock::now()));
    EXPECT_EQ(seen(), c);
  }
  OnAnotherThread([&] {
    for (char c = 'A'; c <= 'Z'; ++c) {  // one stays
      set(c);
      EXPECT_EQ(seen(), c);
    }
  });
  EXPECT_EQ(seen(), 'Z');
  Child killed([&] {
    set('9');
    ::raise(SIGKILL);
    return "";
  });
  EXPECT_EQ(killed.Answer(), " ended with status 9");
  EXPECT_TRUE(fs::exists(log()));
  EXPECT_EQ(seen(), '9');
  OnAnotherThread([&] { set('8'); });
  EXPECT_EQ(seen(), '8');
}

TEST_F(RegistryAccount, RightsTakenAwayCountAtOnce) {
  MakeFile(1);
  ::chmod(file().c_str(), 0666);
  ::chmod(folder().c_str(), 0777);
  Child child([&] {
    Answers answers;
    for (mode_t mode : {0666u, 0644u}) {
      if (::seteuid(0) != 0 || ::chmod(file().c_str(), mode) != 0 || ::seteuid(65534) != 0) ::_exit(1);
      answers.push_back(Open(HKEY_LOCAL_MACHINE, kPath, KEY_WRITE).answer);
    }
    return Text(answers) + Text({Open(HKEY_LOCAL_MACHINE, kPath).answer});
  });
  EXPECT_EQ(child.Answer(), "0 5 0 ");
}

// Writes until there is no room, then looks whether everything that was acknowledged is there.
std::string FillUp(const std::function<void()>& make_room) {
  auto set = [](std::size_t name, const std::string& data) {
    Key key = Create(HKEY_LOCAL_MACHINE, kPath);
    return key.answer != 0 ? key.answer : Set(key, std::to_string(name), data);
  };
  std::mt19937 random(1);
  std::vector<std::string> stored;
  std::string data, report;
  LSTATUS answer = 0;
  while (stored.size() < 2000 && answer == 0) {
    data.assign(500 + random() % 6000, static_cast<char>('a' + stored.size() % 26));
    answer = set(stored.size(), data);
    if (answer == 0) stored.push_back(data);
  }
  report =
      std::to_string(answer) + (CauseNamesTheFile() ? " named" : "") + (stored.size() < 5 ? " few" : " many");
  auto look = [&] {
    for (std::size_t i = 0; i < stored.size(); ++i)
      if (Get(Open(HKEY_LOCAL_MACHINE, kPath), std::to_string(i)) != stored[i]) report += " lost";
    report += " " + std::to_string(RegFileCheck());
  };
  look();
  OnAnotherThread(look);
  make_room();
  report += " " + std::to_string(set(stored.size(), data));
  stored.push_back(data);
  look();
  return report;
}

TEST_F(RegistryFile, AFullDiskIsReportedAndLosesNothing) {
  const fs::path disk = folder() / "disk";
  fs::create_directory(disk);
  const std::tuple<const char*, std::size_t, const char*> cases[] = {
      {"size=1m", 500000, "many"}, {"size=40k", 40960, "few"}, {"size=1m,nr_inodes=2", 40960, "few"}};
  for (auto [options, ballast, stored] : cases) {
    Child child([&, options = options, ballast = ballast]() -> std::string {
      // The mount is this child's own and goes with it.
      if (::unshare(CLONE_NEWNS) != 0 || ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
          ::mount("tmpfs", disk.c_str(), "tmpfs", 0, options) != 0)
        return "no mount";
      WriteBytes(disk / "ballast", std::string(ballast, 'b'));
      ::setenv("MOXEL_REGISTRY", (disk / "registry.db").c_str(), 1);
      return FillUp([&] {
        fs::remove(disk / "ballast");
        ::mount(nullptr, disk.c_str(), nullptr, MS_REMOUNT, "size=2m,nr_inodes=20");
      });
    });
    std::string answer = child.Answer();
    if (answer == "no mount") GTEST_SKIP() << "this machine lets no file system be mounted";
    EXPECT_EQ(answer, "112 named " + std::string(stored) + " 0 0 0 0") << options;
  }
}

TEST_F(RegistryFile, ALimitOnTheSizeOfFilesIsAFullDisk) {
  Child child([&] {
    ::signal(SIGXFSZ, SIG_IGN);
    auto limit = [](rlim_t size) {
      rlimit limits{size, RLIM_INFINITY};
      if (::setrlimit(RLIMIT_FSIZE, &limits) != 0) ::_exit(1);
    };
    limit(300000);
    return FillUp([&] { limit(RLIM_INFINITY); });
  });
  EXPECT_EQ(child.Answer(), "112 named many 0 0 0 0");
}

}  // namespace
}  // namespace moxel::test
