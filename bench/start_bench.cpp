// From the start of a process to its first variable, and its end: through the component, by a bare statement,
// and the floor, a process that does nothing.
#include <benchmark/benchmark.h>
#include <spawn.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "moxel/platform/registry_file.h"
#include "registry/settings.h"
#include "registry/store.h"

namespace {

void StartProcess(benchmark::State& state, const std::string& program) {
  std::string pattern = (std::filesystem::temp_directory_path() / "moxel-bench-XXXXXX").string();
  const std::filesystem::path folder = ::mkdtemp(pattern.data());
  ::setenv("MOXEL_REGISTRY", (folder / "registry.db").c_str(), 1);
  moxel::Main();
  for (int i = 0; i < 20; ++i)
    moxel::RegWriteValue(u"Domain\\Sales\\Var\\V" + std::u16string(1, static_cast<char16_t>(u'a' + i)),
                         u"Value", REG_SZ, u"South");
  moxel::RegWriteValue(u"Domain\\Sales\\Var\\Region", u"Value", REG_SZ, u"North");
  char* const arguments[] = {const_cast<char*>(program.c_str()), nullptr};
  for (auto _ : state) {
    pid_t process = 0;
    int status = 1;
    if (::posix_spawn(&process, program.c_str(), nullptr, nullptr, arguments, environ) == 0)
      ::waitpid(process, &status, 0);
    if (status != 0) state.SkipWithError("the process did not find the variable");
  }
  std::filesystem::remove_all(folder);
}

std::string Beside(const char* name) {
  return std::filesystem::read_symlink("/proc/self/exe").parent_path() / name;
}

void StartFloor(benchmark::State& state) { StartProcess(state, "/bin/true"); }
void StartBare(benchmark::State& state) { StartProcess(state, Beside("moxel-bench-start-bare")); }
void StartComponent(benchmark::State& state) { StartProcess(state, Beside("moxel-bench-start-component")); }
BENCHMARK(StartFloor)->UseRealTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(StartBare)->UseRealTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(StartComponent)->UseRealTime()->Unit(benchmark::kMicrosecond);

}  // namespace
