// What the store is measured beside: the bare statements of the database library on the same file, and the
// floor, which is hash maps behind the same conversions of texts.
#pragma once

#include <benchmark/benchmark.h>
#include <sqlite3.h>

#include <cctype>
#include <string>
#include <string_view>
#include <unordered_map>

#include "moxel/variant.h"
#include "registry/ansi.h"
#include "registry/settings.h"

namespace moxel::bench {

inline std::u16string Numbered(std::u16string_view prefix, std::int64_t number) {
  std::u16string text(prefix);
  for (char digit : std::to_string(number)) text.push_back(static_cast<char16_t>(digit));
  return text;
}

inline std::string Folded(std::u16string_view text) {
  std::string folded = ToAnsi(text);
  for (char& c : folded) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return folded;
}

// A key's path from the hive's root, as the file has it.
inline std::string FoldedPath(std::u16string_view key) {
  return Folded(std::u16string(Settings().RootPath).append(key));
}

class Floor {
 public:
  Variant Read(std::u16string_view key, std::u16string_view name) const {
    return FromAnsi(tree_.at(FoldedPath(key)).at(Folded(name)));
  }
  void Write(std::u16string_view key, std::u16string_view name, std::u16string_view text) {
    tree_[FoldedPath(key)][Folded(name)] = ToAnsi(text);
  }

 private:
  std::unordered_map<std::string, std::unordered_map<std::string, std::string>> tree_;
};

class BareStatements {
 public:
  explicit BareStatements(const std::string& file) {
    sqlite3_open_v2(file.c_str(), &database_, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr);
    // As the component has it.
    sqlite3_exec(database_, "PRAGMA synchronous = NORMAL; PRAGMA cache_size = -65536", nullptr, nullptr,
                 nullptr);
    Prepare("SELECT data FROM vals WHERE key = (SELECT id FROM keys WHERE path = ?1) AND folded = ?2", read_);
    Prepare("UPDATE vals SET data = ?3 WHERE key = (SELECT id FROM keys WHERE path = ?1) AND folded = ?2",
            write_);
  }
  ~BareStatements() {
    sqlite3_finalize(read_);
    sqlite3_finalize(write_);
    sqlite3_close(database_);
  }
  BareStatements(const BareStatements&) = delete;
  BareStatements& operator=(const BareStatements&) = delete;

  // Paths and names folded, as the file has them. False where nothing is found.
  bool Read(const std::string& path, const std::string& name) { return Run(read_, path, name); }
  void Write(const std::string& path, const std::string& name, const std::string& data) {
    Bind(write_, 3, data);
    Run(write_, path, name);
  }

 private:
  void Prepare(const char* sql, sqlite3_stmt*& statement) {
    sqlite3_prepare_v2(database_, sql, -1, &statement, nullptr);
  }
  static void Bind(sqlite3_stmt* statement, int place, const std::string& text) {
    sqlite3_bind_text(statement, place, text.data(), static_cast<int>(text.size()), SQLITE_STATIC);
  }
  static bool Run(sqlite3_stmt* statement, const std::string& path, const std::string& name) {
    Bind(statement, 1, path);
    Bind(statement, 2, name);
    const bool found = sqlite3_step(statement) == SQLITE_ROW;
    if (found) benchmark::DoNotOptimize(sqlite3_column_blob(statement, 0));
    sqlite3_reset(statement);
    return found;
  }

  sqlite3* database_ = nullptr;
  sqlite3_stmt *read_ = nullptr, *write_ = nullptr;
};

}  // namespace moxel::bench
