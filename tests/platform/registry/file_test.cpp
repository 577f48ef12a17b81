// The file itself: what reads leave alone, files that are not ours or damaged, accounts without rights, full
// disks.
#include <fcntl.h>
#include <sched.h>
#include <sqlite3.h>
#include <sys/mman.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <atomic>
#include <chrono>
#include <fstream>
#include <functional>
#include <iterator>
#include <random>
#include <set>
#include <sstream>
#include <tuple>

#include "tests/support/registry_access.h"

namespace moxel::test {
namespace {

namespace fs = std::filesystem;

std::string BytesOf(const fs::path& file) {
  return (std::ostringstream() << std::ifstream(file).rdbuf()).str();
}

void WriteBytes(const fs::path& file, std::string_view bytes) { std::ofstream(file) << bytes; }

class RegistryFile : public RegistryTest {
 protected:
  static std::string Log() { return std::string(RegFilePath()) + "-wal"; }

  static void ExecuteSql(const char* sql) {
    sqlite3* database = nullptr;
    EXPECT_EQ(sqlite3_open(RegFilePath(), &database), SQLITE_OK);
    EXPECT_EQ(sqlite3_exec(database, sql, nullptr, nullptr, nullptr), SQLITE_OK);
    sqlite3_close(database);
  }

  // A sound file with `keys` keys of three values each, closed again: no log stands beside it.
  static void MakeFile(int keys) {
    OnAnotherThread([&] {
      for (int i = 0; i < keys; ++i)
        for (const char* name : {"a", "v", "z"})
          Set(Create(kRoot, "SOFTWARE\\X\\key" + std::to_string(i)), name, std::string(40, *name));
    });
    ASSERT_FALSE(fs::exists(Log()));
  }
};

TEST_F(RegistryFile, ReadsOfAMissingOrEmptyFileCreateNothing) {
  Key root = Open(kRoot, "", KEY_ALL_ACCESS);
  for (bool missing : {true, false}) {
    if (!missing) WriteBytes(file(), "");
    Answers reads{Step(kSubkeys, root, 0), Step(kValues, HKEY_CLASSES_ROOT, 0),
                  Query(kRoot, "v"),       Open(root, kPath).answer,
                  RegFileCheck(),          Remove(kSubkeys, root, kPath)};
    EXPECT_EQ(Text(reads), "259 259 2 2 0 2 ");
    EXPECT_EQ(RegFilePath(), file().string());
    EXPECT_EQ(std::distance(fs::directory_iterator(folder()), {}), missing ? 0 : 1);
    EXPECT_EQ(BytesOf(file()), "");
  }
  EXPECT_EQ(Text({Create(root, kPath).answer, Open(kRoot, kPath).answer}), "0 0 ");
}

TEST_F(RegistryFile, ReadsAndTheCreationOfWhatExistsWriteNothing) {
  MakeFile(2);
  Key key = Create(kRoot, kPath);
  ASSERT_EQ(Set(key, "v", "1"), 0);
  const std::string bytes = BytesOf(file()), logged = BytesOf(Log());
  ASSERT_FALSE(logged.empty());
  auto read_all = [&] {
    Answers answers{Create(kRoot, "software\\x\\KEY0\\").answer, Remove(kSubkeys, key, "none"),
                    Open(key, "none", KEY_ALL_ACCESS).answer, RegFileCheck()};
    EXPECT_EQ(Text(answers), "0 2 2 0 ");
    EXPECT_EQ(Names(kSubkeys, key) + Names(kValues, Open(key, "key1")), "key0,key1,a,v,z,");
    EXPECT_EQ(Get(key, "v"), "1");
  };
  read_all();
  OnAnotherThread(read_all);
  EXPECT_TRUE(BytesOf(file()) == bytes);
  EXPECT_TRUE(BytesOf(Log()) == logged);
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
    EXPECT_EQ(AllCalls(kRoot), Answers(9, code));
    for (auto call : {RegFileBegin, RegFileCheck}) {
      EXPECT_EQ(call(), code);
      EXPECT_TRUE(CauseNamesTheFile()) << RegFileCause();
    }
    EXPECT_TRUE(BytesOf(file()) == bytes);
    EXPECT_FALSE(fs::exists(Log()));
    fs::remove(file());
    EXPECT_EQ(Open(kRoot, kPath).answer, 2);
    EXPECT_EQ(std::string(RegFileCause()), "");
  }
}

TEST_F(RegistryFile, TheCheckNamesWhatIsWrong) {
  MakeFile(3);
  const std::pair<const char*, const char*> cases[] = {
      {"UPDATE sqlite_sequence SET seq = 1", "sequence"},
      {"UPDATE sqlite_sequence SET seq = 9223372036854775807", "sequence"},
      {"DELETE FROM sqlite_sequence", "sequence"},
      {"UPDATE keys SET parent = 9999 WHERE name = 'key1'", "KEY1"},
      {"DELETE FROM keys WHERE id = 1", "root"},
  };
  for (auto [flaw, finding] : cases) {
    ExecuteSql(flaw);
    EXPECT_EQ(RegFileCheck(), 1009);
    EXPECT_NE(std::string(RegFileCause()).find(finding), std::string::npos) << RegFileCause();
  }
}

TEST_F(RegistryFile, AFolderThatIsMissingOrIsNone) {
  WriteBytes(folder() / "plain", "text");
  for (const char* path : {"missing/registry.db", "plain/registry.db"}) {
    ::setenv("MOXEL_REGISTRY", (folder() / path).c_str(), 1);
    EXPECT_EQ(Create(kRoot, kPath).answer, 3) << path;
    EXPECT_TRUE(CauseNamesTheFile()) << RegFileCause();
  }
}

// What a sequence of calls answers: beginning and undoing a batch, opening for reading and for writing in
// four ways, setting, creating what exists and what does not, deleting, setting with all that may be had, and
// reading.
std::string Transcript() {
  const std::string path = std::string(kPath) + "\\key0";
  Answers answers{RegFileBegin(), RegFileRollback()};
  for (REGSAM access : {KEY_READ, KEY_SET_VALUE, KEY_CREATE_SUB_KEY, GENERIC_WRITE, GENERIC_ALL})
    answers.push_back(Open(kRoot, path, access).answer);
  Answers writes{Set(kRoot, "v", "1"), Create(kRoot, path, KEY_READ).answer,
                 Create(kRoot, "new", KEY_READ).answer, Remove(kSubkeys, kRoot, path)};
  Key key = Open(kRoot, path, MAXIMUM_ALLOWED);
  return Text(answers) + Text(writes) + Text({Set(key, "a", "new")}) + Get(key, "a").value_or("-").front();
}

// Accounts other than the owner's, in a folder whose rights the test sets.
class RegistryAccount : public RegistryFile {
  void SetUp() override {
    if (::geteuid() != 0) GTEST_SKIP() << "only root can act for other accounts";
    ::chmod(folder().c_str(), 0755);
  }
};

TEST_F(RegistryAccount, MayDoWhatTheFileAndItsFolderAllow) {
  const char *const kRead = "5 87 0 5 5 5 5 5 0 5 5 5 a", *kNothing = "5 87 5 5 5 5 5 5 5 5 5 6 -";
  const std::tuple<const char*, mode_t, mode_t, bool, const char*> cases[] = {
      {"all allowed", 0666, 0777, false, "0 0 0 0 0 0 0 0 0 0 0 6 -"},
      {"may read, and create the log", 0644, 0777, false, kRead},
      {"may read only", 0644, 0755, false, kRead},
      {"may write the file but not create the log", 0666, 0755, false, kRead},
      {"may not read the file", 0600, 0777, false, kNothing},
      {"may not enter the folder", 0666, 0700, false, kNothing},
      {"may create the log, beside a writer", 0644, 0777, true, kRead},
      {"may read only, beside a writer", 0644, 0755, true, kRead},
      {"there is no file and none may be created", 0, 0755, false, "5 87 2 2 2 2 2 5 5 5 2 6 -"},
  };
  for (auto [story, file_mode, folder_mode, writer_active, transcript] : cases) {
    ::chmod(folder().c_str(), 0755);
    fs::path path = folder() / (std::string(story) + "?#%.db");
    ::setenv("MOXEL_REGISTRY", path.c_str(), 1);
    if (file_mode != 0) MakeFile(1);
    ::chmod(path.c_str(), file_mode);
    Pipe gate;
    Child child([&] { return gate.Rest(), BecomeNobody(), Transcript(); });
    // After the fork, which closes all connections.
    if (writer_active) Set(kRoot, "v", "1");
    EXPECT_EQ(fs::exists(Log()), writer_active);
    ::chmod(folder().c_str(), folder_mode);
    gate.CloseWriting();
    EXPECT_EQ(child.Answer(), transcript) << story;
    EXPECT_EQ(fs::exists(path), file_mode != 0);
  }
}

// The reader opens the file alone, beside the log of a writer, after the writer has gone, and after it was
// killed.
TEST_F(RegistryAccount, AReaderSeesEveryChangeWithAndWithoutRights) {
  auto set = [](char c) { EXPECT_EQ(Set(Create(kRoot, kPath), "v", {&c, 1}), 0); };
  for (bool rights : {true, false}) {
    fs::remove(file());
    MakeFile(1);
    Pipe ask, tell;
    Child reader([&] {
      if (!rights) BecomeNobody();
      ask.CloseWriting();
      for (int c; ask.Receive(c);) tell.Send(Get(Open(kRoot, kPath), "v").value_or("-").front());
      return "";
    });
    tell.CloseWriting();
    auto seen = [&](int c = '!') {
      ask.Send(c);
      return tell.Receive(c) ? c : '!';
    };
    EXPECT_EQ(seen(), '-');
    // Each writer comes and goes, on a file system that knows seconds only.
    for (char c = 'a'; c <= 'z'; ++c) {
      OnAnotherThread([&] { set(c); });
      fs::last_write_time(file(), std::chrono::floor<std::chrono::seconds>(fs::file_time_type::clock::now()));
      EXPECT_EQ(seen(), c);
    }
    OnAnotherThread([&] {  // one stays
      for (char c = 'A'; c <= 'Z'; ++c) EXPECT_EQ((set(c), seen()), c);
    });
    EXPECT_EQ(seen(), 'Z');
    Child([&] { return set('9'), std::to_string(::raise(SIGKILL)); }).Answer();
    EXPECT_TRUE(fs::exists(Log()));
    EXPECT_EQ(seen(), '9');
    OnAnotherThread([&] { set('8'); });
    EXPECT_EQ(seen(), '8');
  }
}

// Who may not repair the log's header must not take one that is just being written for broken. One that a
// killed writer left is done without as soon as nobody holds it open.
TEST_F(RegistryAccount, AReaderWaitsForAHeaderThatIsBeingWritten) {
  MakeFile(1);
  const fs::path open_to_all = folder() / "open";
  fs::create_directory(open_to_all);
  ::chmod(open_to_all.c_str(), 0777);
  Pipe from_writer, to_reader;
  Child writer([&] {
    from_writer.Send(Set(kRoot, "w", "1"));
    return std::to_string(::pause());
  });
  int n = 77;
  ASSERT_TRUE(from_writer.Receive(n) && n == 0);
  Pipe from_reader;
  Child reader([&] {
    BecomeNobody();
    auto read = [] {
      const Key key = Open(kRoot, std::string(kPath) + "\\key0");
      return key.answer != 0 ? key.answer : Query(key, "v");
    };
    auto back_up = [&] { return RegFileBackup((open_to_all / "backup.db").c_str()); };
    Answers answers(1);
    to_reader.Receive(n);
    for (int i = 0; i < 2000; ++i) answers[0] += read();
    for (int i = 0; i < 50; ++i) answers[0] += back_up();
    from_reader.Send(0), to_reader.Receive(n);
    answers.insert(answers.end(), {back_up(), back_up(), read()});
    return Text(answers);
  });
  from_reader.CloseWriting();
  const int index = ::open((file().string() + "-shm").c_str(), O_RDWR);
  void* header = ::mmap(nullptr, 96, PROT_READ | PROT_WRITE, MAP_SHARED, index, 0);
  ASSERT_NE(header, MAP_FAILED);
  std::atomic_ref<std::uint32_t> second_copy(static_cast<std::uint32_t*>(header)[14]);
  std::atomic<bool> stop = false;
  std::thread flickering([&] {
    for (; !stop; std::this_thread::yield()) {
      second_copy ^= 1;
      for (const auto start = std::chrono::steady_clock::now();
           std::chrono::steady_clock::now() - start < std::chrono::microseconds(1);)
        continue;
      second_copy ^= 1;
    }
  });
  to_reader.Send(0);
  EXPECT_TRUE(from_reader.Receive(n));
  stop = true, flickering.join();
  writer.Kill(), writer.Answer();
  second_copy ^= 1;
  to_reader.Send(0);
  EXPECT_EQ(reader.Answer(), "0 5 0 0 ");
  ::munmap(header, 96), ::close(index);
}

// Writes until there is no room, then looks whether everything that was acknowledged is there.
std::string FillUp(const std::function<void()>& make_room) {
  std::mt19937 random(1);
  std::vector<std::string> stored;
  auto store = [&] {
    std::string data(500 + random() % 6000, static_cast<char>('a' + stored.size() % 26));
    LSTATUS answer = Set(kRoot, std::to_string(stored.size()), data);
    if (answer == 0) stored.push_back(data);
    return answer;
  };
  LSTATUS full = 0;
  while (stored.size() < 2000 && full == 0) full = store();
  std::string report = (CauseNamesTheFile() ? "named " : "") + Text({full, stored.size() < 5 ? 0 : 5});
  auto look = [&] {
    for (std::size_t i = 0; i < stored.size(); ++i)
      if (Get(kRoot, std::to_string(i)) != stored[i]) report += "lost ";
    report += Text({RegFileCheck()});
  };
  look(), OnAnotherThread(look), make_room();
  report += Text({store()});
  look();
  return report;
}

TEST_F(RegistryFile, ABackupIsOneMomentOfABusyRegistryAndRestores) {
  const std::string backup = folder() / "backup.db", broken = folder() / "broken.db";
  EXPECT_EQ(RegFileBackup(backup.c_str()), 2) << "there is no registry yet";
  Key key = Create(kRoot, kPath), kept = Create(key, "kept");
  auto write = [](HKEY at, int number) {
    RegFileBegin();
    for (const char* name : {"a", "b"}) Set(at, name, std::to_string(number));
    return RegFileCommit();
  };
  ASSERT_EQ(write(key, 0), 0);
  auto write_on = [&, stop = folder() / "stop"] {
    for (int number = 1; !fs::exists(stop); ++number)
      if (write(Create(kRoot, kPath), number) != 0) return std::string("refused");
    return std::string("wrote");
  };
  Child writer(write_on), other_writer(write_on);
  for (int i = 0; i < 10; ++i) {
    Child rival([&] { return std::to_string(RegFileBackup(backup.c_str())); });
    EXPECT_EQ(RegFileBackup(backup.c_str()), 0) << RegFileCause();
    EXPECT_EQ(rival.Answer(), "0");
    ::setenv("MOXEL_REGISTRY", backup.c_str(), 1);
    EXPECT_EQ(RegFileCheck(), 0) << RegFileCause();
    const Key copy = Open(kRoot, kPath);
    EXPECT_EQ(Get(copy, "a"), Get(copy, "b")) << "half of a transaction";
    ::setenv("MOXEL_REGISTRY", file().c_str(), 1);
  }
  WriteBytes(folder() / "stop", "");
  EXPECT_EQ(writer.Answer() + other_writer.Answer(), "wrotewrote");
  EXPECT_EQ(write(key, 400), 0);
  // An older backup that somebody has open is left alone; the log of one who was killed goes.
  Pipe opened, done;
  Child user([&] {
    ::setenv("MOXEL_REGISTRY", backup.c_str(), 1);
    opened.Send(Set(Create(kRoot, kPath), "a", "a user's"));
    return done.Rest(), std::string();
  });
  int n = 77;
  ASSERT_TRUE(opened.Receive(n) && n == 0);
  EXPECT_EQ(RegFileBackup(backup.c_str()), 170);
  EXPECT_NE(std::string(RegFileCause()).find(backup), std::string::npos);
  user.Kill(), user.Answer();
  EXPECT_TRUE(fs::exists(backup + "-wal"));
  EXPECT_EQ(RegFileBackup(backup.c_str()), 0) << RegFileCause();
  EXPECT_EQ(RegFileBackup(RegFilePath()), 87);
  Key later = Create(key, "later");
  EXPECT_EQ(write(key, 999), 0);
  WriteBytes(broken, BytesOf(backup).replace(5000, 4000, 4000, 'x'));
  EXPECT_EQ(
      Text({RegFileRestore(broken.c_str()), RegFileRestore("/nowhere.db"), RegFileBackup("/nowhere/b.db")}),
      "1009 2 3 ");
  EXPECT_EQ(Get(key, "a"), "999") << "a backup that cannot be used changes nothing";
  EXPECT_EQ(Get(kept, "a"), std::nullopt);
  OnAnotherThread([&] { EXPECT_EQ(RegFileRestore(backup.c_str()), 0) << RegFileCause(); });
  EXPECT_EQ(Get(key, "a"), "400");
  EXPECT_EQ(Names(kSubkeys, key), "kept,");
  EXPECT_EQ(Query(later, "v"), 1018);
  EXPECT_EQ(Open(key, "kept").answer, 0);
  Key again = Create(key, "later");
  EXPECT_EQ(Query(later, "v"), 1018) << "a new key must not be taken for the one that is gone";
  EXPECT_EQ(RegFileCheck(), 0);
  for (const auto& entry : fs::directory_iterator(folder())) EXPECT_NE(entry.path().extension(), ".part");
}

TEST_F(RegistryFile, ABackupThatFindsNoRoomLeavesTheOlderOne) {
  const fs::path disk = folder() / "disk";
  fs::create_directory(disk);
  Child child([&]() -> std::string {
    if (::unshare(CLONE_NEWNS) != 0 || ::mount("", "/", "", MS_REC | MS_PRIVATE, "") != 0 ||
        ::mount("tmpfs", disk.c_str(), "tmpfs", 0, "size=800k") != 0)
      return "no mount";
    const std::string backup = disk / "backup.db";
    std::string answers;
    for (std::size_t size : {1000, 1000000}) {
      Set(Create(kRoot, kPath), "v", std::string(size, 'v'));
      answers += Text({RegFileBackup(backup.c_str())});
      answers += std::string(RegFileCause()).starts_with(backup) ? "named " : "";
    }
    ::setenv("MOXEL_REGISTRY", backup.c_str(), 1);
    answers += Text({RegFileCheck()}) + std::to_string(Get(Open(kRoot, kPath), "v").value_or("").size());
    return answers;
  });
  const std::string answer = child.Answer();
  if (answer == "no mount") GTEST_SKIP() << "this machine lets no file system be mounted";
  EXPECT_EQ(answer, "0 112 named 0 1000");
}

TEST_F(RegistryFile, ANewFileIsSharedWithTheGroupOfItsFolder) {
  const mode_t mask = ::umask(077);
  for (auto [folder_mode, file_mode] :
       {std::pair<mode_t, mode_t>{02775, 0664}, {0775, 0600}, {02755, 0600}}) {
    const fs::path place = folder() / std::to_string(folder_mode);
    fs::create_directory(place);
    const bool other_group = ::geteuid() == 0 && ::chown(place.c_str(), 0, 65534) == 0;
    ::chmod(place.c_str(), folder_mode);
    ::setenv("MOXEL_REGISTRY", (place / "r.db").c_str(), 1);
    EXPECT_EQ(Set(Create(kRoot, kPath), "v", "1"), 0);
    for (const char* end : {"", "-wal", "-shm"}) {
      struct stat status;
      ASSERT_EQ(::stat((RegFilePath() + std::string(end)).c_str(), &status), 0);
      EXPECT_EQ(status.st_mode & 0777, file_mode) << end << folder_mode;
      EXPECT_EQ(status.st_gid, other_group && (folder_mode & S_ISGID) ? 65534 : ::getegid()) << end;
    }
  }
  ::umask(mask);
}

TEST_F(RegistryFile, AFileThatIsReplacedOrDeletedUnderItsUsersIsNoticed) {
  const fs::path other = folder() / "other.db";
  auto read = [] { return Get(Open(kRoot, kPath), "v").value_or("none"); };
  auto wait = [] { std::this_thread::sleep_for(std::chrono::milliseconds(80)); };
  // As an administrator does it: the log goes with its file.
  auto remove_log = [this] { fs::remove(file().string() + "-wal"), fs::remove(file().string() + "-shm"); };
  ::setenv("MOXEL_REGISTRY", other.c_str(), 1);
  OnAnotherThread([] { EXPECT_EQ(Set(Create(kRoot, kPath), "v", "theirs"), 0); });
  ::setenv("MOXEL_REGISTRY", file().c_str(), 1);
  Key mine = Create(kRoot, kPath);
  EXPECT_EQ(Set(mine, "v", "mine"), 0);
  EXPECT_EQ(read(), "mine");
  EXPECT_EQ(NameAt(kSubkeys, kRoot, 0), "SOFTWARE");
  fs::rename(other, file());
  remove_log();
  // Writing notices at once, reading soon; a handle on a key of the old file stands for none of the new one.
  EXPECT_EQ(Set(mine, "v", "lost"), 1018);
  EXPECT_EQ(read(), "theirs");
  EXPECT_EQ(Query(mine, "v"), 1018);
  EXPECT_EQ(RegFileCheck(), 0) << RegFileCause();
  for (bool with_log : {true, false}) {
    Key theirs = Create(kRoot, kPath);
    EXPECT_EQ(Set(theirs, "v", "new"), 0);
    EXPECT_EQ(read(), "new");
    fs::remove(file());
    if (with_log) remove_log();
    wait();
    EXPECT_EQ(read(), "none");
    EXPECT_EQ(Query(theirs, "v"), 1018);
    EXPECT_FALSE(fs::exists(file())) << "reading creates nothing";
    EXPECT_EQ(Set(Create(kRoot, kPath), "w", "again"), 0);
    EXPECT_EQ(read(), "none") << "what was deleted does not come back out of the log";
    EXPECT_EQ(RegFileCheck(), 0) << RegFileCause();
  }
}

TEST_F(RegistryFile, AFileSystemThatIsReadOnlyIsReadAndRefusesWrites) {
  const fs::path disk = folder() / "disk";
  fs::create_directory(disk);
  Child child([&]() -> std::string {
    if (::unshare(CLONE_NEWNS) != 0 || ::mount("", "/", "", MS_REC | MS_PRIVATE, "") != 0 ||
        ::mount("tmpfs", disk.c_str(), "tmpfs", 0, "size=1m") != 0)
      return "no mount";
    ::setenv("MOXEL_REGISTRY", (disk / "registry.db").c_str(), 1);
    OnAnotherThread([] { Set(Create(kRoot, kPath), "v", "1"); });
    ::mount("", disk.c_str(), "", MS_REMOUNT | MS_RDONLY, "");
    const std::string named = Set(kRoot, "v", "2") == 5 && CauseNamesTheFile() ? " named " : " ";
    return Get(Open(kRoot, kPath), "v").value_or("none") + named +
           Text({Open(kRoot, kPath, KEY_WRITE).answer, Set(kRoot, "v", "2"), Create(kRoot, "new").answer,
                 Remove(kSubkeys, kRoot, kPath), RegFileBegin(), RegFileCheck()});
  });
  const std::string answer = child.Answer();
  if (answer == "no mount") GTEST_SKIP() << "this machine lets no file system be mounted";
  EXPECT_EQ(answer, "1 named 5 5 5 5 5 0 ");
}

// No log, so no header that tells of changes: every read goes to the file.
TEST_F(RegistryFile, AFileWithoutALogIsReadAsItIs) {
  OnAnotherThread([] { Set(Create(kRoot, kPath), "v", "1"); });
  ExecuteSql("PRAGMA journal_mode = DELETE");
  auto read = [] { return Get(Open(kRoot, kPath), "v").value_or("none"); };
  for (char value = '1'; value <= '9'; ++value) {
    ExecuteSql((std::string("UPDATE vals SET data = CAST('") + value + "' AS BLOB)").c_str());
    EXPECT_EQ(read(), std::string(1, value));
    EXPECT_EQ(read(), std::string(1, value));
  }
  EXPECT_EQ(Set(Create(kRoot, kPath), "v", "again"), 0);
  EXPECT_EQ(read(), "again");
}

TEST_F(RegistryFile, AFullDiskIsReportedAndLosesNothing) {
  const fs::path disk = folder() / "disk";
  fs::create_directory(disk);
  const std::tuple<const char*, std::size_t, const char*> cases[] = {
      {"", 0, "5"}, {"size=1m", 500000, "5"}, {"size=40k", 40960, "0"}, {"size=1m,nr_inodes=2", 40960, "0"}};
  for (auto [options, ballast, stored] : cases) {
    Child child([&, options = options, ballast = ballast]() -> std::string {
      // The mount is this child's own and goes with it.
      if (ballast > 0 && (::unshare(CLONE_NEWNS) != 0 || ::mount("", "/", "", MS_REC | MS_PRIVATE, "") != 0 ||
                          ::mount("tmpfs", disk.c_str(), "tmpfs", 0, options) != 0))
        return "no mount";
      rlimit limit{ballast == 0 ? 300000 : RLIM_INFINITY, RLIM_INFINITY};
      ::signal(SIGXFSZ, SIG_IGN);
      WriteBytes(disk / "ballast", std::string(ballast, 'b'));
      ::setenv("MOXEL_REGISTRY", (disk / "registry.db").c_str(), 1);
      ::setrlimit(RLIMIT_FSIZE, &limit);
      return FillUp([&] {
        limit.rlim_cur = RLIM_INFINITY;
        ::setrlimit(RLIMIT_FSIZE, &limit);
        fs::remove(disk / "ballast");
        ::mount("", disk.c_str(), "", MS_REMOUNT, "size=2m,nr_inodes=20");
      });
    });
    std::string answer = child.Answer();
    if (answer == "no mount") GTEST_SKIP() << "this machine lets no file system be mounted";
    EXPECT_EQ(answer, "named 112 " + std::string(stored) + " 0 0 0 0 ") << options;
    fs::remove(disk / "registry.db");
  }
}

}  // namespace
}  // namespace moxel::test
