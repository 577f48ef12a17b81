#include "variables/variable.h"

#include <algorithm>

#include "errors/handle_error.h"
#include "errors/messages.h"
#include "registry/enumeration.h"
#include "registry/schema.h"
#include "registry/scrambling.h"
#include "registry/store.h"
#include "variables/date_time.h"
#include "variables/owner.h"

namespace moxel {
namespace {

constexpr std::u16string_view kVariable = u"V";
constexpr std::u16string_view kConstant = u"C";
constexpr std::u16string_view kDataTypeSource = u"Variable:DataType Property Let";
constexpr std::u16string_view kInitSource = u"Variable:Init Property Let";
constexpr std::u16string_view kVarTypeSource = u"Variable:VarType Property Let";
constexpr std::u16string_view kValueSource = u"Variable:Value Property Let";

std::u16string VariablesOfDomain(std::u16string_view name) {
  return schema::Path(schema::kDomain, name, schema::kVar, u"");
}

std::u16string VariablesOfScenario(std::u16string_view name) {
  return schema::Path(schema::kScenarios, name, schema::kVar, u"");
}

// Where the owner's variables lie. An object that is neither a domain nor a scenario, or none, gives the
// empty path: its variables lie directly under the product's root, as they always have.
std::u16string OwnerPath(IDispatch* owner) {
  std::u16string path;
  if (IsDomain(owner)) path = VariablesOfDomain(KeyOf(owner));
  if (IsScenario(owner)) path = VariablesOfScenario(KeyOf(owner));
  return path;
}

// The same for an owner given by its name and a suffix of two characters.
std::u16string OwnerPath(std::u16string_view suffixed_name) {
  std::u16string_view name =
      suffixed_name.substr(0, suffixed_name.size() - std::min<std::size_t>(suffixed_name.size(), 2));
  if (suffixed_name.ends_with(u"_d")) return VariablesOfDomain(name);
  if (suffixed_name.ends_with(u"_s")) return VariablesOfScenario(name);
  return {};
}

// The words for true and false become 1 and 0; any other text stays. False when there is nothing to accept,
// which shows only after the words were looked up.
bool AcceptBoolean(Variant& value) {
  auto reads = [&](std::int32_t message) { return value.ToText() == LoadMessage(message); };
  if (reads(kMessageTrue) || reads(kMessageVrai)) value = std::int16_t{1};
  if (reads(kMessageFalse) || reads(kMessageFaux)) value = std::int16_t{0};
  return !value.Equals(u"");
}

bool AcceptDate(const Variant& value) { return !value.Equals(u"") && IsDateTimeText(value.ToText()); }

Variant ZeroIfEmpty(const Variant& value) { return value.Equals(u"") ? Variant(std::int16_t{0}) : value; }

void WriteText(std::u16string_view path, std::u16string_view name, const Variant& value) {
  RegWriteValue(path, name, REG_SZ, value.ToText());
}

void WriteNumber(std::u16string_view path, std::u16string_view name, const Variant& value) {
  RegWriteValue(path, name, REG_DWORD, Variant(value.ToI4()).ToText());
}

void WriteScrambled(std::u16string_view path, std::u16string_view name, Variant value) {
  ScrambleText(value);
  WriteText(path, name, value);
}

// A value in the stored form of its data type; nothing for an unknown one.
void WriteValue(std::u16string_view path, std::int16_t data_type, const Variant& value) {
  switch (data_type) {
    case MXVariableDataType_Alpha:
    case MXVariableDataType_Date: WriteText(path, schema::kValue, value); break;
    case MXVariableDataType_Num: WriteNumber(path, schema::kValue, value); break;
    case MXVariableDataType_Boolean:
      RegWriteValue(path, schema::kValue, REG_SZ, value.ToText().starts_with(u'0') ? u"0" : u"1");
      break;
    case MXVariableDataType_Password: WriteScrambled(path, schema::kValue, value); break;
    case MXVariableDataType_Real: RegWriteRawValue(path, schema::kValue, value.ToR8()); break;
    default: break;
  }
}

// An initial value likewise. The numbers of a constant are kept as text, and a Boolean follows a rule of its
// own: only "0" and "1" are kept.
void WriteInit(std::u16string_view path, bool is_variable, std::int16_t data_type, const Variant& init) {
  switch (data_type) {
    case MXVariableDataType_Alpha:
    case MXVariableDataType_Date: WriteText(path, schema::kInit, init); break;
    case MXVariableDataType_Num:
      is_variable ? WriteNumber(path, schema::kInit, ZeroIfEmpty(init))
                  : WriteText(path, schema::kInit, ZeroIfEmpty(init));
      break;
    case MXVariableDataType_Boolean: {
      std::u16string text = init.ToText();
      bool kept = text.starts_with(u'0') || text.starts_with(u'1');
      RegWriteValue(path, schema::kInit, REG_SZ, kept ? text.substr(0, 1) : u"");
      break;
    }
    case MXVariableDataType_Password: WriteScrambled(path, schema::kInit, init); break;
    case MXVariableDataType_Real:
      if (is_variable)
        RegWriteRawValue(path, schema::kInit, ZeroIfEmpty(init).ToR8());
      else
        WriteText(path, schema::kInit, ZeroIfEmpty(init));
      break;
    default: break;
  }
}

bool IsKnownDataType(std::int16_t data_type) {
  return data_type >= MXVariableDataType_Alpha && data_type <= MXVariableDataType_Real && data_type != 5;
}

}  // namespace

void Variable::SetDataType(std::int16_t wDataType) {
  if (!IsKnownDataType(wDataType)) HandleError(lMXVariableError_BadDataType, kDataTypeSource);
  data_type_ = wDataType;
}

void Variable::SetVarType(const Variant& wVarType) {
  bool accepted = wVarType.is_null() || wVarType.Equals(kConstant) || wVarType.Equals(kVariable);
  if (!accepted) HandleError(lMXVariableError_BadVarType, kVarTypeSource);
  var_type_ = wVarType;
}

void Variable::SetValue(const Variant& wValue) {
  Variant value = wValue;
  bool accepted = true;
  switch (data_type_) {
    case MXVariableDataType_Num: accepted = !value.Equals(u"") && value.IsNumeric(); break;
    case MXVariableDataType_Date: accepted = AcceptDate(value); break;
    case MXVariableDataType_Boolean: accepted = AcceptBoolean(value); break;
    default: break;  // a Real value is not tested, although its initial value is
  }
  if (!accepted) HandleError(lMXVariableError_IllegalValue, kValueSource);
  value_ = std::move(value);
}

void Variable::SetInit(const Variant& wInit) {
  Variant init = wInit;
  if (var_type_.Equals(kVariable)) {
    switch (data_type_) {
      case MXVariableDataType_Num:
      case MXVariableDataType_Real:
        init = ZeroIfEmpty(init);
        if (!init.IsNumeric()) HandleError(lMXVariableError_IllegalInitValue, kInitSource);
        break;
      case MXVariableDataType_Date:
        if (!AcceptDate(init)) HandleError(lMXVariableError_IllegalInitValue, kInitSource);
        break;
      case MXVariableDataType_Boolean:
        if (!AcceptBoolean(init)) HandleError(lMXVariableError_InitValueRequired, kInitSource);
        break;
      default: break;
    }
  }
  init_ = std::move(init);
}

Status Variable::Update(const Variant& wVarType, std::int16_t wDataType, const Variant& wValue,
                        const Variant& wInit, IDispatch* wObj) {
  return UpdateUnder(OwnerPath(wObj), wVarType, wDataType, wValue, wInit);
}

Status Variable::Update1(const Variant& wVarType, std::int16_t wDataType, const Variant& wValue,
                         const Variant& wInit, IDispatch* wObj, const Variant& wDomScen) {
  std::u16string path = wDomScen.is_missing() ? OwnerPath(wObj) : OwnerPath(wDomScen.ToText());
  return UpdateUnder(path, wVarType, wDataType, wValue, wInit);
}

Status Variable::UpdateUnder(const std::u16string& owner_path, const Variant& var_type,
                             std::int16_t data_type, const Variant& value, const Variant& init) {
  SetVarType(var_type);
  SetDataType(data_type);
  SetValue(value);
  SetInit(init);
  WriteVariable(owner_path + key, var_type, data_type, value_, init_);
  return VARIANT_TRUE;
}

Status Variable::Initialize(IDispatch* wObj) {
  try {
    ResetUnder(OwnerPath(wObj));
  } catch (const AutomationError&) {
    HandleError(lMXVariableError_InitializationFail, u"Variable:Initialize");
  }
  return VARIANT_TRUE;
}

Status Variable::Initialize1(const Variant& wKey) {
  try {
    ResetUnder(wKey.ToText() + u"\\Var\\");
  } catch (const AutomationError&) {
    HandleError(lMXVariableError_InitializationFail, u"Variable:Initialize");
  }
  return VARIANT_TRUE;
}

void Variable::ResetUnder(const std::u16string& owner_path) {
  if (!var_type_.Equals(kVariable)) return;
  value_ = init_;
  WriteValue(owner_path + key, data_type_, value_);
}

Status Variable::Duplicate(const Variant& wVarName, IDispatch* wObj) {
  return WriteAsNew(OwnerPath(wObj) + wVarName.ToText(), u"Variable:Duplicate");
}

Status Variable::Validate(IDispatch* wObj) { return WriteAsNew(OwnerPath(wObj) + key, u"Variable:Validate"); }

Status Variable::WriteAsNew(const std::u16string& path, std::u16string_view source) const {
  if (KeyExists(path)) HandleError(lMXVariableError_VariableAlreadyExist, source);
  WriteVariable(path, var_type_, data_type_, value_, init_);
  return VARIANT_TRUE;
}

void Variable::WriteVariable(std::u16string_view wPath, const Variant& wVarType, std::int16_t wDataType,
                             const Variant& wValue, const Variant& wInit) {
  if (!IsKnownDataType(wDataType)) return;
  WriteValue(wPath, wDataType, wValue);
  WriteInit(wPath, wVarType.Equals(kVariable), wDataType, wInit);
  WriteNumber(wPath, schema::kType, wDataType);
  WriteText(wPath, schema::kVarType, wVarType);
}

}  // namespace moxel
