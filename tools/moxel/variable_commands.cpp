#include "moxel/variable_commands.h"

#include <memory>
#include <optional>
#include <string>

#include "moxel/descriptions.h"
#include "moxel/enumerations.h"
#include "moxel/password_input.h"
#include "moxel/verbs.h"

namespace moxel::tool {
namespace {

constexpr const char* kPasswordFooter =
    "The values of a password are asked for without echo, or read from standard input, one a line: the "
    "value, "
    "then the initial value.\n\nExample:\n  ";

struct Options {
  std::string domain;
  std::string scenario;
  std::string variable;
  std::string copy;
  std::optional<std::string> value;
  std::optional<std::string> initial_value;
  std::string kind;
  std::string type;
  bool password_stdin = false;
  bool json = false;

  bool of_domain() const { return !domain.empty(); }
  const std::string& owner_name() const { return of_domain() ? domain : scenario; }
  std::string owner() const { return Named(of_domain() ? "domain" : "scenario", owner_name()); }
};

// ---- The owner and its variables

class Owner {
 public:
  explicit Owner(const Options& options)
      : options_(options),
        object_(options.of_domain() ? model_.Domain(options.domain)
                                    : model_.Scenario(options.scenario).scenario),
        variables_(ObjectProperty(object_, u"Variables")),
        key_(VariablesKeyOf(options.of_domain() ? "Domain" : "Scenarios", NameOf(object_))) {}

  IDispatch* object() const { return object_.get(); }
  IDispatch* variables() const { return variables_.get(); }
  const KeyPath& key() const { return key_; }
  Json Describe() const { return DescribeVariables(object_, key_); }

  // Throws ToolError when there is none of the name that the options give.
  Object Variable() const {
    Object variable = Find(variables_, options_.variable);
    if (!variable) throw ToolError(Label() + ": not found");
    return variable;
  }

  // For messages.
  std::string Label() const { return Named("variable", options_.variable) + " of " + options_.owner(); }

 private:
  const Options& options_;
  ObjectModel model_;
  Object object_;
  Object variables_;
  KeyPath key_;
};

CLI::App* AddVerb(CLI::App& group, const char* name, const char* help, const std::string& footer,
                  Options& options) {
  CLI::App* verb = group.add_subcommand(name, help);
  CLI::Option_group* owner = verb->add_option_group("Owner");
  owner->add_option("--domain", options.domain, "Domain that owns the variable")->type_name("DOMAIN");
  owner->add_option("--scenario", options.scenario, "Scenario that owns the variable")->type_name("SCENARIO");
  owner->require_option(1);
  verb->footer(footer);
  return verb;
}

void AddName(CLI::App* verb, Options& options, const char* help = "Name of the variable") {
  verb->add_option("VARIABLE", options.variable, help)->required();
}

// ---- list, get

void List(const Options& options, const Console& console) {
  const Json variables = Owner(options).Describe();
  if (options.json) return PrintJson(variables, console);
  PrintTable(kVariableColumns, variables, console);
}

// The component finds the variable without loading anything else.
void Get(const Options& options, const Console& console) {
  const ComponentLibrary component = FindComponent();
  const Object root = component.Create(CLSID_RootVar);
  const Object variable = ObjectOf(CallMethod(
      root.get(), u"RecupVariable",
      {TextArgument(options.domain), TextArgument(options.scenario), TextArgument(options.variable)}));
  if (!variable)
    throw ToolError(Named("variable", options.variable) + " of " + options.owner() + ": not found");
  if (!options.json) {
    console.out << TextProperty(variable.get(), u"Value") << '\n';
    return;
  }
  Json description = {{"owner", options.of_domain() ? "domain" : "scenario"},
                      {"ownerName", options.owner_name()}};
  description.update(DescribeVariable(
      variable, VariablesKeyOf(options.of_domain() ? "Domain" : "Scenarios", options.owner_name())));
  PrintJson(description, console);
}

void AddQueries(CLI::App& group, Console& console) {
  auto options = std::make_shared<Options>();
  CLI::App* list = AddVerb(group, "list", "List the variables of an owner, passwords masked",
                           "Example:\n  moxel variable list --domain Sales", *options);
  list->add_flag("--json", options->json, "Print the list as JSON");
  list->callback([options, &console] { List(*options, console); });

  CLI::App* get = AddVerb(group, "get", "Print the value of a variable; a password is printed in clear",
                          "Example:\n  moxel variable get --domain Sales Region", *options);
  AddName(get, *options, "Name of the variable, in its exact letter case");
  get->add_flag("--json", options->json, "Print the whole variable as JSON");
  get->callback([options, &console] { Get(*options, console); });
}

// ---- create, set

// What the component takes to create or change a variable.
struct Contents {
  Variant kind;
  std::int16_t data_type = MXVariableDataType_Alpha;
  Variant value;
  Variant initial_value;
};

void RequireNoPasswordArgument(const Options& options) {
  if (options.value || options.initial_value)
    throw ToolError::Usage(
        "a password is never an argument: it is asked for, or read from standard input, one a line");
}

// Overwrites what the options give.
void Apply(const Options& options, Contents& contents, const Console& console) {
  if (!options.kind.empty()) contents.kind = options.kind == "constant" ? u"C" : u"V";
  if (!options.type.empty()) contents.data_type = DataTypeOf(options.type);
  if (contents.data_type != MXVariableDataType_Password) {
    if (options.value) contents.value = StoredArgument(*options.value);
    if (options.initial_value) contents.initial_value = StoredArgument(*options.initial_value);
    return;
  }
  RequireNoPasswordArgument(options);
  PasswordInput input(console, options.password_stdin);
  contents.value = input.Ask("Value");
  if (std::optional<Variant> initial_value = input.AskIfAny("Initial value (empty: as it is)"))
    contents.initial_value = *std::move(initial_value);
}

void Create(const Options& options, const Console& console) {
  const Owner owner(options);
  Contents contents{u"V", MXVariableDataType_Alpha, u"", u""};
  Apply(options, contents, console);
  Change([&] {
    CallMethod(owner.variables(), u"NewVariable",
               {StoredArgument(options.variable), contents.kind, contents.data_type, contents.value,
                contents.initial_value, owner.object()});
  });
}

Contents ContentsOf(const Object& variable, const Owner& owner) {
  return {GetProperty(variable.get(), u"VarType"), GetProperty(variable.get(), u"DataType").ToI2(),
          GetProperty(variable.get(), u"Value"), InitialValueOf(variable, owner.key())};
}

void Write(const Contents& contents, const Object& variable, const Owner& owner) {
  CallMethod(variable.get(), u"Update",
             {contents.kind, contents.data_type, contents.value, contents.initial_value, owner.object()});
}

// The values of a password must not become those of a text by a mere change of type.
void RequireNewValues(const Options& options) {
  if (!options.value || !options.initial_value)
    throw ToolError::Usage("a password becomes another type only with a new value and a new initial value");
}

void Set(const Options& options, const Console& console) {
  const Owner owner(options);
  const Object variable = owner.Variable();
  Contents contents = ContentsOf(variable, owner);
  const bool was_password = contents.data_type == MXVariableDataType_Password;
  const bool nothing_given =
      !options.value && !options.initial_value && options.kind.empty() && options.type.empty();
  if (!was_password && nothing_given) throw ToolError::Usage("nothing to change: give a value or an option");
  Apply(options, contents, console);
  if (was_password && contents.data_type != MXVariableDataType_Password) RequireNewValues(options);
  Change([&] { Write(contents, variable, owner); });
}

void AddContents(CLI::App* verb, Options& options) {
  verb->add_option("VALUE,--value", options.value, "Value, but of a password");
  verb->add_option("--init", options.initial_value, "Initial value, but of a password")->type_name("VALUE");
  verb->add_option("--kind", options.kind, "variable: reset with its owner; constant: never")
      ->check(CLI::IsMember({"variable", "constant"}));
  verb->add_option("--type", options.type, "Data type")
      ->check(CLI::IsMember({"text", "number", "boolean", "password", "date", "real"}));
  verb->add_flag("--password-stdin", options.password_stdin,
                 "Read the values of a password from standard input, also from a terminal");
}

void AddWriters(CLI::App& group, Console& console) {
  auto options = std::make_shared<Options>();
  CLI::App* create = AddVerb(
      group, "create", "Create a variable: by default an empty text that is reset with its owner",
      kPasswordFooter + std::string("moxel variable create --domain Sales Copies 3 --type number --init 1"),
      *options);
  create->add_option("NAME", options->variable, "Name of the new variable")->required();
  AddContents(create, *options);
  create->callback([options, &console] { Create(*options, console); });

  CLI::App* set =
      AddVerb(group, "set", "Change a variable; what is not given stays as it is",
              kPasswordFooter + std::string("moxel variable set --domain Sales Region Bretagne"), *options);
  AddName(set, *options);
  AddContents(set, *options);
  set->callback([options, &console] { Set(*options, console); });
}

// ---- reset, duplicate, delete

// The component does nothing to a constant and answers success.
void Reset(const Options& options) {
  const Owner owner(options);
  const Object variable = owner.Variable();
  if (!GetProperty(variable.get(), u"VarType").Equals(u"V"))
    throw ToolError(owner.Label() + ": a constant is never reset");
  Change([&] { CallMethod(variable.get(), u"Initialize", {owner.object()}); });
}

// The component copies what it holds in memory, which is not the initial value where it does not hand that
// out; writing the variable as it is stored puts memory right.
void Duplicate(const Options& options) {
  const Owner owner(options);
  const Object variable = owner.Variable();
  const Variant copy = StoredArgument(options.copy);
  Change([&] {
    if (!HandsOutInitialValue(variable)) Write(ContentsOf(variable, owner), variable, owner);
    CallMethod(variable.get(), u"Duplicate", {copy, owner.object()});
  });
}

void Delete(const Options& options) {
  const Owner owner(options);
  const Object variable = owner.Variable();
  Change([&] {
    const Variant deleted =
        CallMethod(owner.variables(), u"DeleteVariable", {variable.get(), owner.object()});
    if (deleted.ToI2() == 0) throw ToolError(owner.Label() + ": cannot be deleted");
  });
}

void AddOthers(CLI::App& group) {
  auto options = std::make_shared<Options>();
  CLI::App* reset = AddVerb(group, "reset", "Give a variable its initial value",
                            "Example:\n  moxel variable reset --scenario Night Attempts", *options);
  AddName(reset, *options);
  reset->callback([options] { Reset(*options); });

  CLI::App* duplicate =
      AddVerb(group, "duplicate", "Copy a variable under another name",
              "Example:\n  moxel variable duplicate --domain Sales Region Region2", *options);
  AddName(duplicate, *options);
  duplicate->add_option("COPY", options->copy, "Name of the copy")->required();
  duplicate->callback([options] { Duplicate(*options); });

  CLI::App* erase = AddVerb(group, "delete", "Delete a variable",
                            "Example:\n  moxel variable delete --domain Sales Signature", *options);
  AddName(erase, *options);
  erase->callback([options] { Delete(*options); });
}

}  // namespace

void AddVariableCommands(CLI::App& app, Console& console) {
  CLI::App* group = app.add_subcommand("variable", "Read and change variables of domains and scenarios");
  RequireVerb(*group);
  group->footer("Example:\n  moxel variable get --scenario Night Greeting --json");
  AddQueries(*group, console);
  AddWriters(*group, console);
  AddOthers(*group);
}

}  // namespace moxel::tool
