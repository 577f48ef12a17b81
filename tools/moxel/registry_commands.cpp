#include "moxel/registry_commands.h"

#include <memory>
#include <optional>
#include <string>

#include "moxel/ansi_text.h"
#include "moxel/files.h"
#include "moxel/output.h"
#include "moxel/platform/registry_file.h"
#include "moxel/progress_bar.h"
#include "moxel/reg_reader.h"
#include "moxel/reg_transfer.h"
#include "moxel/registry_key.h"
#include "moxel/value_data.h"
#include "moxel/verbs.h"

namespace moxel::tool {
namespace {

constexpr const char* kKeyHelp = "Key, in full (HKLM\\..., HKCR\\...) or relative to HKLM\\SOFTWARE\\MOXEL";
constexpr const char* kNameHelp = "Name of the value; \"\" is the key's default value";

[[noreturn]] void ThrowNotFound(const std::string& what) { throw ToolError(what + ": not found"); }

std::string ParseValueName(const std::string& argument) {
  try {
    return AnsiFromUtf8(argument);
  } catch (const CodePageError& error) {
    throw ToolError("value name \"" + argument + "\": " + error.what());
  }
}

std::string ValueLabel(const KeyPath& key, const std::string& name) {
  return "value \"" + PrintableFromAnsi(name) + "\" of " + key.Printable();
}

// ---- import

ImportCounts ImportFile(const std::string& bytes, const Console& console) {
  ProgressBar bar(console);
  return ImportDocument(ReadRegFile(bytes), [&bar](size_t done, size_t total) { bar.Show(done, total); });
}

void Import(const std::string& file, const Console& console) {
  const bool standard_input = file == "-";
  const std::string name = standard_input ? "<stdin>" : file;
  const std::string bytes = standard_input ? ReadStream(console.in, name) : ReadFile(file);
  try {
    const ImportCounts counts = ImportFile(bytes, console);
    console.out << "keys: " << counts.keys_set << " set, " << counts.keys_deleted
                << " deleted; values: " << counts.values_set << " set, " << counts.values_deleted
                << " deleted\n";
  } catch (const RegSyntaxError& error) {
    throw MalformedFile(name, error.line(), error.what());
  }
}

void AddImport(CLI::App& group, Console& console) {
  CLI::App* verb =
      group.add_subcommand("import", "Apply a .reg file: all of it or, when it is malformed, nothing");
  auto file = std::make_shared<std::string>();
  verb->add_option("FILE", *file, "File in .reg form, of any of its encodings; - reads standard input")
      ->required();
  verb->footer("Example:\n  moxel registry import examples/configuration.reg");
  verb->callback([file, &console] { Import(*file, console); });
}

// ---- export

struct ExportOptions {
  std::string key;
  std::string output = "-";
  std::string format = "regedit5";
};

void Export(const ExportOptions& options, const Console& console) {
  const KeyPath key = ParseKeyArgument(options.key);
  const RegFormat format = options.format == "regedit4" ? RegFormat::kRegedit4 : RegFormat::kRegedit5;
  const std::optional<std::string> file = ExportTree(key, format);
  if (!file) ThrowNotFound("cannot export " + key.Printable());
  if (options.output == "-") {
    console.out << *file;
  } else {
    WriteFile(options.output, *file);
  }
}

void AddExport(CLI::App& group, Console& console) {
  CLI::App* verb = group.add_subcommand("export", "Write a key with all below it as .reg text");
  auto options = std::make_shared<ExportOptions>();
  verb->add_option("KEY", options->key, kKeyHelp);
  verb->add_option("-o,--output", options->output,
                   "File to write, replaced in one step; - is standard output")
      ->type_name("FILE")
      ->capture_default_str();
  verb->add_option("--format", options->format, "regedit5: UTF-16; regedit4: code page 1252")
      ->check(CLI::IsMember({"regedit4", "regedit5"}))
      ->capture_default_str();
  verb->footer("Example:\n  moxel registry export 'Domain\\Sales' -o sales.reg --format regedit4");
  verb->callback([options, &console] { Export(*options, console); });
}

// ---- query

struct QueryOptions {
  std::string key;
  std::string name;
  bool one_value = false;
  bool recursive = false;
  bool json = false;
};

nlohmann::ordered_json JsonValue(const RegistryValue& value) {
  return {{"name", Utf8FromAnsi(value.name)}, {"type", TypeName(value.data)}, {"data", JsonData(value.data)}};
}

nlohmann::ordered_json JsonKey(const RegistryKey& key) {
  nlohmann::ordered_json values = nlohmann::ordered_json::array();
  for (const RegistryValue& value : key.Values()) values.push_back(JsonValue(value));
  nlohmann::ordered_json subkeys = nlohmann::ordered_json::array();
  for (const std::string& name : key.SubkeyNames()) subkeys.push_back(Utf8FromAnsi(name));
  return {{"key", Utf8FromAnsi(key.path().FullName())}, {"values", values}, {"subkeys", subkeys}};
}

void PrintValue(const RegistryValue& value, const Console& console) {
  console.out << "    " << (value.name.empty() ? "(Default)" : PrintableFromAnsi(value.name)) << "    "
              << TypeName(value.data) << "    " << PrintableData(value.data) << '\n';
}

void PrintKey(const RegistryKey& key, const Console& console) {
  console.out << key.path().Printable() << '\n';
  for (const RegistryValue& value : key.Values()) PrintValue(value, console);
}

void QueryValue(const RegistryKey& key, const QueryOptions& options, const Console& console) {
  const std::string name = ParseValueName(options.name);
  for (const RegistryValue& value : key.Values()) {
    if (!SameName(value.name, name)) continue;
    if (options.json) return PrintJson(JsonValue(value), console);
    console.out << key.path().Printable() << '\n';
    return PrintValue(value, console);
  }
  ThrowNotFound(ValueLabel(key.path(), name));
}

void QueryKey(const RegistryKey& key, const QueryOptions& options, const Console& console) {
  if (options.json) return PrintJson(JsonKey(key), console);
  PrintKey(key, console);
  const std::vector<std::string> subkeys = key.SubkeyNames();
  if (!subkeys.empty()) console.out << '\n';
  for (const std::string& name : subkeys) console.out << key.path().Child(name).Printable() << '\n';
}

void QueryTree(const KeyPath& key, const QueryOptions& options, const Console& console) {
  nlohmann::ordered_json keys = nlohmann::ordered_json::array();
  bool first = true;
  WalkTree(key, [&](const RegistryKey& visited) {
    if (options.json) return keys.push_back(JsonKey(visited));
    if (!std::exchange(first, false)) console.out << '\n';
    PrintKey(visited, console);
  });
  if (options.json) PrintJson(keys, console);
}

void Query(const QueryOptions& options, const Console& console) {
  const KeyPath path = StoredPath(ParseKeyArgument(options.key));
  const std::optional<RegistryKey> key = RegistryKey::Open(path, KEY_READ);
  if (!key) ThrowNotFound(path.Printable());
  if (options.one_value) return QueryValue(*key, options, console);
  if (options.recursive) return QueryTree(path, options, console);
  QueryKey(*key, options, console);
}

void AddQuery(CLI::App& group, Console& console) {
  CLI::App* verb = group.add_subcommand("query", "Print the values and the subkeys of a key");
  auto options = std::make_shared<QueryOptions>();
  verb->add_option("KEY", options->key, kKeyHelp);
  CLI::Option* name =
      verb->add_option("-v,--value", options->name, "Print only this value: its name")->type_name("NAME");
  verb->add_flag("-s,--recursive", options->recursive, "Print all keys below, too")->excludes(name);
  verb->add_flag("--json", options->json, "Print JSON: one object, with -s a list of them");
  verb->footer("Example:\n  moxel registry query 'Scenarios\\Night' -s");
  verb->callback([options, name, &console] {
    options->one_value = name->count() > 0;
    Query(*options, console);
  });
}

// ---- set

struct SetOptions {
  std::string key;
  std::string name;
  std::string type = "REG_SZ";
  std::string data;
};

void Set(const SetOptions& options) {
  const KeyPath key = ParseKeyArgument(options.key);
  const std::string name = ParseValueName(options.name);
  const RegData data = ParseData(options.type, options.data);
  RegistryKey::Create(key).SetValue(name, data);
}

void AddSet(CLI::App& group) {
  CLI::App* verb = group.add_subcommand("set", "Set a value; missing keys are created");
  auto options = std::make_shared<SetOptions>();
  verb->add_option("KEY", options->key, kKeyHelp)->required();
  verb->add_option(
          "DATA", options->data,
          "REG_MULTI_SZ: texts separated by \\0; REG_BINARY: hexadecimal digits; numbers: decimal or 0x...; "
          "put -- before data that begins with a dash and a letter")
      ->required();
  verb->add_option("-v,--value", options->name, kNameHelp)->type_name("NAME")->capture_default_str();
  verb->add_option("-t,--type", options->type, "Type of the data, in any letter case")
      ->type_name('{' + std::string(kTypeNames) + '}')
      ->capture_default_str();
  verb->footer("Example:\n  moxel registry set Configuration -v Lang -t REG_DWORD 10000");
  verb->callback([options] { Set(*options); });
}

// ---- delete

struct DeleteOptions {
  std::string key;
  std::string name;
  bool one_value = false;
  bool force = false;
};

void DeleteValue(const KeyPath& path, const std::string& name) {
  const std::optional<RegistryKey> key = RegistryKey::Open(path, KEY_READ | KEY_WRITE);
  if (!key || !key->DeleteValue(name)) ThrowNotFound("cannot delete " + ValueLabel(path, name));
}

void DeleteKey(const KeyPath& path, bool force) {
  if (path.path.empty()) throw ToolError::Usage("cannot delete " + path.Printable() + ": it is a hive");
  if (!RegistryKey::Open(path, KEY_READ)) ThrowNotFound("cannot delete " + path.Printable());
  RegistryTransaction transaction;
  const std::optional<RegistryKey> key = RegistryKey::Open(path, KEY_READ);
  if (!force && key && key->FirstSubkeyName()) {
    throw ToolError("cannot delete " + path.Printable() +
                    ": it has subkeys, which only --force deletes with it");
  }
  if (DeleteTree(path) == 0) ThrowNotFound("cannot delete " + path.Printable());
  transaction.Commit();
}

void Delete(const DeleteOptions& options) {
  const KeyPath path = ParseKeyArgument(options.key);
  if (options.one_value) {
    DeleteValue(path, ParseValueName(options.name));
  } else {
    DeleteKey(path, options.force);
  }
}

void AddDelete(CLI::App& group) {
  CLI::App* verb = group.add_subcommand("delete", "Delete a value, or a key");
  auto options = std::make_shared<DeleteOptions>();
  verb->add_option("KEY", options->key, kKeyHelp)->required();
  CLI::Option* name = verb->add_option("-v,--value", options->name, kNameHelp)->type_name("NAME");
  verb->add_flag("-f,--force", options->force, "Delete a key's subkeys with it");
  verb->footer("Example:\n  moxel registry delete 'Domain\\Sales' --force");
  verb->callback([options, name] {
    options->one_value = name->count() > 0;
    Delete(*options);
  });
}

// ---- backup and restore

void AddBackup(CLI::App& group) {
  CLI::App* verb =
      group.add_subcommand("backup", "Copy the whole registry into a file, also while it is in use");
  auto file = std::make_shared<std::string>();
  verb->add_option("FILE", *file, "File to write; one that is there is replaced once the copy is whole")
      ->required();
  verb->footer("Example:\n  moxel registry backup /var/backups/moxel.db");
  verb->callback([file] {
    const LSTATUS status = RegFileBackup(file->c_str());
    if (status != ERROR_SUCCESS) throw ToolError::Registry("cannot back up to " + *file, status);
  });
}

void AddRestore(CLI::App& group) {
  CLI::App* verb =
      group.add_subcommand("restore", "Make the registry what a backup holds, also while it is in use");
  auto file = std::make_shared<std::string>();
  verb->add_option("FILE", *file, "Backup to restore; it is checked first")->required();
  verb->footer("Example:\n  moxel registry restore /var/backups/moxel.db");
  verb->callback([file] {
    const LSTATUS status = RegFileRestore(file->c_str());
    if (status != ERROR_SUCCESS) throw ToolError::Registry("cannot restore " + *file, status);
  });
}

// ---- check

void Check(const Console& console) {
  const LSTATUS status = RegFileCheck();
  if (status != ERROR_SUCCESS) throw ToolError::Registry("registry check", status);
  console.out << RegFilePath() << ": sound\n";
}

void AddCheck(CLI::App& group, Console& console) {
  CLI::App* verb = group.add_subcommand("check", "Check the whole registry file");
  verb->footer("Example:\n  moxel registry check --registry /var/backups/registry.db");
  verb->callback([&console] { Check(console); });
}

}  // namespace

void AddRegistryCommands(CLI::App& app, Console& console) {
  CLI::App* group = app.add_subcommand("registry", "Import, export, read and change the registry");
  RequireVerb(*group);
  group->footer("Example:\n  moxel registry export -o backup.reg");
  AddImport(*group, console);
  AddExport(*group, console);
  AddQuery(*group, console);
  AddSet(*group);
  AddDelete(*group);
  AddBackup(*group);
  AddRestore(*group);
  AddCheck(*group, console);
}

}  // namespace moxel::tool
