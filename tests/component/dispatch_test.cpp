#include "component/dispatch.h"

#include <gtest/gtest.h>

#include "moxel/component.h"
#include "root/root_var.h"
#include "tests/component/calls.h"
#include "variables/variable.h"

namespace moxel::test {
namespace {

class DispatchTest : public ProductTest {
 protected:
  // Writes a variable without an owner through the late-bound interface.
  Reply Update(const VARIANT& value, const VARIANT& init = Variant(u"")) {
    return Call(object(), kUpdate, DISPATCH_METHOD,
                {Variant(u"V"), Variant(std::int16_t{0}), value, init, Variant(nullptr_object_)});
  }

  IDispatch* object() const { return variable_.get(); }

  IDispatch* nullptr_object_ = nullptr;
  ObjectPtr<Variable> variable_ = Variable::Create();
  ObjectPtr<RootVar> root_var_ = RootVar::Create();
};

TEST_F(DispatchTest, NamesAreFoundInAnyLetterCase) {
  const struct {
    std::vector<std::u16string> names;
    HRESULT result;
    std::vector<DISPID> ids;
  } cases[] = {
      {{u"key"}, S_OK, {kKey}},
      {{u"KEY"}, S_OK, {kKey}},
      {{u"duplicate", u"wObj", u"wVarName"}, S_OK, {kDuplicate, 1, 0}},
      {{u"Update"}, S_OK, {kUpdate}},
      {{u"UPDATE1", u"WDOMSCEN", u"wvartype"}, S_OK, {kUpdate1, 5, 0}},
      {{u"Initialize"}, S_OK, {kInitialize}},
      {{u"Initialize1", u"wKey"}, S_OK, {kInitialize1, 0}},
      {{u"VarType"}, S_OK, {kVarType}},
      {{u"Value"}, S_OK, {kValue}},
      {{u"Init"}, S_OK, {kInit}},
      {{u"DataType"}, S_OK, {kDataType}},
      {{u"Update", u"wDomScen", u"wInit"}, DISP_E_UNKNOWNNAME, {kUpdate, DISPID_UNKNOWN, 3}},
      {{u"SetValue"}, DISP_E_UNKNOWNNAME, {DISPID_UNKNOWN}},
      {{u"Validate", u"wObj"}, DISP_E_UNKNOWNNAME, {DISPID_UNKNOWN, DISPID_UNKNOWN}},
      {{u""}, DISP_E_UNKNOWNNAME, {DISPID_UNKNOWN}},
      {{u"Valu\u00C9"}, DISP_E_UNKNOWNNAME, {DISPID_UNKNOWN}},
  };
  for (auto c : cases) {
    std::vector<LPOLESTR> names;
    for (std::u16string& name : c.names) names.push_back(name.data());
    std::vector<DISPID> ids(names.size(), 1234);
    EXPECT_EQ(
        object()->GetIDsOfNames(GUID_NULL, names.data(), static_cast<UINT>(names.size()), 0, ids.data()),
        c.result);
    EXPECT_EQ(ids, c.ids) << Shown(Variant(c.names[0]));
  }
}

TEST_F(DispatchTest, LookUpsThatMakeNoSense) {
  char16_t key[] = u"key";
  LPOLESTR names[] = {key, nullptr};
  LPOLESTR nameless[] = {nullptr};
  DISPID ids[2];
  EXPECT_EQ(object()->GetIDsOfNames(IID_IDispatch, names, 1, 0, ids), DISP_E_UNKNOWNINTERFACE);
  EXPECT_EQ(object()->GetIDsOfNames(GUID_NULL, nullptr, 1, 0, ids), E_POINTER);
  EXPECT_EQ(object()->GetIDsOfNames(GUID_NULL, names, 1, 0, nullptr), E_POINTER);
  EXPECT_EQ(object()->GetIDsOfNames(GUID_NULL, nameless, 1, 0, ids), E_POINTER);
  EXPECT_EQ(object()->GetIDsOfNames(GUID_NULL, names, 2, 0, ids), DISP_E_UNKNOWNNAME);
  EXPECT_EQ(ids[0], kKey);
  EXPECT_EQ(ids[1], DISPID_UNKNOWN);
  EXPECT_EQ(object()->GetIDsOfNames(GUID_NULL, nullptr, 0, 0, nullptr), S_OK);
}

TEST_F(DispatchTest, ArgumentsByPositionAndByNameInAnyOrder) {
  const Variant kind(u"C"), type(std::int16_t{0}), value(u"value"), init(u"init"), owner(nullptr_object_),
      domain(u"D_d");
  const struct {
    std::string key;
    DISPID member;
    std::vector<VARIANT> positional;
    Named named;
  } cases[] = {
      {"A", kUpdate, {kind, type, value, init, owner}, {}},
      {"B", kUpdate, {}, {{4, owner}, {0, kind}, {3, init}, {2, value}, {1, type}}},
      {"C", kUpdate, {kind, type}, {{3, init}, {4, owner}, {2, value}}},
      {"D", kUpdate1, {kind, type, value, init, owner}, {}},
      {"E", kUpdate1, {kind, type, value, init, owner, Variant::Missing()}, {}},
      {"Domain\\D\\Var\\F", kUpdate1, {kind, type, value, init, owner, domain}, {}},
      {"Domain\\D\\Var\\G", kUpdate1, {kind, type, value, init, owner}, {{5, domain}}},
      {"Domain\\D\\Var\\H",
       kUpdate1,
       {},
       {{5, domain}, {4, owner}, {3, init}, {2, value}, {1, type}, {0, kind}}},
  };
  for (const auto& c : cases) {
    variable_->key = std::u16string(1, static_cast<char16_t>(c.key.back()));
    Reply reply = Call(object(), c.member, DISPATCH_METHOD, c.positional, c.named);
    EXPECT_EQ(reply.result, S_OK) << c.key;
    EXPECT_EQ(Shown(reply.value), "I2 -1");
    EXPECT_EQ(ReadRecord(c.key), (Record{{"Value", StoredText("value")},
                                         {"Init", StoredText("init")},
                                         {"Type", StoredNumber(0)},
                                         {"V/C", StoredText("C")}}))
        << c.key;
  }
}

TEST_F(DispatchTest, CallsThatDoNotFitTheirMember) {
  const Variant text(u"x"), number(std::int16_t{0}), none(nullptr_object_), missing = Variant::Missing();
  // An object that nobody can call by name.
  ObjectPtr<IUnknown> factory;
  ASSERT_EQ(DllGetClassObject(CLSID_RootVar, IID_IUnknown, factory.ReceiveAny()), S_OK);
  VARIANT bare_object = Bare(VT_UNKNOWN);
  bare_object.punkVal = factory.get();
  const struct {
    const char* what;
    DISPID member;
    WORD flags;
    std::vector<VARIANT> positional;
    Named named;
    HRESULT result;
    UINT bad_argument;  // an index of the argument array, the last argument first
  } cases[] = {
      {"too few", kUpdate, DISPATCH_METHOD, {text, number, text, text}, {}, DISP_E_BADPARAMCOUNT, kUntouched},
      {"none", kInitialize1, DISPATCH_METHOD, {}, {}, DISP_E_BADPARAMCOUNT, kUntouched},
      {"too many", kInitialize1, DISPATCH_METHOD, {text, text}, {}, DISP_E_BADPARAMCOUNT, kUntouched},
      {"argument of a property", kValue, DISPATCH_PROPERTYGET, {text}, {}, DISP_E_BADPARAMCOUNT, kUntouched},
      {"unknown name", kInitialize1, DISPATCH_METHOD, {}, {{1, text}}, DISP_E_PARAMNOTFOUND, 0},
      {"negative name", kDuplicate, DISPATCH_METHOD, {text}, {{-3, none}}, DISP_E_PARAMNOTFOUND, 0},
      {"named twice", kDuplicate, DISPATCH_METHOD, {}, {{0, text}, {0, text}}, DISP_E_PARAMNOTFOUND, 1},
      {"position and name", kDuplicate, DISPATCH_METHOD, {text}, {{0, text}}, DISP_E_PARAMNOTFOUND, 0},
      {"required object left out",
       kDuplicate,
       DISPATCH_METHOD,
       {text, missing},
       {},
       DISP_E_PARAMNOTOPTIONAL,
       0},
      {"required number left out",
       kUpdate,
       DISPATCH_METHOD,
       {text, missing, text, text, none},
       {},
       DISP_E_PARAMNOTOPTIONAL,
       3},
      {"text for an object", kDuplicate, DISPATCH_METHOD, {text, text}, {}, DISP_E_TYPEMISMATCH, 0},
      {"nothing for an object", kDuplicate, DISPATCH_METHOD, {text, Variant()}, {}, DISP_E_TYPEMISMATCH, 0},
      {"text for a number",
       kUpdate,
       DISPATCH_METHOD,
       {text, text, text, text, none},
       {},
       DISP_E_TYPEMISMATCH,
       3},
      {"null for a number",
       kUpdate,
       DISPATCH_METHOD,
       {text, Variant::Null(), text, text, none},
       {},
       DISP_E_TYPEMISMATCH,
       3},
      {"number of more than 16 bits",
       kUpdate,
       DISPATCH_METHOD,
       {text, Variant(std::int32_t{70000}), text, text, none},
       {},
       DISP_E_OVERFLOW,
       3},
      {"the first of two that do not fit",
       kUpdate,
       DISPATCH_METHOD,
       {text, text, text, text, text},
       {},
       DISP_E_TYPEMISMATCH,
       3},
      {"named one that does not fit",
       kDuplicate,
       DISPATCH_METHOD,
       {},
       {{0, text}, {1, text}},
       DISP_E_TYPEMISMATCH,
       1},
      {"object without calls", kDuplicate, DISPATCH_METHOD, {text, bare_object}, {}, DISP_E_TYPEMISMATCH, 0},
      {"value of such an object", kInitialize1, DISPATCH_METHOD, {bare_object}, {}, DISP_E_TYPEMISMATCH, 0},
      {"array", kInitialize1, DISPATCH_METHOD, {Bare(VT_ARRAY | VT_BSTR)}, {}, DISP_E_TYPEMISMATCH, 0},
      {"unheard-of tag", kInitialize1, DISPATCH_METHOD, {Bare(200)}, {}, DISP_E_TYPEMISMATCH, 0},
      {"reference to nowhere",
       kInitialize1,
       DISPATCH_METHOD,
       {ByReference<BSTR>(VT_BSTR, nullptr)},
       {},
       DISP_E_TYPEMISMATCH,
       0},
      {"unknown member", 4711, DISPATCH_METHOD, {}, {}, DISP_E_MEMBERNOTFOUND, kUntouched},
      {"no default member", DISPID_VALUE, DISPATCH_PROPERTYGET, {}, {}, DISP_E_MEMBERNOTFOUND, kUntouched},
      {"read-only property", kValue, DISPATCH_PROPERTYPUT, {text}, {}, DISP_E_MEMBERNOTFOUND, kUntouched},
      {"property called as a method", kKey, DISPATCH_METHOD, {}, {}, DISP_E_MEMBERNOTFOUND, kUntouched},
      {"method read as a property",
       kInitialize1,
       DISPATCH_PROPERTYGET,
       {text},
       {},
       DISP_E_MEMBERNOTFOUND,
       kUntouched},
      {"no kind of call", kKey, 0, {}, {}, DISP_E_MEMBERNOTFOUND, kUntouched},
  };
  variable_->key = u"X";
  variable_->SetVarType(u"V");
  for (const auto& c : cases) {
    Reply reply = Call(object(), c.member, c.flags, c.positional, c.named);
    EXPECT_EQ(reply.result, c.result) << c.what;
    EXPECT_EQ(Shown(reply.value), "empty") << c.what;
    EXPECT_EQ(c.bad_argument == kUntouched ? kUntouched : reply.bad_argument, c.bad_argument) << c.what;
    EXPECT_EQ(reply.number, 0) << c.what;
  }
  EXPECT_EQ(Shown(variable_->VarType()), "'V'");
  EXPECT_FALSE(Exists(""));
}

TEST_F(DispatchTest, MalformedParameterBlocks) {
  Variant argument(u"x");
  DISPID name = 0;
  DISPPARAMS good{&argument, nullptr, 1, 0};
  DISPPARAMS no_arguments{nullptr, nullptr, 1, 0};
  DISPPARAMS no_names{&argument, nullptr, 1, 1};
  DISPPARAMS more_names{&argument, &name, 1, 2};
  auto invoke = [&](DISPPARAMS* parameters, REFIID riid = GUID_NULL) {
    return object()->Invoke(kInitialize1, riid, 0, DISPATCH_METHOD, parameters, nullptr, nullptr, nullptr);
  };
  EXPECT_EQ(invoke(nullptr), E_INVALIDARG);
  EXPECT_EQ(invoke(&no_arguments), E_INVALIDARG);
  EXPECT_EQ(invoke(&no_names), E_INVALIDARG);
  EXPECT_EQ(invoke(&more_names), E_INVALIDARG);
  EXPECT_EQ(invoke(&good, IID_IDispatch), DISP_E_UNKNOWNINTERFACE);
  EXPECT_EQ(invoke(&good), S_OK) << "all that comes back may be left out";
}

TEST_F(DispatchTest, PropertiesArePutEitherWay) {
  const Variant text(u"one"), number(std::int32_t{12}), real(2.5), null = Variant::Null();
  std::u16string referred_text = u"referred";
  Bstr referred(referred_text);
  BSTR target = referred.get();
  const struct {
    WORD flags;
    std::vector<VARIANT> positional;
    Named named;
    HRESULT result;
    const char16_t* key;
  } cases[] = {
      {DISPATCH_PROPERTYPUT, {}, {{DISPID_PROPERTYPUT, text}}, S_OK, u"one"},
      {DISPATCH_PROPERTYPUT, {number}, {}, S_OK, u"12"},
      {DISPATCH_PROPERTYPUT, {}, {{DISPID_PROPERTYPUT, real}}, S_OK, u"2.5"},
      {DISPATCH_PROPERTYPUTREF, {}, {{DISPID_PROPERTYPUT, text}}, S_OK, u"one"},
      {DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF, {}, {{DISPID_PROPERTYPUT, number}}, S_OK, u"12"},
      {DISPATCH_PROPERTYPUT, {ByReference(VT_BSTR, &target)}, {}, S_OK, u"referred"},
      {DISPATCH_PROPERTYPUT, {}, {{DISPID_PROPERTYPUT, Bare(VT_BSTR)}}, S_OK, u""},
      {DISPATCH_PROPERTYPUT, {}, {{DISPID_PROPERTYPUT, null}}, DISP_E_TYPEMISMATCH, u"before"},
      {DISPATCH_PROPERTYPUT, {}, {}, DISP_E_BADPARAMCOUNT, u"before"},
      {DISPATCH_PROPERTYPUT, {text}, {{DISPID_PROPERTYPUT, text}}, DISP_E_PARAMNOTFOUND, u"before"},
  };
  for (const auto& c : cases) {
    variable_->key = u"before";
    Reply reply = Call(object(), kKey, c.flags, c.positional, c.named);
    EXPECT_EQ(reply.result, c.result);
    EXPECT_EQ(variable_->key, c.key);
    EXPECT_EQ(Shown(Call(object(), kKey, DISPATCH_METHOD | DISPATCH_PROPERTYGET).value),
              Shown(Variant(c.key)));
  }
}

// Every tag that a client's language may have for a value.
TEST_F(DispatchTest, ValuesOfEveryTagArrive) {
  variable_->key = u"X";
  Variant text(u"text"), inner(u"inner");
  Owner object_argument({}, u"");
  VARIANT i1 = Bare(VT_I1), ui1 = Bare(VT_UI1), ui2 = Bare(VT_UI2), ui4 = Bare(VT_UI4), i8 = Bare(VT_I8),
          far_i8 = Bare(VT_I8), ui8 = Bare(VT_UI8), far_ui8 = Bare(VT_UI8), low_int = Bare(VT_INT),
          uint = Bare(VT_UINT), far_uint = Bare(VT_UINT), r4 = Bare(VT_R4), cy = Bare(VT_CY),
          unknown = Bare(VT_UNKNOWN), no_unknown = Bare(VT_UNKNOWN);
  i1.cVal = static_cast<CHAR>(-5);
  ui1.bVal = 200;
  ui2.uiVal = 65535;
  ui4.ulVal = 4000000000;
  i8.llVal = -7;
  far_i8.llVal = 5000000000;
  ui8.ullVal = 7;
  far_ui8.ullVal = 18446744073709551615u;
  low_int.intVal = -70000;
  uint.uintVal = 70000;
  far_uint.uintVal = 4000000000;
  r4.fltVal = 0.5F;
  cy.cyVal.int64 = -123456;
  unknown.punkVal = &object_argument;
  VARIANT decimal{};
  const DECIMAL digits{VT_DECIMAL, 3, 0x80, 0, 12345};
  std::memcpy(static_cast<void*>(&decimal), &digits, sizeof digits);
  decimal.vt = VT_DECIMAL;
  SHORT short_target = -3;
  double real_target = 2.5;
  BYTE byte_target = 9;
  IDispatch* object_target = &object_argument;
  const struct {
    VARIANT given;
    std::string stored;
  } cases[] = {
      {Variant(), "empty"},
      {Variant::Null(), "null"},
      {i1, "I2 -5"},
      {ui1, "I2 200"},
      {ui2, "I4 65535"},
      {low_int, "I4 -70000"},
      {uint, "I4 70000"},
      {far_uint, "R8 4000000000"},
      {ui4, "R8 4000000000"},
      {i8, "I4 -7"},
      {far_i8, "R8 5000000000"},
      {ui8, "I4 7"},
      {far_ui8, "R8 1.8446744073709552e+19"},
      {r4, "R8 0.5"},
      {cy, "R8 -12.345599999999999"},
      {decimal, "R8 -12.345000000000001"},
      {unknown, "object"},
      {no_unknown, "no object"},
      {Variant(nullptr_object_), "no object"},
      {Variant::Date(1.5), "date 1.5"},
      {ByReference(VT_I2, &short_target), "I2 -3"},
      {ByReference(VT_R8, &real_target), "R8 2.5"},
      {ByReference(VT_UI1, &byte_target), "I2 9"},
      {ByReference(VT_BSTR, &text.bstrVal), "'text'"},
      {ByReference(VT_DISPATCH, &object_target), "object"},
      {ByReference(VT_VARIANT, static_cast<VARIANT*>(&inner)), "'inner'"},
      {ByReference(VT_VARIANT, &ui1), "I2 200"},
      {ByReference(VT_DECIMAL, &decimal), "R8 -12.345000000000001"},
      {Bare(VT_BSTR), "''"},
  };
  for (const auto& c : cases) {
    // The initial value of a text is kept as it is; what has no text fails only after that, when written.
    Reply reply = Update(Variant(u"x"), c.given);
    EXPECT_TRUE(reply.result == S_OK || reply.result == DISP_E_EXCEPTION) << c.given.vt;
    EXPECT_EQ(Shown(GetOf(object(), kInit).value), c.stored) << c.given.vt;
  }
  EXPECT_EQ(Shown(inner), "'inner'");
  EXPECT_EQ(text.text(), u"text");
}

TEST_F(DispatchTest, NumbersAreCoercedToTheParametersWidth) {
  variable_->key = u"X";
  VARIANT byte = Bare(VT_UI1), wide = Bare(VT_I8);
  byte.bVal = 6;
  wide.llVal = 6;
  SHORT target = 6;
  const Variant text(u" 6 ");
  for (const VARIANT& type :
       std::vector<VARIANT>{byte, wide, ByReference(VT_I2, &target), Variant(5.6), text}) {
    variable_->SetDataType(0);
    EXPECT_EQ(Call(object(), kUpdate, DISPATCH_METHOD,
                   {Variant(u"V"), type, Variant(1.0), Variant(1.0), Variant(nullptr_object_)})
                  .result,
              S_OK);
    EXPECT_EQ(Shown(GetOf(object(), kDataType).value), "I2 6");
  }
}

TEST_F(DispatchTest, AMemberThatFailsFillsTheExceptionAndTheErrorInfo) {
  const Variant bad_kind(u"v"), kind(u"V"), alpha(std::int16_t{0}), real(std::int16_t{6}), text(u"x"),
      one(u"1"), null = Variant::Null(), none(nullptr_object_);
  const struct {
    std::vector<VARIANT> arguments;
    std::uint32_t number;
    std::u16string source;
    std::u16string description;
  } cases[] = {
      {{bad_kind, alpha, text, text, none},
       0x800405DC,
       u"Variable:VarType Property Let",
       u"Type de variable incorrect"},
      {{kind, alpha, null, text, none}, 0x800A005E, u"MOXEL", u"Invalid use of Null"},
      {{kind, real, text, one, none}, 0x800A000D, u"MOXEL", u"Type mismatch"},
  };
  for (const auto& c : cases) {
    Reply reply = Call(object(), kUpdate, DISPATCH_METHOD, c.arguments);
    EXPECT_EQ(reply.result, DISP_E_EXCEPTION);
    EXPECT_EQ(static_cast<std::uint32_t>(reply.number), c.number);
    EXPECT_EQ(reply.source, c.source);
    EXPECT_EQ(reply.description, c.description);
    EXPECT_EQ(TakeErrorInfo(), (ErrorText{true, c.source, c.description}));
  }
}

TEST_F(DispatchTest, ALookUpGivesAnObjectOrNoObjectAndLeavesItsArguments) {
  WriteRecord("Domain\\D\\Var\\X", {{"Value", StoredText("value")}});
  Variant domain(u"D"), scenario(u""), name(u"X"), other(u"Y"), inner(u"D");
  VARIANT referred = ByReference(VT_VARIANT, static_cast<VARIANT*>(&inner));
  for (const VARIANT& given : std::vector<VARIANT>{domain, referred, ByReference(VT_BSTR, &domain.bstrVal)}) {
    Reply found = Call(root_var_.get(), kRecupVariable, DISPATCH_METHOD, {given, scenario, name});
    ASSERT_EQ(Shown(found.value), "object");
    EXPECT_EQ(Shown(GetOf(found.value.pdispVal, kValue).value), "'value'");
    EXPECT_EQ(Shown(GetOf(found.value.pdispVal, kKey).value), "'X'");
    Reply missing = Call(root_var_.get(), kRecupVariable, DISPATCH_METHOD, {given, scenario, other});
    EXPECT_EQ(missing.result, S_OK);
    EXPECT_EQ(Shown(missing.value), "no object");
  }
  EXPECT_EQ(Shown(domain) + Shown(inner) + Shown(name), "'D''D''X'");
}

}  // namespace
}  // namespace moxel::test
