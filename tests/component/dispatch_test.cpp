#include "component/dispatch.h"

#include <gtest/gtest.h>

#include "component/classes.h"
#include "component/members.h"
#include "component/surface.h"
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
  using Ids = std::vector<DISPID>;
  DISPID ids[3];
  LPOLESTR names[3];
  auto find = [&](std::vector<std::u16string> given, HRESULT expected) {
    std::transform(given.begin(), given.end(), names, [](auto& name) { return name.data(); });
    const auto count = static_cast<UINT>(given.size());
    EXPECT_EQ(object()->GetIDsOfNames(GUID_NULL, names, count, 0, ids), expected);
    return Ids(ids, ids + count);
  };
  EXPECT_EQ(find({u"KEY"}, S_OK), Ids{kKey});
  EXPECT_EQ(find({u"duplicate", u"wObj", u"wVarName"}, S_OK), (Ids{kDuplicate, 1, 0}));
  EXPECT_EQ(find({u"UPDATE1", u"WDOMSCEN", u"wvartype"}, S_OK), (Ids{kUpdate1, 5, 0}));
  EXPECT_EQ(find({u"Update", u"wDomScen", u"wInit"}, DISP_E_UNKNOWNNAME), (Ids{kUpdate, DISPID_UNKNOWN, 3}));
  EXPECT_EQ(find({u"Validate", u"wObj"}, DISP_E_UNKNOWNNAME), (Ids{DISPID_UNKNOWN, DISPID_UNKNOWN}));
  EXPECT_EQ(find({u""}, DISP_E_UNKNOWNNAME), Ids{DISPID_UNKNOWN});
  char16_t key[] = u"key";
  names[0] = key, names[1] = nullptr;
  EXPECT_EQ(object()->GetIDsOfNames(GUID_NULL, names, 2, 0, ids), DISP_E_UNKNOWNNAME);
  EXPECT_EQ(object()->GetIDsOfNames(GUID_NULL, names + 1, 1, 0, ids), E_POINTER);
  EXPECT_EQ(object()->GetIDsOfNames(IID_IDispatch, names, 1, 0, ids), DISP_E_UNKNOWNINTERFACE);
  EXPECT_EQ(object()->GetIDsOfNames(GUID_NULL, names, 1, 0, nullptr), E_POINTER);
  EXPECT_EQ(object()->GetIDsOfNames(GUID_NULL, nullptr, 1, 0, ids), E_POINTER);
  EXPECT_EQ(object()->GetIDsOfNames(GUID_NULL, nullptr, 0, 0, nullptr), S_OK);
}

TEST_F(DispatchTest, ArgumentsByPositionAndByNameInAnyOrder) {
  SHORT one = 1;
  const Variant kind(u"C"), text(u" 1 "), value(u"7"), init(u"8"), missing = Variant::Missing(), in_d(u"D_d");
  const VARIANT type = ByReference(VT_I2, &one), owner = none_;
  variable_->key = u"X";
  auto written = [&](DISPID member, const std::vector<VARIANT>& positional, const Named& named = {}) {
    EXPECT_EQ(Shown(Call(object(), member, kCall, positional, named).value), "I2 -1");
    const std::string domain = ConfigurationAt("Domain"), root = ConfigurationAt("X");
    RegDeleteKeyA(HKEY_LOCAL_MACHINE, AbsolutePath("X").c_str());
    RegDeleteKeyA(HKEY_LOCAL_MACHINE, AbsolutePath("Domain\\D\\Var\\X").c_str());
    return root.empty() ? domain : root;
  };
  const std::string record = "X  Value=dword:7  Init=8  Type=dword:1  V/C=C\n";
  EXPECT_EQ(written(kUpdate, {}, {{4, owner}, {0, kind}, {3, init}, {2, value}, {1, text}}), record);
  EXPECT_EQ(written(kUpdate, {kind, text}, {{3, init}, {4, owner}, {2, value}}), record);
  EXPECT_EQ(written(kUpdate1, {kind, Variant(0.9), value, init, owner}), record);
  EXPECT_EQ(written(kUpdate1, {kind, type, value, init, owner, missing}), record);
  const std::string below = "Domain\nDomain\\D\nDomain\\D\\Var\nDomain\\D\\Var\\" + record;
  EXPECT_EQ(written(kUpdate1, {kind, type, value, init, owner, in_d}), below);
  const Named all{{5, in_d}, {4, owner}, {3, init}, {2, value}, {1, type}, {0, kind}};
  EXPECT_EQ(written(kUpdate1, {}, all), below);
}

TEST_F(DispatchTest, CallsThatDoNotFitTheirMember) {
  const Variant x(u"x"), n(std::int16_t{0}), gone = Variant::Missing(), wide(std::int32_t{70000});
  const VARIANT owner = none_, odd = Bare(VT_ARRAY | VT_BSTR), nowhere = ByReference<BSTR>(VT_BSTR, nullptr);
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
      {"named ones leave a hole", kUpdate1, kCall, {x, n, x, x}, {{5, x}}, DISP_E_PARAMNOTOPTIONAL},
      {"unknown name", kInitialize1, kCall, {}, {{1, x}}, DISP_E_PARAMNOTFOUND, 0},
      {"negative name", kDuplicate, kCall, {x}, {{-3, owner}}, DISP_E_PARAMNOTFOUND, 0},
      {"named twice", kDuplicate, kCall, {}, {{0, x}, {0, x}}, DISP_E_PARAMNOTFOUND, 1},
      {"position and name", kDuplicate, kCall, {x}, {{0, x}}, DISP_E_PARAMNOTFOUND, 0},
      {"number left out", kUpdate, kCall, {x, gone, x, x, owner}, {}, DISP_E_PARAMNOTOPTIONAL, 3},
      {"text for an object", kDuplicate, kCall, {x, x}, {}, DISP_E_TYPEMISMATCH, 0},
      {"number of 32 bits", kUpdate, kCall, {x, wide, x, x, owner}, {}, DISP_E_OVERFLOW, 3},
      {"the first of two", kUpdate, kCall, {x, x, x, x, x}, {}, DISP_E_TYPEMISMATCH, 3},
      {"array", kInitialize1, kCall, {odd}, {}, DISP_E_TYPEMISMATCH, 0},
      {"reference to nowhere", kInitialize1, kCall, {nowhere}, {}, DISP_E_TYPEMISMATCH, 0},
      {"unknown member", 4711, kCall, {}, {}, DISP_E_MEMBERNOTFOUND},
      {"put of null", kKey, kPut, {}, {{DISPID_PROPERTYPUT, Bare(VT_NULL)}}, DISP_E_TYPEMISMATCH, 0},
      {"put of nothing", kKey, kPut, {}, {}, DISP_E_BADPARAMCOUNT},
      {"put of two", kKey, kPut, {x}, {{DISPID_PROPERTYPUT, x}}, DISP_E_PARAMNOTFOUND, 0},
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
    EXPECT_EQ(reply.bad_argument, c.bad_argument) << c.what;
    EXPECT_EQ(reply.number, 0) << c.what;
  }
  EXPECT_EQ(FieldsOf(*variable_), "'V' 0 empty empty");
  EXPECT_EQ(variable_->key, u"");
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
  auto put = [&](WORD flags, const std::vector<VARIANT>& positional, const Named& named = {}) {
    EXPECT_EQ(Call(object(), kKey, flags, positional, named).result, S_OK);
    return Shown(Call(object(), kKey, kCall | kRead).value);
  };
  EXPECT_EQ(put(kPut, {}, {{DISPID_PROPERTYPUT, text}}), "'one'");
  EXPECT_EQ(put(kPut, {number}), "'12'");
  EXPECT_EQ(put(kPutRef, {}, {{DISPID_PROPERTYPUT, text}}), "'one'");
  EXPECT_EQ(put(kPut, {}, {{DISPID_PROPERTYPUT, Bare(VT_BSTR)}}), "''");
  EXPECT_EQ(put(kPut | kPutRef, {ByReference(VT_BSTR, &text.bstrVal)}), "'one'");
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
      {of(VT_I1, &VARIANT::cVal, static_cast<CHAR>(-5)), "I2 -5"},
      {byte, "I2 200"},
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
      {Bare(VT_BSTR), "''"},
  };
  for (const auto& [given, stored] : cases) {
    // The initial value of a text is kept as it is; what has no text fails only after that, when written.
    Call(object(), kUpdate, kCall, {Variant(u"V"), Variant(std::int16_t{0}), text, given, none_});
    EXPECT_EQ(Shown(GetOf(object(), kInit).value), stored) << given.vt;
  }
}

// A member that changes what it is given by reference.
struct _Changer : IDispatch {
  static constexpr IID iid{0x6D0C5E11, 0x3B0F, 0x4C0B, {0x9A, 0x5E, 0x11, 0x22, 0x33, 0x44, 0x55, 0x66}};
  virtual HRESULT raw_Change(SHORT* number, BSTR* text, VARIANT* value, _Variable** object,
                             SHORT by_value) = 0;
};

class Changer final : public component::Surface<_Changer, _Changer, component::VariableInfo> {
 public:
  explicit Changer(_Variable* object) : object_(object) {}
  HRESULT raw_Change(SHORT* number, BSTR* text, VARIANT* value, _Variable** object, SHORT by_value) override {
    if (by_value != 1) return E_FAIL;
    *number = 300;
    SysFreeString(*text);
    *text = SysAllocString(u"after");
    *reinterpret_cast<Variant*>(value) = Variant(2.5);
    if (*object) (*object)->Release();
    *object = ObjectPtr<_Variable>(object_).Detach();
    return S_OK;
  }

 private:
  _Variable* object_;
};

TEST_F(DispatchTest, WhatAMemberChangesComesBackInTheClientsVariables) {
  const component::ClassInfo info{u"Changer", u"_Changer",
                                  nullptr,    &_Changer::iid,
                                  u"",        {component::Method<&_Changer::raw_Change>(u"Change", 1)}};
  const auto changer = ObjectPtr<_Changer>::Adopt(new Changer(variable_.get()));
  const ObjectPtr<Variable> before = Variable::Create();
  auto change = [&](std::vector<VARIANT> arguments, UINT* bad_argument = nullptr) {
    std::reverse(arguments.begin(), arguments.end());
    DISPPARAMS parameters{arguments.data(), nullptr, static_cast<UINT>(arguments.size()), 0};
    return component::Invoke(info, changer.get(), 1, GUID_NULL, kCall, &parameters, nullptr, nullptr,
                             bad_argument);
  };
  SHORT one = 1;
  LONG number = 5;
  Bstr text(u"before");
  Variant value(u"old"), inner(u"7");
  IDispatch* object = ObjectPtr<IDispatch>(before.get()).Detach();
  auto reference = [](VARTYPE tag, auto* target) { return ByReference(tag, target); };
  const VARIANT in_text = reference(VT_BSTR, text.Receive()), in_object = reference(VT_DISPATCH, &object);
  *reinterpret_cast<BSTR*>(in_text.byref) = SysAllocString(u"before");
  EXPECT_EQ(change({reference(VT_I4, &number), in_text, reference(VT_VARIANT, static_cast<VARIANT*>(&value)),
                    in_object, reference(VT_I2, &one)}),
            S_OK);
  EXPECT_EQ(number, 300);
  EXPECT_EQ(text.view(), u"after");
  EXPECT_EQ(Shown(value), "R8 2.5");
  EXPECT_EQ(object, variable_.get());
  EXPECT_EQ(one, 1);
  // A variant takes any kind; what is passed by value stays.
  EXPECT_EQ(change({reference(VT_VARIANT, static_cast<VARIANT*>(&inner)), Variant(u"x"), Variant(u"y"), none_,
                    Variant(std::int16_t{1})}),
            S_OK);
  EXPECT_EQ(Shown(inner), "I2 300");
  // A variable that the result does not fit keeps what it has.
  BYTE narrow = 7;
  UINT bad_argument = kUntouched;
  EXPECT_EQ(
      change({reference(VT_UI1, &narrow), in_text, value, in_object, reference(VT_I2, &one)}, &bad_argument),
      DISP_E_OVERFLOW);
  EXPECT_EQ(bad_argument, 4u);
  EXPECT_EQ(narrow, 7);
  EXPECT_EQ(change({reference(VT_I4, &number), in_text, value, in_object, Variant(std::int16_t{2})}), E_FAIL);
  object->Release();
}

}  // namespace
}  // namespace moxel::test
