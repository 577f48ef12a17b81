#include "component/dispatch.h"

#include <gtest/gtest.h>

#include "tests/component/calls.h"
#include "tests/support/configuration.h"
#include "variables/variable.h"

namespace moxel::test {
namespace {

constexpr WORD kCall = DISPATCH_METHOD, kRead = DISPATCH_PROPERTYGET, kPut = DISPATCH_PROPERTYPUT,
               kPutRef = DISPATCH_PROPERTYPUTREF;

class DispatchTest : public ProductTest {
 protected:
  IDispatch* object() const { return variable_.get(); }

  const Variant none_ = static_cast<IDispatch*>(nullptr);
  ObjectPtr<Variable> variable_ = Variable::Create();
};

TEST_F(DispatchTest, NamesAreFoundInAnyLetterCase) {
  constexpr HRESULT unknown = DISP_E_UNKNOWNNAME;
  const struct {
    std::vector<std::u16string> names;
    HRESULT result;
    std::vector<DISPID> ids;
  } cases[] = {
      {{u"KEY"}, S_OK, {kKey}},
      {{u"duplicate", u"wObj", u"wVarName"}, S_OK, {kDuplicate, 1, 0}},
      {{u"UPDATE1", u"WDOMSCEN", u"wvartype"}, S_OK, {kUpdate1, 5, 0}},
      {{u"Update", u"wDomScen", u"wInit"}, unknown, {kUpdate, DISPID_UNKNOWN, 3}},
      {{u"Validate", u"wObj"}, unknown, {DISPID_UNKNOWN, DISPID_UNKNOWN}},
      {{u""}, unknown, {DISPID_UNKNOWN}},
  };
  DISPID ids[3];
  LPOLESTR names[3];
  auto find = [&](UINT count) { return object()->GetIDsOfNames(GUID_NULL, names, count, 0, ids); };
  for (auto c : cases) {
    std::transform(c.names.begin(), c.names.end(), names, [](auto& name) { return name.data(); });
    EXPECT_EQ(find(static_cast<UINT>(c.names.size())), c.result);
    EXPECT_EQ(std::vector<DISPID>(ids, ids + c.names.size()), c.ids) << Shown(Variant(c.names[0]));
  }
  char16_t key[] = u"key";
  names[0] = key, names[1] = nullptr;
  EXPECT_EQ(find(2), DISP_E_UNKNOWNNAME);
  EXPECT_EQ(ids[0], kKey);
  EXPECT_EQ(object()->GetIDsOfNames(IID_IDispatch, names, 1, 0, ids), DISP_E_UNKNOWNINTERFACE);
  EXPECT_EQ(object()->GetIDsOfNames(GUID_NULL, names, 1, 0, nullptr), E_POINTER);
  EXPECT_EQ(object()->GetIDsOfNames(GUID_NULL, nullptr, 1, 0, ids), E_POINTER);
  EXPECT_EQ(object()->GetIDsOfNames(GUID_NULL, nullptr, 0, 0, nullptr), S_OK);
  names[0] = nullptr;
  EXPECT_EQ(find(1), E_POINTER);
}

TEST_F(DispatchTest, ArgumentsByPositionAndByNameInAnyOrder) {
  SHORT one = 1;
  const Variant kind(u"C"), text(u" 1 "), value(u"7"), init(u"8"), missing = Variant::Missing(), in_d(u"D_d");
  const VARIANT type = ByReference(VT_I2, &one), owner = none_;
  const std::string other = "Domain\\D\\Var\\X";
  const struct {
    std::string path;
    DISPID member;
    std::vector<VARIANT> positional;
    Named named = {};
  } cases[] = {
      {"X", kUpdate, {}, {{4, owner}, {0, kind}, {3, init}, {2, value}, {1, text}}},
      {"X", kUpdate, {kind, text}, {{3, init}, {4, owner}, {2, value}}},
      {"X", kUpdate1, {kind, Variant(0.9), value, init, owner}},
      {"X", kUpdate1, {kind, type, value, init, owner, missing}},
      {other, kUpdate1, {kind, type, value, init, owner, in_d}},
      {other, kUpdate1, {}, {{5, in_d}, {4, owner}, {3, init}, {2, value}, {1, type}, {0, kind}}},
  };
  variable_->key = u"X";
  for (const auto& c : cases) {
    const Reply reply = Call(object(), c.member, kCall, c.positional, c.named);
    EXPECT_EQ(reply.result, S_OK);
    EXPECT_EQ(Shown(reply.value), "I2 -1");
    EXPECT_EQ(ConfigurationAt(c.path), Tidy(c.path + "  Value=dword:7  Init=8  Type=dword:1  V/C=C"));
    RegDeleteKeyA(HKEY_LOCAL_MACHINE, AbsolutePath(c.path).c_str());
  }
}

TEST_F(DispatchTest, CallsThatDoNotFitTheirMember) {
  const Variant x(u"x"), n(std::int16_t{0}), gone = Variant::Missing(), wide(std::int32_t{70000});
  const VARIANT owner = none_, odd = Bare(200), array = Bare(VT_ARRAY | VT_BSTR),
                nowhere = ByReference<BSTR>(VT_BSTR, nullptr);
  const struct {
    const char* what;
    DISPID member;
    WORD flags;
    std::vector<VARIANT> positional;
    Named named;
    HRESULT result;
    UINT bad_argument = kUntouched;  // an index of the argument array, the last argument first
  } cases[] = {
      {"too few", kUpdate, kCall, {x, n, x, x}, {}, DISP_E_BADPARAMCOUNT},
      {"argument of a property", kValue, kRead, {x}, {}, DISP_E_BADPARAMCOUNT},
      {"unknown name", kInitialize1, kCall, {}, {{1, x}}, DISP_E_PARAMNOTFOUND, 0},
      {"negative name", kDuplicate, kCall, {x}, {{-3, owner}}, DISP_E_PARAMNOTFOUND, 0},
      {"named twice", kDuplicate, kCall, {}, {{0, x}, {0, x}}, DISP_E_PARAMNOTFOUND, 1},
      {"position and name", kDuplicate, kCall, {x}, {{0, x}}, DISP_E_PARAMNOTFOUND, 0},
      {"number left out", kUpdate, kCall, {x, gone, x, x, owner}, {}, DISP_E_PARAMNOTOPTIONAL, 3},
      {"text for an object", kDuplicate, kCall, {x, x}, {}, DISP_E_TYPEMISMATCH, 0},
      {"number of 32 bits", kUpdate, kCall, {x, wide, x, x, owner}, {}, DISP_E_OVERFLOW, 3},
      {"the first of two", kUpdate, kCall, {x, x, x, x, x}, {}, DISP_E_TYPEMISMATCH, 3},
      {"by name", kDuplicate, kCall, {}, {{0, x}, {1, x}}, DISP_E_TYPEMISMATCH, 1},
      {"array", kInitialize1, kCall, {array}, {}, DISP_E_TYPEMISMATCH, 0},
      {"unheard-of tag", kInitialize1, kCall, {odd}, {}, DISP_E_TYPEMISMATCH, 0},
      {"reference to nowhere", kInitialize1, kCall, {nowhere}, {}, DISP_E_TYPEMISMATCH, 0},
      {"unknown member", 4711, kCall, {}, {}, DISP_E_MEMBERNOTFOUND},
      {"no default member", DISPID_VALUE, kRead, {}, {}, DISP_E_MEMBERNOTFOUND},
      {"read-only property", kValue, kPut, {x}, {}, DISP_E_MEMBERNOTFOUND},
      {"method read", kInitialize1, kRead, {x}, {}, DISP_E_MEMBERNOTFOUND},
      {"no kind of call", kKey, 0, {}, {}, DISP_E_MEMBERNOTFOUND},
  };
  variable_->SetVarType(u"V");
  for (const auto& c : cases) {
    const Reply reply = Call(object(), c.member, c.flags, c.positional, c.named);
    EXPECT_EQ(reply.result, c.result) << c.what;
    EXPECT_EQ(Shown(reply.value), "empty") << c.what;
    EXPECT_EQ(c.bad_argument == kUntouched ? kUntouched : reply.bad_argument, c.bad_argument) << c.what;
    EXPECT_EQ(reply.number, 0) << c.what;
  }
  EXPECT_EQ(FieldsOf(*variable_), "'V' 0 empty empty");
  EXPECT_FALSE(Exists(""));
}

TEST_F(DispatchTest, MalformedParameterBlocks) {
  Variant argument(u"x");
  DISPID name = 0;
  auto invoke = [&](DISPPARAMS parameters, REFIID riid = GUID_NULL) {
    return object()->Invoke(kInitialize1, riid, 0, kCall, &parameters, nullptr, nullptr, nullptr);
  };
  EXPECT_EQ(object()->Invoke(kKey, GUID_NULL, 0, kRead, nullptr, nullptr, nullptr, nullptr), E_INVALIDARG);
  EXPECT_EQ(invoke({nullptr, nullptr, 1, 0}), E_INVALIDARG);
  EXPECT_EQ(invoke({&argument, nullptr, 1, 1}), E_INVALIDARG);
  EXPECT_EQ(invoke({&argument, &name, 1, 2}), E_INVALIDARG);
  EXPECT_EQ(invoke({&argument, nullptr, 1, 0}, IID_IDispatch), DISP_E_UNKNOWNINTERFACE);
  EXPECT_EQ(invoke({&argument, nullptr, 1, 0}), S_OK) << "all that comes back may be left out";
}

TEST_F(DispatchTest, PropertiesArePutEitherWay) {
  Variant text(u"one"), number(std::int32_t{12});
  const VARIANT referred = ByReference(VT_BSTR, &text.bstrVal), null = Variant::Null();
  constexpr DISPID put = DISPID_PROPERTYPUT;
  const struct {
    WORD flags;
    std::vector<VARIANT> positional;
    Named named;
    HRESULT result;
    const char* key;
  } cases[] = {
      {kPut, {}, {{put, text}}, S_OK, "'one'"},
      {kPut, {number}, {}, S_OK, "'12'"},
      {kPutRef, {}, {{put, text}}, S_OK, "'one'"},
      {kPut, {referred}, {}, S_OK, "'one'"},
      {kPut, {}, {{put, Bare(VT_BSTR)}}, S_OK, "''"},
      {kPut, {}, {{put, null}}, DISP_E_TYPEMISMATCH, "'before'"},
      {kPut, {}, {}, DISP_E_BADPARAMCOUNT, "'before'"},
      {kPut, {text}, {{put, text}}, DISP_E_PARAMNOTFOUND, "'before'"},
  };
  for (const auto& c : cases) {
    variable_->key = u"before";
    EXPECT_EQ(Call(object(), kKey, c.flags, c.positional, c.named).result, c.result);
    EXPECT_EQ(Shown(Call(object(), kKey, kCall | kRead).value), c.key);
  }
}

// Every tag that a client's language may have for a value.
TEST_F(DispatchTest, ValuesOfEveryTagArrive) {
  auto of = [](VARTYPE tag, auto VARIANT::*member, auto content) {
    VARIANT value = Bare(tag);
    value.*member = content;
    return value;
  };
  Owner owner({}, u"");
  IUnknown* unknown = &owner;
  IDispatch* dispatch = &owner;
  Variant text(u"text");
  VARIANT byte = of(VT_UI1, &VARIANT::bVal, BYTE{200}), decimal{};
  const DECIMAL digits{VT_DECIMAL, 3, 0x80, 0, 12345};
  std::memcpy(static_cast<void*>(&decimal), &digits, sizeof digits);
  decimal.vt = VT_DECIMAL;
  const std::pair<VARIANT, std::string> cases[] = {
      {Variant(), "empty"},
      {of(VT_I1, &VARIANT::cVal, static_cast<CHAR>(-5)), "I2 -5"},
      {byte, "I2 200"},
      {of(VT_INT, &VARIANT::intVal, -70000), "I4 -70000"},
      {of(VT_UI4, &VARIANT::ulVal, 4000000000u), "R8 4000000000"},
      {of(VT_I8, &VARIANT::llVal, 5000000000), "R8 5000000000"},
      {of(VT_UI8, &VARIANT::ullVal, ~0ull), "R8 1.8446744073709552e+19"},
      {of(VT_R4, &VARIANT::fltVal, 0.5F), "R8 0.5"},
      {of(VT_CY, &VARIANT::cyVal, CY{-123456}), "R8 -12.345599999999999"},
      {decimal, "R8 -12.345000000000001"},
      {of(VT_UNKNOWN, &VARIANT::punkVal, unknown), "object"},
      {Bare(VT_UNKNOWN), "no object"},
      {Variant::Date(1.5), "date 1.5"},
      {ByReference(VT_BSTR, &text.bstrVal), "'text'"},
      {ByReference(VT_DISPATCH, &dispatch), "object"},
      {ByReference(VT_VARIANT, &byte), "I2 200"},
      {ByReference(VT_DECIMAL, &decimal), "R8 -12.345000000000001"},
      {Bare(VT_BSTR), "''"},
  };
  for (const auto& [given, stored] : cases) {
    // The initial value of a text is kept as it is; what has no text fails only after that, when written.
    Call(object(), kUpdate, kCall, {Variant(u"V"), Variant(std::int16_t{0}), text, given, none_});
    EXPECT_EQ(Shown(GetOf(object(), kInit).value), stored) << given.vt;
  }
}

TEST_F(DispatchTest, AMemberThatFailsFillsTheExceptionAndTheErrorInfo) {
  const Variant v(u"V"), one(std::int16_t{1});
  const Reply reply = Call(object(), kUpdate, kCall, {v, one, v, one, none_});
  EXPECT_EQ(reply.result, DISP_E_EXCEPTION);
  EXPECT_EQ(reply.number, kApplication + 1502);
  const ErrorText expected{true, u"Variable:Value Property Let", u"Valeur incorrecte"};
  EXPECT_EQ((ErrorText{true, reply.source, reply.description}), expected);
  EXPECT_EQ(TakeErrorInfo(), expected);
}

}  // namespace
}  // namespace moxel::test
