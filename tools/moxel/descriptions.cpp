#include "moxel/descriptions.h"

#include <algorithm>
#include <initializer_list>
#include <set>

#include "moxel/ansi_text.h"
#include "moxel/enumerations.h"

namespace moxel::tool {
namespace {

struct DataType {
  std::int16_t number;
  const char* name;
};

constexpr DataType kDataTypes[] = {
    {MXVariableDataType_Alpha, "text"},      {MXVariableDataType_Num, "number"},
    {MXVariableDataType_Boolean, "boolean"}, {MXVariableDataType_Password, "password"},
    {MXVariableDataType_Date, "date"},       {MXVariableDataType_Real, "real"},
};

constexpr std::initializer_list<const char*> kScenarioStates = {"not processed", "processing", "pause",
                                                                "with error"};
constexpr std::initializer_list<const char*> kTaskStates = {"not processed", "processing", "processed",
                                                            "with error", "retry"};

Json JsonOf(const Variant& value) {
  switch (value.vt) {
    case VT_EMPTY:
    case VT_NULL: return nullptr;
    case VT_I2:
    case VT_I4: return value.ToI4();
    case VT_R8: return value.ToR8();
    default: return TextOf(value);
  }
}

Json JsonProperty(const Object& object, std::u16string name) {
  return JsonOf(GetProperty(object.get(), std::move(name)));
}

// A property read from the registry at every call, which fails on what is no number there: one such value
// must not hide all others.
Json LiveProperty(const Object& object, std::u16string name) {
  try {
    return JsonProperty(object, std::move(name));
  } catch (const AutomationError&) {
    return "unreadable";
  }
}

Json StateOf(const Object& object, std::initializer_list<const char*> words) {
  Json state = LiveProperty(object, u"State");
  if (!state.is_number()) return state;
  const auto number = state.get<int>();
  if (number < 0 || number >= static_cast<int>(words.size())) return state;
  return words.begin()[number];
}

Json DescribeTask(const Object& task) {
  return {{"name", NameOf(task)},
          {"state", StateOf(task, kTaskStates)},
          {"type", JsonProperty(task, u"TypeTask")},
          {"lastRun", JsonProperty(task, u"LastExe")},
          {"actions", JsonProperty(task, u"StatusAct")}};
}

Json DescribeUsersOf(const Object& scenario) {
  Json users = Json::array();
  for (const Object& user : ObjectsOf(ObjectProperty(scenario, u"Utilisateurs")))
    users.push_back({{"name", NameOf(user)}, {"permission", JsonProperty(user, u"Permission")}});
  return users;
}

void Mask(Json& value) {
  if (value.is_null()) return;
  const std::string text = value.is_string() ? value.get<std::string>() : value.dump();
  value = std::string(FromUtf8(text).size(), '*');
}

}  // namespace

Style StyleOfState(const std::string& state) {
  if (state == "with error" || state == "missing" || state == "unreadable") return Style::kFailed;
  if (state == "processed") return Style::kDone;
  return state == "processing" ? Style::kRunning : Style::kPlain;
}

Json DescribeUser(const Object& user) {
  return {{"name", NameOf(user)},
          {"permission", JsonProperty(user, u"Permission")},
          {"password", JsonProperty(user, u"Password")}};
}

KeyPath VariablesKeyOf(const char* owners, const std::string& owner) {
  return ProductRoot().Child(owners).Child(AnsiFromUtf8(owner)).Child("Var");
}

std::int16_t DataTypeOf(const std::string& name) {
  for (const DataType& data_type : kDataTypes)
    if (data_type.name == name) return data_type.number;
  throw ToolError::Usage("unknown data type " + name);
}

std::string DataTypeName(std::int16_t number) {
  for (const DataType& data_type : kDataTypes)
    if (data_type.number == number) return data_type.name;
  return std::to_string(number);
}

bool HandsOutInitialValue(const Object& variable) {
  return GetProperty(variable.get(), u"DataType").ToI2() != MXVariableDataType_Real ||
         GetProperty(variable.get(), u"VarType").Equals(u"V");
}

Variant InitialValueOf(const Object& variable, const KeyPath& variables) {
  if (HandsOutInitialValue(variable)) return GetProperty(variable.get(), u"Init");
  const auto key = RegistryKey::Open(variables.Child(AnsiFromUtf8(NameOf(variable))), KEY_QUERY_VALUE);
  if (!key) return {};
  for (const RegistryValue& value : key->Values()) {
    if (!SameName(value.name, "Init") || value.data.type != REG_SZ) continue;
    return Utf16FromAnsi(std::string_view(value.data.bytes).substr(0, value.data.bytes.find('\0')));
  }
  return {};
}

Json DescribeVariable(const Object& variable, const KeyPath& variables) {
  return {{"name", NameOf(variable)},
          {"kind", GetProperty(variable.get(), u"VarType").Equals(u"C") ? "constant" : "variable"},
          {"dataType", DataTypeName(GetProperty(variable.get(), u"DataType").ToI2())},
          {"value", JsonProperty(variable, u"Value")},
          {"initialValue", JsonOf(InitialValueOf(variable, variables))}};
}

Json DescribeVariables(const Object& owner, const KeyPath& variables) {
  Json described = Json::array();
  for (const Object& variable : ObjectsOf(ObjectProperty(owner, u"Variables"))) {
    Json& each = described.emplace_back(DescribeVariable(variable, variables));
    if (each["dataType"] != DataTypeName(MXVariableDataType_Password)) continue;
    Mask(each["value"]);
    Mask(each["initialValue"]);
  }
  return described;
}

Json DescribeTasks(const Object& scenario) {
  const Object tasks = ObjectProperty(scenario, u"Traitements");
  Json described = Json::array();
  std::set<std::string> placed;
  for (const Variant& entry : Elements(ObjectProperty(scenario, u"TraitementsSelected").get())) {
    Json task = {{"position", described.size() + 1}};
    if (const Object found = Find(tasks, TextOf(entry))) {
      task.update(DescribeTask(found));
      placed.insert(NameOf(found));
    } else {
      task.update({{"name", TextOf(entry)}, {"state", "missing"}});
    }
    described.push_back(std::move(task));
  }
  for (const Object& task : ObjectsOf(tasks)) {
    if (placed.count(NameOf(task)) > 0) continue;
    Json each = {{"position", nullptr}};
    each.update(DescribeTask(task));
    described.push_back(std::move(each));
  }
  return described;
}

Json SummarizeScenario(const PlacedScenario& placed) {
  return {{"name", NameOf(placed.scenario)},
          {"domain", placed.domain},
          {"state", StateOf(placed.scenario, kScenarioStates)},
          {"mode", JsonProperty(placed.scenario, u"Mode")}};
}

Json DescribeScenario(const PlacedScenario& placed) {
  const Object& scenario = placed.scenario;
  Json described = SummarizeScenario(placed);
  described["directory"] = JsonProperty(scenario, u"Directory");
  described["useSocket"] = GetProperty(scenario.get(), u"UseSocket").ToI2() != 0;
  described["port"] = JsonProperty(scenario, u"Port");
  described["hwnd"] = LiveProperty(scenario, u"Hwnd");
  described["lastRun"] = JsonProperty(scenario, u"LastExe");
  described["users"] = DescribeUsersOf(scenario);
  described["variables"] = DescribeVariables(scenario, VariablesKeyOf("Scenarios", NameOf(scenario)));
  described["tasks"] = DescribeTasks(scenario);
  return described;
}

Json DescribeDomain(const ObjectModel& model, const Object& domain) {
  Json described = {{"name", NameOf(domain)}, {"comment", JsonProperty(domain, u"Comment")}};
  described["variables"] = DescribeVariables(domain, VariablesKeyOf("Domain", NameOf(domain)));
  described["scenarios"] = Json::array();
  for (const PlacedScenario& placed : model.ScenariosOfDomain(domain))
    described["scenarios"].push_back(SummarizeScenario(placed));
  return described;
}

}  // namespace moxel::tool
