// Creates a scenario of two tasks as the product's other programs do: through the registry's entry points.
//
//   create_scenario Weekly Sales alice bob    "Weekly" of the domain "Sales", for the users "alice" and "bob"
#include <moxel/platform.h>
#include <moxel/text.h>

#include <iostream>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

// Paths and names are in code page 1252, as the registry takes them.
[[noreturn]] void Fail(const std::string& path, const std::string& reason) {
  throw std::runtime_error(moxel::ToUtf8(moxel::Widen(1252, path)) + reason);
}

void Check(LSTATUS status, const std::string& path) {
  if (status != ERROR_SUCCESS) Fail(path, ": registry error " + std::to_string(status));
}

// A key below the product's root, closed with this object.
class Key {
 public:
  static Key Open(const std::string& path) {
    HKEY handle = 0;
    Check(RegOpenKeyExA(HKEY_LOCAL_MACHINE, FullPath(path).c_str(), 0, KEY_READ, &handle), path);
    return {path, handle};
  }

  // A new key, with all that is missing of its path.
  static Key Create(const std::string& path) {
    HKEY handle = 0;
    DWORD disposition = 0;
    Check(RegCreateKeyExA(HKEY_LOCAL_MACHINE, FullPath(path).c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE,
                          KEY_WRITE, nullptr, &handle, &disposition),
          path);
    if (disposition == REG_CREATED_NEW_KEY) return {path, handle};
    RegCloseKey(handle);
    Fail(path, " exists already");
  }

  Key(const Key&) = delete;
  Key& operator=(const Key&) = delete;
  ~Key() { RegCloseKey(handle_); }

  // In just this spelling: the component compares the names that a scenario holds exactly.
  bool HasSubkey(const std::string& wanted) const {
    char name[256];
    for (DWORD i = 0;; ++i) {
      DWORD length = sizeof name;
      LSTATUS status = RegEnumKeyExA(handle_, i, name, &length, nullptr, nullptr, nullptr, nullptr);
      if (status == ERROR_NO_MORE_ITEMS) return false;
      Check(status, path_);
      if (name == wanted) return true;
    }
  }

  void SetNumber(const std::string& name, DWORD number) const {
    Set(name, REG_DWORD, &number, sizeof number);
  }
  // A text goes with the NUL behind it.
  void SetText(const std::string& name, const std::string& text) const {
    Set(name, REG_SZ, text.c_str(), text.size() + 1);
  }

 private:
  Key(const std::string& path, HKEY handle) : path_(path), handle_(handle) {}

  static std::string FullPath(const std::string& path) { return "SOFTWARE\\MOXEL\\" + path; }

  void Set(const std::string& name, DWORD type, const void* data, std::size_t size) const {
    const auto* bytes = static_cast<const BYTE*>(data);
    Check(RegSetValueExA(handle_, name.c_str(), 0, type, bytes, static_cast<DWORD>(size)), path_);
  }

  std::string path_;
  HKEY handle_;
};

std::string NameFrom(const char* argument) {
  BOOL replaced = 0;
  std::string name = moxel::Narrow(1252, moxel::FromUtf8(argument), &replaced);
  if (replaced != 0 || name.empty() || name.size() > 254 || name.find('\\') != std::string::npos)
    throw std::runtime_error('"' + std::string(argument) + "\" cannot be a name");
  return name;
}

void CreateTask(const std::string& scenario, const std::string& name, DWORD type) {
  const std::string path = scenario + "\\Taches\\" + name;
  const Key task = Key::Create(path);
  task.SetNumber("Etat", 0);
  task.SetNumber("Type", type);
  task.SetText("ExecuteLe", "");
  for (const char* action : {"OnErr", "OnDec", "ExeIf", "Goto"})
    Key::Create(path + "\\Action\\" + action).SetText("Status", "N");
}

void CreateScenario(const std::string& path, const std::string& domain,
                    const std::vector<std::string>& users) {
  const Key scenario = Key::Create(path);
  scenario.SetText("Domain", domain);
  scenario.SetText("Dir", "C:\\Jobs");
  scenario.SetNumber("Traitement", 0);
  scenario.SetNumber("Etat", 0);
  scenario.SetNumber("UseSock", 1);
  scenario.SetNumber("SockNum", 5010);
  scenario.SetText("Date Traitement", "");
  scenario.SetNumber("Hwnd", 0);
  scenario.SetNumber("Admin", 0);

  CreateTask(path, "Collect", 1);
  CreateTask(path, "Send", 3);
  const Key order = Key::Create(path + "\\Ordre");
  order.SetText("tsk1", "Collect");
  order.SetText("tsk2", "Send");

  const Key retries = Key::Create(path + "\\Var\\Retries");
  retries.SetNumber("Value", 3);
  retries.SetNumber("Init", 3);
  retries.SetNumber("Type", 1);
  retries.SetText("V/C", "V");

  const Key list = Key::Create(path + "\\User");
  for (std::size_t i = 0; i < users.size(); ++i) list.SetText("user" + std::to_string(i + 1), users[i]);
}

void RequireSubkey(const std::string& path, const std::string& name) {
  if (!Key::Open(path).HasSubkey(name)) Fail(path + "\\" + name, " does not exist");
}

}  // namespace

int main(int argc, char** argv) try {
  if (argc < 3) {
    std::cerr << "usage: create_scenario SCENARIO DOMAIN [USER...]\n";
    return 2;
  }
  const std::string path = "Scenarios\\" + NameFrom(argv[1]), domain = NameFrom(argv[2]);
  std::vector<std::string> users;
  for (int i = 3; i < argc; ++i) users.push_back(NameFrom(argv[i]));
  RequireSubkey("Domain", domain);
  for (const std::string& user : users) RequireSubkey("User", user);
  CreateScenario(path, domain, users);
} catch (const std::exception& error) {
  std::cerr << "create_scenario: " << error.what() << '\n';
  return 1;
}
