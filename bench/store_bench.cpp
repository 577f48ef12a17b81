// The store beside the raw statements that lie under it, on the same file in the same run.
#include <benchmark/benchmark.h>
#include <sqlite3.h>
#include <stdlib.h>

#include <filesystem>
#include <memory>
#include <string>
#include <unordered_map>

#include "moxel/platform/registry_file.h"
#include "registry/ansi.h"
#include "registry/schema.h"
#include "registry/settings.h"
#include "registry/store.h"
#include "root/root_var.h"

namespace {

using moxel::RegReadValue;
using moxel::RegWriteValue;

std::u16string Number(std::int64_t number) {
  std::string digits = std::to_string(number);
  return {digits.begin(), digits.end()};
}

// A registry of its own for the whole run, with lists of 1,000, 10,000 and 100,000 subkeys and 1,000
// variables.
class BenchRegistry {
 public:
  static BenchRegistry& Instance() {
    static BenchRegistry registry;
    return registry;
  }

  std::string file() const { return folder_ / "registry.db"; }

 private:
  BenchRegistry() {
    std::string pattern = (std::filesystem::temp_directory_path() / "moxel-bench-XXXXXX").string();
    folder_ = ::mkdtemp(pattern.data());
    ::setenv("MOXEL_REGISTRY", file().c_str(), 1);
    moxel::Main();
    RegFileBegin();
    for (std::int64_t count : {1'000, 10'000, 100'000})
      for (std::int64_t i = 0; i < count; ++i)
        RegWriteValue(u"List" + Number(count) + u"\\Entry" + Number(i), u"", 3, u"");
    for (std::int64_t i = 0; i < 1'000; ++i) {
      std::u16string path = u"Domain\\Sales\\Var\\Variable" + Number(i);
      RegWriteValue(path, u"Value", REG_SZ, u"some text");
      RegWriteValue(path, u"Init", REG_SZ, u"some other text");
      RegWriteValue(path, u"Type", REG_DWORD, u"0");
      RegWriteValue(path, u"V/C", REG_SZ, u"V");
    }
    RegFileCommit();
  }

  ~BenchRegistry() { std::filesystem::remove_all(folder_); }

  std::filesystem::path folder_;
};

// One prepared statement of the bare database library on the registry's file.
class RawStatement {
 public:
  explicit RawStatement(const char* sql) {
    sqlite3_open_v2(BenchRegistry::Instance().file().c_str(), &database_,
                    SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr);
    sqlite3_exec(database_, "PRAGMA synchronous = NORMAL", nullptr, nullptr, nullptr);
    sqlite3_prepare_v2(database_, sql, -1, &statement_, nullptr);
  }
  ~RawStatement() {
    sqlite3_finalize(statement_);
    sqlite3_close(database_);
  }
  RawStatement(const RawStatement&) = delete;
  RawStatement& operator=(const RawStatement&) = delete;

  void Run() {
    while (sqlite3_step(statement_) == SQLITE_ROW)
      benchmark::DoNotOptimize(sqlite3_column_blob(statement_, 0));
    sqlite3_reset(statement_);
  }

 private:
  sqlite3* database_ = nullptr;
  sqlite3_stmt* statement_ = nullptr;
};

void RawSelect(benchmark::State& state) {
  BenchRegistry::Instance();
  RawStatement select(
      "SELECT data FROM vals WHERE key = (SELECT id FROM keys WHERE path = "
      "'SOFTWARE\\MOXEL\\DOMAIN\\SALES\\VAR\\VARIABLE500')"
      " AND folded = 'VALUE'");
  for (auto _ : state) select.Run();
}
BENCHMARK(RawSelect);

// The floor: the same texts converted and folded, the key and the value found in hash maps, the same variant
// made.
void ReadFromMemory(benchmark::State& state) {
  moxel::Main();
  auto fold = [](std::u16string_view text) {
    std::string folded = moxel::ToAnsi(text);
    for (char& c : folded) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return folded;
  };
  auto path_of = [](std::u16string_view key) {
    return std::u16string(moxel::Settings().RootPath).append(key);
  };
  std::unordered_map<std::string, std::unordered_map<std::string, std::string>> tree;
  for (std::int64_t i = 0; i < 1'000; ++i)
    for (const char16_t* name : {u"Value", u"Init", u"Type", u"V/C"})
      tree[fold(path_of(u"Domain\\Sales\\Var\\Variable" + Number(i)))][fold(name)] = "some text";
  for (auto _ : state) {
    const auto& values = tree.at(fold(path_of(u"Domain\\Sales\\Var\\Variable500")));
    benchmark::DoNotOptimize(moxel::Variant(moxel::FromAnsi(values.at(fold(moxel::schema::kValue)))));
  }
}
BENCHMARK(ReadFromMemory);

void ReadValue(benchmark::State& state) {
  BenchRegistry::Instance();
  for (auto _ : state)
    benchmark::DoNotOptimize(RegReadValue(u"Domain\\Sales\\Var\\Variable500", moxel::schema::kValue));
}
BENCHMARK(ReadValue);

void RawInsert(benchmark::State& state) {
  BenchRegistry::Instance();
  RawStatement("CREATE TABLE IF NOT EXISTS bench(name TEXT PRIMARY KEY, data BLOB) WITHOUT ROWID").Run();
  RawStatement insert("INSERT OR REPLACE INTO bench VALUES('VARIABLE500', 'some text')");
  for (auto _ : state) insert.Run();
}
BENCHMARK(RawInsert);

void WriteValue(benchmark::State& state) {
  BenchRegistry::Instance();
  for (auto _ : state)
    benchmark::DoNotOptimize(
        RegWriteValue(u"Domain\\Sales\\Var\\Variable500", moxel::schema::kValue, REG_SZ, u"some text"));
}
BENCHMARK(WriteValue);

// Time per item is time per subkey.
void EnumerateSubkeys(benchmark::State& state) {
  BenchRegistry::Instance();
  const std::u16string list = u"List" + Number(state.range(0));
  std::u16string name;
  for (auto _ : state) {
    moxel::StoreHandle handle = 0;
    moxel::RegOpenKeyPath(list, handle, KEY_ENUMERATE_SUB_KEYS);
    std::int32_t index = 0;
    while (moxel::RegEnumSubKeys(handle, index, name)) ++index;
    moxel::RegCloseKeyHandle(handle);
    if (index != state.range(0)) state.SkipWithError("not every subkey was met");
  }
  state.counters["per_subkey"] =
      benchmark::Counter(static_cast<double>(state.iterations() * state.range(0)),
                         benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}
BENCHMARK(EnumerateSubkeys)->Arg(1'000)->Arg(10'000)->Arg(100'000)->Unit(benchmark::kMillisecond);

void RecupVariable(benchmark::State& state) {
  BenchRegistry::Instance();
  auto root = moxel::RootVar::Create();
  for (auto _ : state) benchmark::DoNotOptimize(root->RecupVariable(u"Sales", u"", u"Variable500"));
}
BENCHMARK(RecupVariable)->Unit(benchmark::kMicrosecond);

}  // namespace
