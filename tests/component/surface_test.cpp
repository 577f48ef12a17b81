#include "component/surface.h"

#include <gtest/gtest.h>

#include <functional>

#include "moxel/component.h"
#include "root/root_var.h"
#include "tests/component/calls.h"
#include "variables/variable.h"

namespace moxel::test {
namespace {

class SurfaceTest : public ProductTest {};

void* Ask(IUnknown* object, REFIID riid) {
  void* found = nullptr;
  EXPECT_EQ(object->QueryInterface(riid, &found), S_OK);
  object->Release();
  return found;
}

TEST_F(SurfaceTest, AnObjectHasOneIdentityFromEveryInterface) {
  ObjectPtr<Variable> variable = Variable::Create();
  ObjectPtr<RootVar> root_var = RootVar::Create();
  const struct {
    IUnknown* object;
    IID own;
    IID foreign;
  } cases[] = {{variable.get(), IID__Variable, IID__RootVar}, {root_var.get(), IID__RootVar, IID__Variable}};
  for (const auto& c : cases) {
    const IID all[] = {IID_IUnknown, IID_IDispatch, IID_ISupportErrorInfo, c.own};
    for (const IID& from : all) {
      auto* face = static_cast<IUnknown*>(Ask(c.object, from));
      for (const IID& to : all) EXPECT_EQ(Ask(face, to), Ask(c.object, to));
      EXPECT_EQ(Ask(face, IID_IUnknown), c.object);
      for (const IID& unknown : {c.foreign, IID_IClassFactory, IID_IEnumVARIANT, GUID_NULL}) {
        void* found = &found;
        EXPECT_EQ(face->QueryInterface(unknown, &found), E_NOINTERFACE);
        EXPECT_EQ(found, nullptr);
      }
      EXPECT_EQ(face->QueryInterface(IID_IUnknown, nullptr), E_POINTER);
    }
    auto* support = static_cast<ISupportErrorInfo*>(Ask(c.object, IID_ISupportErrorInfo));
    EXPECT_EQ(support->InterfaceSupportsErrorInfo(c.own), S_OK);
    EXPECT_EQ(support->InterfaceSupportsErrorInfo(c.foreign), S_FALSE);
  }
}

TEST_F(SurfaceTest, ReferencesAreCountedAndKeepTheLibraryLoaded) {
  ASSERT_EQ(DllCanUnloadNow(), S_OK);
  ObjectPtr<Variable> variable = Variable::Create();
  EXPECT_EQ(DllCanUnloadNow(), S_FALSE);
  EXPECT_EQ(variable->AddRef(), 2u);
  auto* support = static_cast<IUnknown*>(Ask(variable.get(), IID_ISupportErrorInfo));
  EXPECT_EQ(support->AddRef(), 3u);
  EXPECT_EQ(variable->Release(), 2u);
  variable = nullptr;
  EXPECT_EQ(DllCanUnloadNow(), S_FALSE);
  EXPECT_EQ(support->Release(), 0u);
  EXPECT_EQ(DllCanUnloadNow(), S_OK);

  // A variable found outlives the object that found it.
  WriteRecord("Domain\\D\\Var\\X", {{"Value", StoredText("x")}});
  _Variable* found = nullptr;
  {
    Variant domain(u"D"), scenario, name(u"X");
    ASSERT_EQ(RootVar::Create()->raw_RecupVariable(&domain, &scenario, &name, &found), S_OK);
  }
  Variant value;
  EXPECT_EQ(found->get_Value(&value), S_OK);
  EXPECT_EQ(Shown(value), "'x'");
  EXPECT_EQ(found->Release(), 0u);
  EXPECT_EQ(DllCanUnloadNow(), S_OK);
}

TEST_F(SurfaceTest, TypeInformationIsNotOfferedYet) {
  ObjectPtr<Variable> variable = Variable::Create();
  UINT count = 7;
  EXPECT_EQ(variable->GetTypeInfoCount(&count), S_OK);
  EXPECT_EQ(count, 0u);
  ITypeInfo* info = reinterpret_cast<ITypeInfo*>(&count);
  EXPECT_EQ(variable->GetTypeInfo(0, 0, &info), DISP_E_BADINDEX);
  EXPECT_EQ(info, nullptr);
  EXPECT_EQ(variable->GetTypeInfoCount(nullptr), E_POINTER);
  EXPECT_EQ(variable->GetTypeInfo(0, 0, nullptr), E_POINTER);
}

// What an early-bound call answers, in the form of a late-bound one.
struct Early {
  HRESULT result;
  std::string value;
};

// By reference: read after the call that fills it.
Early Of(HRESULT result, const SHORT& number) {
  return {result, SUCCEEDED(result) ? Shown(Variant(number)) : "empty"};
}
Early Of(HRESULT result, const Variant& value) { return {result, Shown(value)}; }

TEST_F(SurfaceTest, EarlyAndLateBoundCallsAnswerAlike) {
  Owner domain({IID__Domaine}, u"D"), gone({IID__Scenario}, u"S");
  gone.Fail(DISP_E_EXCEPTION, kApplication + 4711);
  WriteRecord("Domain\\D\\Var\\Taken", {});
  const Variant v(u"V"), small_v(u"v"), text(u"x"), empty(u""), taken(u"taken"),
      null = Variant::Null(), yes(true), folder(u"Domain\\D"), suffixed(u"D_s"), owner(&domain),
      bad_owner(&gone), alpha(std::int16_t{0}), five(std::int16_t{5}), number(std::int16_t{1}),
      boolean(std::int16_t{2}), missing = Variant::Missing();
  Bstr name(u"Renamed");
  Variant renamed(u"Renamed");
  SHORT status = 0;
  using EarlyCall = std::function<Early(_Variable*)>;
  auto update = [&](const VARIANT& kind, SHORT type, const VARIANT& value, const VARIANT& init,
                    IDispatch* to) -> EarlyCall {
    return [=, &status](_Variable* o) {
      return Of(o->raw_Update(kind, type, value, init, to, &status), status);
    };
  };
  auto get = [](HRESULT (_Variable::*getter)(VARIANT*)) -> EarlyCall {
    return [getter](_Variable* o) {
      Variant value;
      HRESULT result = (o->*getter)(&value);
      return Of(result, value);
    };
  };
  const struct {
    const char* what;
    EarlyCall early;
    DISPID member;
    WORD flags;
    std::vector<VARIANT> arguments;
  } cases[] = {
      {"update",
       update(v, 0, text, empty, &domain),
       kUpdate,
       DISPATCH_METHOD,
       {v, alpha, text, empty, owner}},
      {"update with a boolean",
       update(v, 2, yes, yes, nullptr),
       kUpdate,
       DISPATCH_METHOD,
       {v, boolean, yes, yes, Bare(VT_DISPATCH)}},
      {"bad kind",
       update(small_v, 0, text, empty, &domain),
       kUpdate,
       DISPATCH_METHOD,
       {small_v, alpha, text, empty, owner}},
      {"bad type",
       update(v, 5, text, empty, &domain),
       kUpdate,
       DISPATCH_METHOD,
       {v, five, text, empty, owner}},
      {"bad value",
       update(v, 1, text, empty, &domain),
       kUpdate,
       DISPATCH_METHOD,
       {v, number, text, empty, owner}},
      {"null", update(v, 0, null, empty, &domain), kUpdate, DISPATCH_METHOD, {v, alpha, null, empty, owner}},
      {"failing owner",
       update(v, 0, text, empty, &gone),
       kUpdate,
       DISPATCH_METHOD,
       {v, alpha, text, empty, bad_owner}},
      {"update1",
       [&](_Variable* o) { return Of(o->raw_Update1(v, 0, text, text, nullptr, suffixed, &status), status); },
       kUpdate1,
       DISPATCH_METHOD,
       {v, alpha, text, text, Bare(VT_DISPATCH), suffixed}},
      {"update1 without a name",
       [&](_Variable* o) { return Of(o->raw_Update1(v, 0, text, text, &domain, missing, &status), status); },
       kUpdate1,
       DISPATCH_METHOD,
       {v, alpha, text, text, owner}},
      {"duplicate",
       [&](_Variable* o) { return Of(o->raw_Duplicate(taken, &domain, &status), status); },
       kDuplicate,
       DISPATCH_METHOD,
       {taken, owner}},
      {"initialize",
       [&](_Variable* o) { return Of(o->raw_Initialize(&domain, &status), status); },
       kInitialize,
       DISPATCH_METHOD,
       {owner}},
      {"initialize of a failing owner",
       [&](_Variable* o) { return Of(o->raw_Initialize(&gone, &status), status); },
       kInitialize,
       DISPATCH_METHOD,
       {bad_owner}},
      {"initialize1",
       [&](_Variable* o) { return Of(o->raw_Initialize1(folder, &status), status); },
       kInitialize1,
       DISPATCH_METHOD,
       {folder}},
      {"kind", get(&_Variable::get_VarType), kVarType, DISPATCH_PROPERTYGET, {}},
      {"value", get(&_Variable::get_Value), kValue, DISPATCH_PROPERTYGET, {}},
      {"init", get(&_Variable::get_Init), kInit, DISPATCH_PROPERTYGET, {}},
      {"type",
       [&](_Variable* o) { return Of(o->get_DataType(&status), status); },
       kDataType,
       DISPATCH_PROPERTYGET,
       {}},
      {"rename",
       [&](_Variable* o) { return Of(o->put_key(name.get()), Variant()); },
       kKey,
       DISPATCH_PROPERTYPUT,
       {renamed}},
      {"name",
       [](_Variable* o) {
         Bstr key;
         HRESULT result = o->get_key(key.Receive());
         return Of(result, Variant(key.view()));
       },
       kKey,
       DISPATCH_PROPERTYGET,
       {}},
  };
  ObjectPtr<Variable> by_slot = Variable::Create(), by_name = Variable::Create();
  for (const auto& variable : {by_slot, by_name}) {
    variable->key = u"X";
    variable->SetVarType(u"V");
    variable->SetInit(u"init");
  }
  for (const auto& c : cases) {
    TakeErrorInfo();
    Early early = c.early(by_slot.get());
    ErrorText early_info = TakeErrorInfo();
    Reply late = Call(by_name.get(), c.member, c.flags, c.arguments);
    EXPECT_EQ(late.result, FAILED(early.result) ? DISP_E_EXCEPTION : S_OK) << c.what;
    EXPECT_EQ(late.number, FAILED(early.result) ? early.result : 0) << c.what;
    EXPECT_EQ(Shown(late.value), early.value) << c.what;
    EXPECT_EQ(early_info.present, FAILED(early.result)) << c.what;
    EXPECT_EQ(late.source, early_info.source) << c.what;
    EXPECT_EQ(late.description, early_info.description) << c.what;
    EXPECT_EQ(TakeErrorInfo(), early_info) << c.what;
  }
  EXPECT_EQ(by_slot->key, u"Renamed");
}

TEST_F(SurfaceTest, NumbersOfFailuresOnTheWire) {
  ObjectPtr<Variable> variable = Variable::Create();
  SHORT status = 7;
  auto update = [&](SHORT type, const Variant& value) {
    status = 7;
    return static_cast<std::uint32_t>(
        variable->raw_Update(Variant(u"V"), type, value, Variant(), nullptr, &status));
  };
  EXPECT_EQ(update(5, Variant()), 0x800405DDu);
  EXPECT_EQ(status, 0) << "a result is cleared before the call";
  EXPECT_EQ(TakeErrorInfo(), (ErrorText{true, u"Variable:DataType Property Let", u"Type incorrect"}));
  EXPECT_EQ(update(1, u"3000000000"), 0x800A0006u);
  EXPECT_EQ(TakeErrorInfo(), (ErrorText{true, u"MOXEL", u"Overflow"}));
  EXPECT_EQ(update(6, u"x"), 0x800A000Du);
  EXPECT_EQ(update(0, Variant::Null()), 0x800A005Eu);
  Owner owner({IID__Domaine}, u"D");
  owner.Fail(DISP_E_EXCEPTION, 70000);
  EXPECT_EQ(variable->raw_Initialize(&owner, &status), kApplication + 1507);
  EXPECT_EQ(variable->raw_Duplicate(Variant(u"X"), &owner, &status), E_FAIL)
      << "no failure may read as success";
  EXPECT_EQ(TakeErrorInfo(), (ErrorText{true, u"Owner:key", u"The owner has gone"}));
  SetLanguage(StoredNumber(5));
  EXPECT_EQ(update(2, u"x"), 0x800A0146u);
  EXPECT_EQ(TakeErrorInfo(), (ErrorText{true, u"MOXEL", u"Resource with identifier '1053' not found"}));
}

TEST_F(SurfaceTest, AnOldFailureDoesNotDescribeANewOne) {
  ObjectPtr<Variable> variable = Variable::Create();
  Owner owner({IID__Domaine}, u"D");
  owner.Fail(DISP_E_UNKNOWNNAME);
  SHORT status = 0;
  EXPECT_EQ(variable->raw_Update(Variant(u"v"), 0, Variant(), Variant(), nullptr, &status),
            kApplication + 1500);
  EXPECT_EQ(variable->raw_Duplicate(Variant(u"Y"), &owner, &status), DISP_E_UNKNOWNNAME);
  EXPECT_EQ(TakeErrorInfo(), (ErrorText{true, u"MOXEL", u"Automation error"}));
}

TEST_F(SurfaceTest, NullPointersAreRefusedNotFollowed) {
  ObjectPtr<Variable> variable = Variable::Create();
  ObjectPtr<RootVar> root_var = RootVar::Create();
  Variant text(u"x");
  EXPECT_EQ(variable->get_key(nullptr), E_POINTER);
  EXPECT_EQ(variable->get_VarType(nullptr), E_POINTER);
  EXPECT_EQ(variable->get_Value(nullptr), E_POINTER);
  EXPECT_EQ(variable->get_Init(nullptr), E_POINTER);
  EXPECT_EQ(variable->get_DataType(nullptr), E_POINTER);
  EXPECT_EQ(variable->raw_Duplicate(text, nullptr, nullptr), E_POINTER);
  EXPECT_EQ(variable->raw_Update(Variant(u"V"), 0, text, text, nullptr, nullptr), E_POINTER);
  EXPECT_EQ(variable->raw_Update1(Variant(u"V"), 0, text, text, nullptr, text, nullptr), E_POINTER);
  EXPECT_EQ(variable->raw_Initialize(nullptr, nullptr), E_POINTER);
  EXPECT_EQ(variable->raw_Initialize1(text, nullptr), E_POINTER);
  EXPECT_EQ(Shown(variable->VarType()), "empty") << "nothing happens without a place for the result";
  EXPECT_FALSE(Exists(""));
  _Variable* found = variable.get();
  EXPECT_EQ(root_var->raw_RecupVariable(&text, &text, &text, nullptr), E_POINTER);
  EXPECT_EQ(root_var->raw_RecupVariable(nullptr, &text, &text, &found), E_POINTER);
  EXPECT_EQ(found, nullptr);
  EXPECT_EQ(root_var->raw_RecupVariable(&text, nullptr, &text, &found), E_POINTER);
  EXPECT_EQ(root_var->raw_RecupVariable(&text, &text, nullptr, &found), E_POINTER);
  EXPECT_EQ(variable->put_key(nullptr), S_OK) << "a null text is the empty text";
  EXPECT_EQ(variable->key, u"");
}

TEST_F(SurfaceTest, TextsCrossTheInterfaceWhole) {
  const std::u16string huge(1 << 20, u'\u20AC');
  const std::u16string with_zero(u"a\0b", 3);
  ObjectPtr<Variable> variable = Variable::Create();
  for (const std::u16string& text : {huge, with_zero, std::u16string(u"\xD83D\xDE00")}) {
    ASSERT_EQ(variable->put_key(Bstr(text).get()), S_OK);
    Bstr key;
    ASSERT_EQ(variable->get_key(key.Receive()), S_OK);
    EXPECT_TRUE(key.view() == text);
    variable->SetValue(text);
    Variant early;
    ASSERT_EQ(variable->get_Value(&early), S_OK);
    EXPECT_TRUE(early.text() == text);
    EXPECT_TRUE(GetOf(variable.get(), kValue).value.text() == text);
    EXPECT_NE(early.bstrVal, variable->Value().bstrVal) << "a copy is handed over";
  }
}

}  // namespace
}  // namespace moxel::test
