// Sequences of registry calls, each compared with the answer of a model in memory.
//
// An input is a list of steps, each a letter (see Machine::Take) and its choices: "c00015" creates below the
// handle in the place 0 the key kNames[0] with the rights kRights[1] and puts its handle into the place 2
// + 5.
#include <array>
#include <atomic>
#include <functional>
#include <optional>
#include <thread>

#include "fuzz/input.h"
#include "fuzz/registry_model.h"
#include "fuzz/temp_registry.h"
#include "moxel/platform/registry_file.h"

namespace moxel::fuzz {
namespace {

const std::string kLongest(255, 'n'), kTooLong(256, 'n');
const std::string kNames[] = {
    "a",      "A",      "b",    "B\\",  "a\\b", "",           "_",        "a2",
    "\xE9",   "\xC9",   "\xFF", "\x9F", "\\a",  "a\\\\b\\\\", "SOFTWARE", "software\\Classes\\a",
    kLongest, kTooLong, "\x80"};
constexpr REGSAM kRights[] = {KEY_ALL_ACCESS, KEY_READ,     KEY_WRITE,      KEY_QUERY_VALUE,
                              KEY_SET_VALUE,  GENERIC_READ, GENERIC_WRITE,  KEY_ENUMERATE_SUB_KEYS,
                              GENERIC_ALL,    REGSAM{0},    MAXIMUM_ALLOWED};
constexpr DWORD kTypes[] = {REG_SZ, REG_BINARY, REG_DWORD, REG_NONE, REG_EXPAND_SZ, REG_MULTI_SZ, 0xFFFFFFFF};

// An area of a caller's, and what must be in it afterwards.
class Area {
 public:
  explicit Area(std::size_t room)
      : room_(static_cast<DWORD>(room)), found_(room + 1, '\x7F'), expected_(found_) {}

  DWORD room() const { return room_; }
  char* text() { return found_.data(); }
  BYTE* bytes() { return reinterpret_cast<BYTE*>(found_.data()); }
  void Expect(const std::string& content) { expected_.replace(0, content.size(), content); }
  void Check() const { RequireEqual(found_, expected_, "content of an area"); }

 private:
  DWORD room_;
  std::string found_, expected_;
};

// The name that an enumeration gives.
struct NameResult {
  explicit NameResult(Input& input) : area(input.Rarely(6) ? input.Choose(4) : 300) {}

  LSTATUS Expect(const std::string& name) {
    if (name.size() >= area.room()) return ERROR_MORE_DATA;
    area.Expect(name + '\0');
    expected_length = static_cast<DWORD>(name.size());
    return ERROR_SUCCESS;
  }
  void Check() const {
    area.Check();
    RequireEqual(length, expected_length, "length of a name");
  }

  Area area;
  DWORD length = area.room(), expected_length = length;
};

// Type and data that a query or an enumeration gives.
struct DataResult {
  explicit DataResult(Input& input) : area(input.Choose(40)), wanted(!input.Rarely(4)) {}

  BYTE* bytes() { return wanted ? area.bytes() : nullptr; }
  LSTATUS Expect(const StoredValue& value) {
    expected_type = value.type;
    expected_size = static_cast<DWORD>(value.data.size());
    if (!wanted) return ERROR_SUCCESS;
    if (value.data.size() > area.room()) return ERROR_MORE_DATA;
    area.Expect(value.data);
    return ERROR_SUCCESS;
  }
  void Check() const {
    area.Check();
    RequireEqual(type, expected_type, "type of a value");
    RequireEqual(size, expected_size, "size of a value");
  }

  Area area;
  bool wanted;
  DWORD type = 77, expected_type = type;
  DWORD size = area.room(), expected_size = size;
};

struct Handle {
  HKEY number = 0;
  bool open = false;
  KeyId key = kNoKey;
  REGSAM rights = 0;
  DWORD next = 0;  // where an enumeration goes on
};

// A thread that takes steps in turn with its owner, and whose calls have a connection of their own.
class OtherThread {
 public:
  OtherThread() : thread_([this] { Serve(); }) {}
  ~OtherThread() {
    Pass(kOver);
    thread_.join();
  }
  OtherThread(const OtherThread&) = delete;
  OtherThread& operator=(const OtherThread&) = delete;

  void Do(std::function<void()> step) {
    step_ = std::move(step);
    Pass(kIts);
    turn_.wait(kIts);
  }

 private:
  enum Turn { kOwners, kIts, kOver };

  void Pass(Turn turn) {
    turn_ = turn;
    turn_.notify_one();
  }
  void Serve() {
    for (turn_.wait(kOwners); turn_ == kIts; turn_.wait(kOwners)) {
      step_();
      Pass(kOwners);
    }
  }

  std::atomic<Turn> turn_ = kOwners;
  std::function<void()> step_;
  std::thread thread_;
};

class Machine {
 public:
  Machine(Input& input, OtherThread& other) : input_(input), other_(other) {
    handles_[0] = {HKEY_LOCAL_MACHINE, true, kRoot, KEY_ALL_ACCESS};
    handles_[1] = {HKEY_CLASSES_ROOT, true, kNoKey, KEY_ALL_ACCESS};
  }

  void Run() {
    while (!IsOver()) {
      TakeSteps();
      if (!IsOver()) other_.Do([this] { TakeSteps(); });
    }
  }

  // Leaves the registry empty.
  void CleanUp() {
    for (std::size_t place = kFirstOwn; place < handles_.size(); ++place)
      if (handles_[place].open) Close(handles_[place]);
    RequireEqual(RegFileBegin(), 0, "RegFileBegin");
    DeleteBelow(kRoot, "");
    for (const StoredValue& value : tree_.Find(kRoot)->values)
      RequireEqual(RegDeleteValueA(HKEY_LOCAL_MACHINE, value.name.c_str()), 0, "RegDeleteValueA");
    RequireEqual(RegFileCommit(), 0, "RegFileCommit");
  }

 private:
  static constexpr std::size_t kFirstOwn = 2;

  bool IsOver() const { return steps_ == 40 || input_.empty(); }

  // Those that one thread takes. A batch is its thread's, and so is its end.
  void TakeSteps() {
    for (char letter = 0; !IsOver() && (letter != 't' || saved_); ++steps_) {
      letter = input_.Step("ocqskvdxlbmrt");
      Take(letter);
    }
    if (saved_) End(false);
  }

  void Take(char letter) {
    switch (letter) {
      case 'o': Open(false); break;
      case 'c': Open(true); break;
      case 'q': Query(); break;
      case 's': Set(); break;
      case 'k': EnumerateKeys(); break;
      case 'v': EnumerateValues(); break;
      case 'd': DeleteKey(); break;
      case 'x': DeleteValue(); break;
      case 'l': Close(input_.Pick(handles_)); break;
      case 'b': Begin(); break;
      case 'm': End(true); break;
      case 'r': End(false); break;
      default: break;
    }
  }

  std::string TakeName() {
    if (!input_.Rarely(20)) return input_.Pick(kNames);
    const std::string name = input_.Text(9);
    return name.substr(0, name.find('\0'));
  }
  DWORD TakeIndex(Handle& handle) {
    const auto choice = static_cast<DWORD>(input_.Choose(8));
    return choice < 6 ? choice : choice == 6 ? handle.next++ : input_.Raw<DWORD>();
  }

  static bool IsClasses(const Handle& handle) { return handle.number == HKEY_CLASSES_ROOT; }
  KeyId Walk(const Handle& base, const std::string& path) {
    return IsClasses(base) ? tree_.Walk(kRoot, kClasses + path) : tree_.Walk(base.key, path);
  }
  KeyId Create(const Handle& base, const std::string& path) {
    return IsClasses(base) ? tree_.Create(kRoot, kClasses + path) : tree_.Create(base.key, path);
  }

  // What a call answers before it comes to its work.
  LSTATUS StateOf(const Handle& handle, REGSAM right) {
    if (!handle.open) return ERROR_INVALID_HANDLE;
    if (right != 0 && (handle.rights & right) == 0) return ERROR_ACCESS_DENIED;
    return IsClasses(handle) || tree_.Find(handle.key) != nullptr ? ERROR_SUCCESS : ERROR_KEY_DELETED;
  }
  LSTATUS StateOf(const Handle& base, const std::string& path) {
    return path.starts_with('\\') ? ERROR_BAD_PATHNAME : StateOf(base, REGSAM{0});
  }
  // The key whose values or subkeys a call is about; null where that of the classes does not exist.
  Key* KeyOf(const Handle& handle) { return tree_.Find(Walk(handle, "")); }

  static REGSAM Granted(REGSAM wanted) {
    if ((wanted & GENERIC_READ) != 0) wanted |= KEY_READ;
    if ((wanted & GENERIC_WRITE) != 0) wanted |= KEY_WRITE;
    if ((wanted & (GENERIC_ALL | MAXIMUM_ALLOWED)) != 0) wanted |= KEY_ALL_ACCESS;
    return wanted;
  }

  void Close(Handle& handle) {
    const LSTATUS expected = handle.open ? ERROR_SUCCESS : ERROR_INVALID_HANDLE;
    RequireEqual(RegCloseKey(handle.number), expected, "RegCloseKey");
    if (handle.number < HKEY_CLASSES_ROOT) handle.open = false;
  }

  void Open(bool creates) {
    const Handle& base = input_.Pick(handles_);
    const std::string path = TakeName();
    const REGSAM wanted = input_.Pick(kRights);
    HKEY opened = 77;
    DWORD disposition = 77;
    const LSTATUS answer = creates ? RegCreateKeyExA(base.number, path.c_str(), 0, nullptr, 0, wanted,
                                                     nullptr, &opened, &disposition)
                                   : RegOpenKeyExA(base.number, path.c_str(), 0, wanted, &opened);
    LSTATUS expected = creates && path == kTooLong ? ERROR_INVALID_PARAMETER : StateOf(base, path);
    KeyId key = kNoKey;
    if (expected == ERROR_SUCCESS) {
      key = Walk(base, path);
      const bool missing = key == kNoKey;
      if (missing && creates) key = Create(base, path);
      if (key == kNoKey) expected = ERROR_FILE_NOT_FOUND;
      const DWORD made = missing ? REG_CREATED_NEW_KEY : REG_OPENED_EXISTING_KEY;
      if (creates) RequireEqual(disposition, made, "disposition");
    }
    RequireEqual(answer, expected, creates ? "RegCreateKeyExA" : "RegOpenKeyExA");
    RequireEqual(opened == 0, expected != ERROR_SUCCESS, "no handle");
    if (expected != ERROR_SUCCESS) return;
    Handle& target = handles_[kFirstOwn + input_.Choose(handles_.size() - kFirstOwn)];
    if (target.open) Close(target);
    target = {opened, true, key, Granted(wanted)};
  }

  void Query() {
    const Handle& handle = input_.Pick(handles_);
    const std::string name = TakeName();
    DataResult data(input_);
    const LSTATUS answer =
        RegQueryValueExA(handle.number, name.c_str(), nullptr, &data.type, data.bytes(), &data.size);
    LSTATUS expected = StateOf(handle, KEY_QUERY_VALUE);
    if (expected == ERROR_SUCCESS) {
      Key* key = KeyOf(handle);
      if (key != nullptr && key->Has(name)) {
        expected = data.Expect(*key->FindValue(name));
      } else {
        expected = ERROR_FILE_NOT_FOUND;
        data.expected_type = REG_NONE;
        if (!data.wanted) data.expected_size = 0;
      }
    }
    RequireEqual(answer, expected, "RegQueryValueExA");
    data.Check();
  }

  void Set() {
    const Handle& handle = input_.Pick(handles_);
    const std::string name = TakeName();
    const DWORD type = input_.Pick(kTypes);
    const std::string data = input_.Text(40);
    const auto* bytes = input_.Rarely(20) ? nullptr : reinterpret_cast<const BYTE*>(data.data());
    const LSTATUS answer =
        RegSetValueExA(handle.number, name.c_str(), 0, type, bytes, static_cast<DWORD>(data.size()));
    const bool without_data = bytes == nullptr && !data.empty();
    RequireEqual(answer, without_data ? ERROR_NOACCESS : StateOf(handle, KEY_SET_VALUE), "RegSetValueExA");
    if (answer != ERROR_SUCCESS) return;
    tree_.Find(Create(handle, ""))->Set(name, type, data);
  }

  void EnumerateKeys() {
    Handle& handle = input_.Pick(handles_);
    const DWORD index = TakeIndex(handle);
    NameResult name(input_);
    const LSTATUS answer = RegEnumKeyExA(handle.number, index, name.area.text(), &name.length, nullptr,
                                         nullptr, nullptr, nullptr);
    LSTATUS expected = StateOf(handle, KEY_ENUMERATE_SUB_KEYS);
    if (expected == ERROR_SUCCESS) {
      const Key* key = KeyOf(handle);
      const bool exists = key != nullptr && index < key->subkeys.size();
      expected = exists ? name.Expect(tree_.Find(std::next(key->subkeys.begin(), index)->second)->name)
                        : ERROR_NO_MORE_ITEMS;
    }
    RequireEqual(answer, expected, "RegEnumKeyExA");
    name.Check();
  }

  void EnumerateValues() {
    Handle& handle = input_.Pick(handles_);
    const DWORD index = TakeIndex(handle);
    NameResult name(input_);
    DataResult data(input_);
    const LSTATUS answer = RegEnumValueA(handle.number, index, name.area.text(), &name.length, nullptr,
                                         &data.type, data.bytes(), &data.size);
    LSTATUS expected = StateOf(handle, KEY_QUERY_VALUE);
    if (expected == ERROR_SUCCESS) {
      const Key* key = KeyOf(handle);
      if (key == nullptr || index >= key->values.size()) {
        expected = ERROR_NO_MORE_ITEMS;
      } else {
        // A name that does not fit leaves the data alone, but not its type and size.
        const StoredValue& value = key->values[index];
        expected = name.Expect(value.name);
        if (expected == ERROR_SUCCESS) expected = data.Expect(value);
        data.expected_type = value.type;
        data.expected_size = static_cast<DWORD>(value.data.size());
      }
    }
    RequireEqual(answer, expected, "RegEnumValueA");
    name.Check();
    data.Check();
  }

  void DeleteKey() {
    const Handle& base = input_.Pick(handles_);
    const std::string path = TakeName();
    LSTATUS expected = StateOf(base, path);
    const KeyId key = expected == ERROR_SUCCESS ? Walk(base, path) : kNoKey;
    if (expected == ERROR_SUCCESS && key == kNoKey) expected = ERROR_FILE_NOT_FOUND;
    if (key == kRoot || (key != kNoKey && !tree_.Find(key)->subkeys.empty())) expected = ERROR_ACCESS_DENIED;
    RequireEqual(RegDeleteKeyA(base.number, path.c_str()), expected, "RegDeleteKeyA");
    if (expected == ERROR_SUCCESS) tree_.Delete(key);
  }

  void DeleteValue() {
    const Handle& handle = input_.Pick(handles_);
    const std::string name = TakeName();
    LSTATUS expected = StateOf(handle, KEY_SET_VALUE);
    Key* key = expected == ERROR_SUCCESS ? KeyOf(handle) : nullptr;
    const bool found = key != nullptr && key->Has(name);
    if (expected == ERROR_SUCCESS && !found) expected = ERROR_FILE_NOT_FOUND;
    RequireEqual(RegDeleteValueA(handle.number, name.c_str()), expected, "RegDeleteValueA");
    if (found) key->values.erase(key->FindValue(name));
  }

  void Begin() {
    RequireEqual(RegFileBegin(), saved_ ? ERROR_INVALID_PARAMETER : ERROR_SUCCESS, "RegFileBegin");
    if (!saved_) saved_ = tree_;
  }

  void End(bool commit) {
    const LSTATUS answer = commit ? RegFileCommit() : RegFileRollback();
    RequireEqual(answer, saved_ ? ERROR_SUCCESS : ERROR_INVALID_PARAMETER, "end of a batch");
    if (saved_ && !commit) tree_.Restore(*saved_);
    saved_.reset();
  }

  void DeleteBelow(KeyId key, const std::string& path) {
    for (const auto& entry : tree_.Find(key)->subkeys) {
      const std::string below = path + tree_.Find(entry.second)->name;
      DeleteBelow(entry.second, below + '\\');
      RequireEqual(RegDeleteKeyA(HKEY_LOCAL_MACHINE, below.c_str()), 0, "RegDeleteKeyA");
    }
  }

  Input& input_;
  OtherThread& other_;
  int steps_ = 0;
  Tree tree_;
  std::optional<Tree> saved_;  // while a batch is open
  std::array<Handle, 8> handles_;
};

}  // namespace
}  // namespace moxel::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const moxel::fuzz::TempRegistry registry;
  static moxel::fuzz::OtherThread other;
  moxel::fuzz::Input input(data, size);
  moxel::fuzz::Machine machine(input, other);
  machine.Run();
  machine.CleanUp();
  return 0;
}
