// Loading, walking and resetting configurations of growing size. `per_operation` is the time of one registry
// operation: one read of a value, one write, or one step of an enumeration.
#include <malloc.h>
#include <stdlib.h>

#include <filesystem>
#include <map>
#include <memory>
#include <vector>

#include "bench/beside.h"
#include "moxel/platform/registry_file.h"
#include "registry/store.h"
#include "root/root.h"

namespace {

using moxel::RegWriteValue;
using moxel::bench::Numbered;

constexpr int kTasks = 2;

// A registry file in a folder of its own. The first scenarios of a size belong to the domain Sales, all
// others to none.
class Configuration {
 public:
  Configuration(std::int64_t scenarios, std::int64_t of_sales, int tasks) {
    std::string pattern = (std::filesystem::temp_directory_path() / "moxel-bench-XXXXXX").string();
    folder_ = ::mkdtemp(pattern.data());
    Use();
    RegFileBegin();
    RegWriteValue(u"Domain\\Sales", u"Comment", REG_SZ, u"Orders");
    for (std::int64_t i = 0; i < scenarios; ++i)
      WriteScenario(Numbered(u"Scenarios\\S", i), i < of_sales, tasks);
    RegFileCommit();
  }
  ~Configuration() { std::filesystem::remove_all(folder_); }
  Configuration(const Configuration&) = delete;
  Configuration& operator=(const Configuration&) = delete;

  void Use() const {
    ::setenv("MOXEL_REGISTRY", file().c_str(), 1);
    moxel::Main();
  }
  std::string file() const { return folder_ / "registry.db"; }

 private:
  static void WriteScenario(const std::u16string& path, bool of_sales, int tasks) {
    if (of_sales) RegWriteValue(path, u"Domain", REG_SZ, u"Sales");
    RegWriteValue(path, u"Dir", REG_SZ, u"D:\\Jobs");
    RegWriteValue(path, u"Traitement", REG_DWORD, u"1");
    RegWriteValue(path, u"Etat", REG_DWORD, u"3");
    RegWriteValue(path, u"UseSock", REG_DWORD, u"0");
    RegWriteValue(path, u"SockNum", REG_SZ, u"7000");
    RegWriteValue(path, u"Date Traitement", REG_SZ, u"2024-03-15");
    RegWriteValue(path + u"\\User", u"1", REG_SZ, u"alice");
    RegWriteValue(path + u"\\Var\\Region", u"Value", REG_SZ, u"North");
    RegWriteValue(path + u"\\Var\\Region", u"Init", REG_SZ, u"South");
    RegWriteValue(path + u"\\Var\\Region", u"V/C", REG_SZ, u"V");
    for (int task = 1; task <= tasks; ++task) {
      RegWriteValue(Numbered(path + u"\\Taches\\T", task), u"Etat", REG_DWORD, u"2");
      RegWriteValue(path + u"\\Ordre", Numbered(u"tsk", task), REG_SZ, Numbered(u"T", task));
    }
  }

  std::filesystem::path folder_;
};

const Configuration& ConfigurationOf(std::int64_t scenarios, std::int64_t of_sales, int tasks) {
  static std::map<std::pair<std::int64_t, std::int64_t>, std::unique_ptr<Configuration>> built;
  auto& configuration = built[{scenarios, of_sales}];
  if (!configuration) configuration = std::make_unique<Configuration>(scenarios, of_sales, tasks);
  configuration->Use();
  return *configuration;
}

void ReportOperations(benchmark::State& state, std::int64_t operations) {
  state.counters["per_operation"] =
      benchmark::Counter(static_cast<double>(state.iterations() * operations),
                         benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

// What is read and written of a scenario or of a task, for what has no lists to step through.
struct Operation {
  std::u16string key, name;
  bool writes;
};

void AddReads(std::vector<Operation>& operations, const std::u16string& key) {
  for (const char16_t* name :
       {u"Domain", u"Dir", u"Traitement", u"Etat", u"UseSock", u"SockNum", u"Date Traitement"})
    operations.push_back({key, name, false});
}

// Of LoadScenarios where there are no tasks, else of InitializeDomain.
std::vector<Operation> OperationsOf(std::int64_t scenarios, int tasks) {
  std::vector<Operation> operations;
  for (std::int64_t i = 0; i < scenarios; ++i) {
    const std::u16string path = Numbered(u"Scenarios\\S", i);
    AddReads(operations, path);
    for (int task = 1; task <= tasks; ++task) {
      AddReads(operations, Numbered(path + u"\\Taches\\T", task));
      operations.push_back({Numbered(path + u"\\Taches\\T", task), u"Etat", true});
    }
    if (tasks > 0)
      for (const char16_t* name : {u"Etat", u"Date Traitement"}) operations.push_back({path, name, true});
  }
  return operations;
}

void RunBare(benchmark::State& state, std::int64_t of_sales, int tasks, int made_with) {
  const auto& configuration = ConfigurationOf(state.range(0), of_sales, made_with);
  moxel::bench::BareStatements bare(configuration.file());
  struct Folded {
    std::string path, name;
    bool writes;
  };
  std::vector<Folded> operations;
  for (const Operation& each : OperationsOf(state.range(0), tasks))
    operations.push_back({moxel::bench::FoldedPath(each.key), moxel::bench::Folded(each.name), each.writes});
  const std::string data("2\0", 2);
  std::size_t found = 0;
  for (auto _ : state)
    for (const Folded& each : operations)
      if (each.writes)
        bare.Write(each.path, each.name, data);
      else
        found += bare.Read(each.path, each.name) ? 1 : 0;
  if (found == 0) state.SkipWithError("no value was found");
  ReportOperations(state, static_cast<std::int64_t>(operations.size()));
}

void RunFloor(benchmark::State& state, int tasks) {
  moxel::Main();
  moxel::bench::Floor floor;
  const std::vector<Operation> operations = OperationsOf(state.range(0), tasks);
  for (const Operation& each : operations) floor.Write(each.key, each.name, u"2");
  for (auto _ : state)
    for (const Operation& each : operations)
      if (each.writes)
        floor.Write(each.key, each.name, u"3");
      else
        benchmark::DoNotOptimize(floor.Read(each.key, each.name));
  ReportOperations(state, static_cast<std::int64_t>(operations.size()));
}

void BareLoad(benchmark::State& state) { RunBare(state, 0, 0, kTasks); }
BENCHMARK(BareLoad)->Arg(1'000)->Arg(10'000)->Arg(100'000)->Unit(benchmark::kMillisecond);
void FloorLoad(benchmark::State& state) { RunFloor(state, 0); }
BENCHMARK(FloorLoad)->Arg(1'000)->Arg(10'000)->Arg(100'000)->Unit(benchmark::kMillisecond);

// Seven reads and one step a scenario.
void LoadScenarios(benchmark::State& state) {
  const std::int64_t count = state.range(0);
  ConfigurationOf(count, 0, kTasks);
  double bytes = 0;
  for (auto _ : state) {
    const std::size_t before = ::mallinfo2().uordblks;
    auto root = moxel::Root::Create();
    if (root->Scenarios()->Count() != count) state.SkipWithError("not every scenario was loaded");
    bytes = static_cast<double>(::mallinfo2().uordblks - before);
    state.PauseTiming();
    root = nullptr;
    state.ResumeTiming();
  }
  ReportOperations(state, count * 8);
  state.counters["bytes_per_scenario"] = bytes / static_cast<double>(count);
}
BENCHMARK(LoadScenarios)->Arg(1'000)->Arg(10'000)->Arg(100'000)->Unit(benchmark::kMillisecond);

// A scenario's users (a step, a read), variables (a step, four reads), tasks (a step and seven reads each)
// and order (a step each).
void WalkEverything(benchmark::State& state) {
  const std::int64_t count = state.range(0);
  ConfigurationOf(count, 0, kTasks);
  for (auto _ : state) {
    auto root = moxel::Root::Create();
    auto scenarios = root->Scenarios();
    for (std::int32_t i = 1; i <= scenarios->Count(); ++i) {
      auto scenario = scenarios->Item(i);
      benchmark::DoNotOptimize(scenario->Utilisateurs()->Count() + scenario->Variables()->Count() +
                               scenario->Traitements()->Count() + scenario->TraitementsSelected()->Count());
    }
  }
  ReportOperations(state, count * (8 + 2 + 5 + kTasks * 8 + kTasks));
}
BENCHMARK(WalkEverything)->Arg(1'000)->Arg(10'000)->Arg(100'000)->Unit(benchmark::kMillisecond);

// Loads and resets a domain of scenarios of 20 tasks: a step and seven reads a scenario, then its order
// and its tasks (as above), a write a task and two for the scenario.
constexpr int kManyTasks = 20;

void InitializeDomain(benchmark::State& state) {
  const std::int64_t count = state.range(0);
  ConfigurationOf(count, count, kManyTasks);
  for (auto _ : state) {
    auto root = moxel::Root::Create();
    root->Domaines()->Item(u"Sales")->Initialize(0, 0);
  }
  ReportOperations(state, count * (8 + kManyTasks * (1 + 8 + 1) + 2));
}
BENCHMARK(InitializeDomain)->Arg(10)->Arg(100)->Arg(1'000)->Unit(benchmark::kMillisecond);

void BareReset(benchmark::State& state) { RunBare(state, state.range(0), kManyTasks, kManyTasks); }
BENCHMARK(BareReset)->Arg(10)->Arg(100)->Arg(1'000)->Unit(benchmark::kMillisecond);
void FloorReset(benchmark::State& state) { RunFloor(state, kManyTasks); }
BENCHMARK(FloorReset)->Arg(10)->Arg(100)->Arg(1'000)->Unit(benchmark::kMillisecond);

}  // namespace
