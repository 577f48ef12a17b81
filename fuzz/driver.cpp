// Runs a target where the compiler brings no fuzzer: every file given and every file of each folder given,
// then inputs made from them by a fixed seed. Arguments are those of libFuzzer: fuzz-TARGET [-runs=N]
// [-seed=N] FILE|FOLDER...
#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
extern "C" void __sanitizer_set_death_callback(void (*callback)()) __attribute__((weak));

namespace {

constexpr unsigned kLongestSeconds = 60;  // that one input may take
constexpr std::size_t kLongestInput = 512;

using Corpus = std::vector<std::string>;

std::string current;
std::string failed_file;

// Runs in a process that is about to end by a signal or a sanitizer's report.
void SaveInput() {
  const int file = ::open(failed_file.c_str(), O_CREAT | O_TRUNC | O_WRONLY, 0644);
  const bool saved = ::write(file, current.data(), current.size()) == static_cast<ssize_t>(current.size());
  std::fprintf(stderr, "the failing input of %zu bytes is %s %s\n", current.size(), saved ? "in" : "not in",
               failed_file.c_str());
}

void OnSignal(int number) {
  SaveInput();
  ::signal(number, SIG_DFL);
  ::raise(number);
}

void WatchForFailures() {
  ::signal(SIGABRT, OnSignal);
  ::signal(SIGALRM, OnSignal);
  if (__sanitizer_set_death_callback != nullptr) return __sanitizer_set_death_callback(SaveInput);
  for (const int number : {SIGSEGV, SIGBUS, SIGFPE, SIGILL}) ::signal(number, OnSignal);
}

void Run(std::string input) {
  current = std::move(input);
  ::alarm(kLongestSeconds);
  // A copy of the exact size shows a read beyond its end.
  const std::vector<std::uint8_t> bytes(current.begin(), current.end());
  LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
}

void AddFile(const std::filesystem::path& path, Corpus& corpus) {
  std::ifstream file(path, std::ios::binary);
  if (!file) throw std::runtime_error(path.string() + ": cannot be read");
  corpus.emplace_back(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

// Changes an input in a few places: bytes set, put in and left out, parts repeated and taken from another
// one.
std::string Mutate(std::string input, const Corpus& corpus, std::mt19937_64& random) {
  const auto below = [&](std::size_t count) { return static_cast<std::size_t>(random() % count); };
  for (std::size_t changes = 1 + below(8); changes > 0; --changes) {
    const std::size_t at = below(input.size() + 1), from = below(input.size() + 1), length = 1 + below(12);
    switch (below(5)) {
      case 0: input.insert(at, 1, static_cast<char>(random())); break;
      case 1: input.erase(at, length); break;
      case 2: input.insert(at, input.substr(from, length)); break;
      case 3: input.replace(at, input.npos, corpus[below(corpus.size())].substr(0, 8 * length)); break;
      default: input.replace(at, 1, 1, static_cast<char>(random())); break;
    }
  }
  input.resize(std::min(input.size(), kLongestInput));
  return input;
}

}  // namespace

int main(int argc, char** argv) try {
  std::uint64_t runs = 0, seed = 1;
  Corpus corpus{""};
  for (const std::string& argument : std::vector<std::string>(argv + 1, argv + argc)) {
    if (argument.starts_with("-runs=")) {
      runs = std::stoull(argument.substr(6));
    } else if (argument.starts_with("-seed=")) {
      seed = std::stoull(argument.substr(6));
    } else if (std::filesystem::is_directory(argument)) {
      for (const auto& entry : std::filesystem::directory_iterator(argument)) AddFile(entry.path(), corpus);
    } else {
      AddFile(argument, corpus);
    }
  }
  std::sort(corpus.begin(), corpus.end());  // whatever order the folder has
  failed_file = std::filesystem::path(argv[0]).filename().string() + ".failed";
  WatchForFailures();
  for (const std::string& input : corpus) Run(input);
  std::mt19937_64 random(seed);
  for (std::uint64_t run = 0; run < runs; ++run)
    Run(Mutate(corpus[static_cast<std::size_t>(random() % corpus.size())], corpus, random));
  ::alarm(0);
  std::cout << corpus.size() << " inputs given and " << runs << " made, none of which failed\n";
} catch (const std::exception& error) {
  std::cerr << error.what() << '\n';
  return 2;
}
