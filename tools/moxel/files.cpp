#include "moxel/files.h"

#include <fcntl.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <iterator>
#include <utility>

#include "moxel/error.h"

namespace moxel::tool {
namespace {

class FileDescriptor {
 public:
  explicit FileDescriptor(int descriptor) : descriptor_(descriptor) {}
  ~FileDescriptor() {
    if (descriptor_ >= 0) ::close(descriptor_);
  }
  FileDescriptor(const FileDescriptor&) = delete;
  FileDescriptor& operator=(const FileDescriptor&) = delete;

  int get() const { return descriptor_; }
  // False, with errno, when the system reports at the end that bytes were lost.
  bool Close() { return ::close(std::exchange(descriptor_, -1)) == 0; }

 private:
  int descriptor_;
};

// Removes a file that nobody is to see, unless it was given up.
class TemporaryFile {
 public:
  explicit TemporaryFile(std::string path) : path_(std::move(path)) {}
  ~TemporaryFile() {
    if (!path_.empty()) ::unlink(path_.c_str());
  }
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;

  void Release() { path_.clear(); }

 private:
  std::string path_;
};

[[noreturn]] void Throw(const char* action, const std::filesystem::path& path) {
  throw ToolError::System("cannot " + std::string(action) + " " + path.string(), errno);
}

void WriteAll(int descriptor, std::string_view bytes, const std::filesystem::path& path) {
  while (!bytes.empty()) {
    const ssize_t count = ::write(descriptor, bytes.data(), bytes.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) Throw("write", path);
    bytes.remove_prefix(static_cast<size_t>(count));
  }
}

mode_t ModeOfNewFiles() {
  const mode_t mask = ::umask(0);
  ::umask(mask);
  return 0666 & ~mask;
}

void WriteInPlace(const std::filesystem::path& path, std::string_view bytes) {
  FileDescriptor file(::open(path.c_str(), O_WRONLY | O_CLOEXEC));
  if (file.get() < 0) Throw("open", path);
  WriteAll(file.get(), bytes, path);
  if (!file.Close()) Throw("write", path);
}

void Replace(const std::filesystem::path& path, mode_t mode, std::string_view bytes) {
  std::string temporary = path.string() + ".XXXXXX";
  FileDescriptor file(::mkostemp(temporary.data(), O_CLOEXEC));
  if (file.get() < 0) Throw("create", path);
  TemporaryFile cleanup(temporary);
  WriteAll(file.get(), bytes, path);
  if (::fchmod(file.get(), mode) != 0 || ::fsync(file.get()) != 0 || !file.Close()) Throw("write", path);
  if (::rename(temporary.c_str(), path.c_str()) != 0) Throw("replace", path);
  cleanup.Release();
}

}  // namespace

std::string ReadStream(std::istream& stream, const std::string& name) {
  std::string bytes{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
  if (stream.bad()) throw ToolError("cannot read " + name);
  return bytes;
}

std::string ReadFile(const std::filesystem::path& path) {
  FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
  if (file.get() < 0) Throw("open", path);
  std::string bytes;
  char buffer[65536];
  for (;;) {
    const ssize_t count = ::read(file.get(), buffer, sizeof buffer);
    if (count == 0) return bytes;
    if (count < 0 && errno != EINTR) Throw("read", path);
    if (count > 0) bytes.append(buffer, static_cast<size_t>(count));
  }
}

void WriteFile(const std::filesystem::path& path, std::string_view bytes) {
  struct stat existing {};
  if (::stat(path.c_str(), &existing) != 0) return Replace(path, ModeOfNewFiles(), bytes);
  if (!S_ISREG(existing.st_mode)) return WriteInPlace(path, bytes);
  // A symbolic link stays one: its target is replaced.
  Replace(std::filesystem::canonical(path), existing.st_mode & 07777, bytes);
}

}  // namespace moxel::tool
