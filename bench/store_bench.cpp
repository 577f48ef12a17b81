// The store beside the bare statements that lie under it, on the same file in the same run, and beside the
// floor.
#include <stdlib.h>

#include <filesystem>

#include "bench/beside.h"
#include "moxel/platform/registry_file.h"
#include "registry/schema.h"
#include "registry/store.h"
#include "root/root_var.h"

namespace {

using moxel::RegReadValue;
using moxel::RegWriteValue;
using moxel::bench::Numbered;
using moxel::schema::kValue;

constexpr const char16_t* kVariable = u"Domain\\Sales\\Var\\Variable500";

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
        RegWriteValue(Numbered(Numbered(u"List", count) + u"\\Entry", i), u"", 3, u"");
    for (std::int64_t i = 0; i < 1'000; ++i) {
      std::u16string path = Numbered(u"Domain\\Sales\\Var\\Variable", i);
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

moxel::bench::BareStatements& Bare() {
  static moxel::bench::BareStatements statements(BenchRegistry::Instance().file());
  return statements;
}

void BareRead(benchmark::State& state) {
  moxel::bench::BareStatements& bare = Bare();
  const std::string path = moxel::bench::FoldedPath(kVariable);
  for (auto _ : state)
    if (!bare.Read(path, "VALUE")) state.SkipWithError("the value was not found");
}
BENCHMARK(BareRead);

moxel::bench::Floor& FloorOfVariables() {
  static moxel::bench::Floor floor;
  BenchRegistry::Instance();
  for (std::int64_t i = 0; i < 1'000; ++i)
    for (const char16_t* name : {u"Value", u"Init", u"Type", u"V/C"})
      floor.Write(Numbered(u"Domain\\Sales\\Var\\Variable", i), name, u"some text");
  return floor;
}

void FloorRead(benchmark::State& state) {
  const moxel::bench::Floor& floor = FloorOfVariables();
  for (auto _ : state) benchmark::DoNotOptimize(floor.Read(kVariable, kValue));
}
BENCHMARK(FloorRead);

void ReadValue(benchmark::State& state) {
  BenchRegistry::Instance();
  for (auto _ : state) benchmark::DoNotOptimize(RegReadValue(kVariable, kValue));
}
BENCHMARK(ReadValue);

void BareWrite(benchmark::State& state) {
  moxel::bench::BareStatements& bare = Bare();
  const std::string path = moxel::bench::FoldedPath(kVariable), data("some text\0", 10);
  for (auto _ : state) bare.Write(path, "VALUE", data);
}
BENCHMARK(BareWrite);

void FloorWrite(benchmark::State& state) {
  moxel::bench::Floor& floor = FloorOfVariables();
  for (auto _ : state) floor.Write(kVariable, kValue, u"some text");
}
BENCHMARK(FloorWrite);

void WriteValue(benchmark::State& state) {
  BenchRegistry::Instance();
  for (auto _ : state) benchmark::DoNotOptimize(RegWriteValue(kVariable, kValue, REG_SZ, u"some text"));
}
BENCHMARK(WriteValue);

// Time per item is time per subkey.
void EnumerateSubkeys(benchmark::State& state) {
  BenchRegistry::Instance();
  const std::u16string list = Numbered(u"List", state.range(0));
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
