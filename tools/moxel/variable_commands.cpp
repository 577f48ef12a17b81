#include "moxel/variable_commands.h"

#include <memory>
#include <nlohmann/json.hpp>
#include <string>

#include "moxel/component_library.h"
#include "moxel/enumerations.h"
#include "moxel/late_bound.h"
#include "moxel/text.h"
#include "moxel/verbs.h"

namespace moxel::tool {
namespace {

struct GetOptions {
  std::string domain;
  std::string scenario;
  std::string variable;
  bool json = false;
};

Variant TextArgument(const std::string& argument) {
  if (!IsUtf8(argument)) throw ToolError("\"" + argument + "\" is not UTF-8");
  return Utf16FromUtf8(argument);
}

std::string TextOf(const Variant& value) { return Utf8FromUtf16(value.ToText()); }

nlohmann::json JsonOf(const Variant& value) {
  switch (value.vt) {
    case VT_EMPTY: return nullptr;
    case VT_I2:
    case VT_I4: return value.ToI4();
    case VT_R8: return value.ToR8();
    default: return TextOf(value);
  }
}

std::string DataTypeName(std::int16_t data_type) {
  switch (data_type) {
    case MXVariableDataType_Alpha: return "text";
    case MXVariableDataType_Num: return "number";
    case MXVariableDataType_Boolean: return "boolean";
    case MXVariableDataType_Password: return "password";
    case MXVariableDataType_Date: return "date";
    case MXVariableDataType_Real: return "real";
    default: return std::to_string(data_type);
  }
}

void Get(const GetOptions& options, const Console& console) {
  const bool of_domain = !options.domain.empty();
  const std::string owner =
      of_domain ? "domain \"" + options.domain + "\"" : "scenario \"" + options.scenario + "\"";
  const ComponentLibrary component = ComponentLibrary::Find();
  const ObjectPtr<IDispatch> root = component.Create(CLSID_RootVar);
  const Variant found = CallMethod(
      root.get(), u"RecupVariable",
      {TextArgument(options.domain), TextArgument(options.scenario), TextArgument(options.variable)});
  IDispatch* variable = found.vt == VT_DISPATCH ? found.pdispVal : nullptr;
  if (!variable) throw ToolError("variable \"" + options.variable + "\" of " + owner + ": not found");

  const Variant value = GetProperty(variable, u"Value");
  if (!options.json) {
    console.out << TextOf(value) << '\n';
    return;
  }
  const nlohmann::ordered_json description = {
      {"owner", of_domain ? "domain" : "scenario"},
      {"ownerName", of_domain ? options.domain : options.scenario},
      {"name", TextOf(GetProperty(variable, u"key"))},
      {"kind", GetProperty(variable, u"VarType").Equals(u"C") ? "constant" : "variable"},
      {"dataType", DataTypeName(GetProperty(variable, u"DataType").ToI2())},
      {"value", JsonOf(value)},
      {"initialValue", JsonOf(GetProperty(variable, u"Init"))},
  };
  console.out << description.dump(2) << '\n';
}

void AddGet(CLI::App& group, Console& console) {
  CLI::App* verb =
      group.add_subcommand("get", "Print the value of a variable; a password is printed in clear");
  auto options = std::make_shared<GetOptions>();
  CLI::Option_group* owner = verb->add_option_group("Owner");
  owner->add_option("--domain", options->domain, "Domain that owns the variable")->type_name("NAME");
  owner->add_option("--scenario", options->scenario, "Scenario that owns the variable")->type_name("NAME");
  owner->require_option(1);
  verb->add_option("VARIABLE", options->variable, "Name of the variable, in its exact letter case")
      ->required();
  verb->add_flag("--json", options->json, "Print the whole variable as JSON");
  verb->footer("Example:\n  moxel variable get --domain Sales Region");
  verb->callback([options, &console] { Get(*options, console); });
}

}  // namespace

void AddVariableCommands(CLI::App& app, Console& console) {
  CLI::App* group = app.add_subcommand("variable", "Read variables of domains and scenarios");
  RequireVerb(*group);
  group->footer("Example:\n  moxel variable get --scenario Night Greeting --json");
  AddGet(*group, console);
}

}  // namespace moxel::tool
