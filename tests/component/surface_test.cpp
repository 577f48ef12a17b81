#include "component/surface.h"

#include <gtest/gtest.h>

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
  const IID all[] = {IID_IUnknown, IID_IDispatch, IID_ISupportErrorInfo, IID__Variable};
  for (const IID& from : all) {
    auto* face = static_cast<IUnknown*>(Ask(variable.get(), from));
    for (const IID& to : all) EXPECT_EQ(Ask(face, to), Ask(variable.get(), to));
    EXPECT_EQ(Ask(face, IID_IUnknown), variable.get());
    for (const IID& unknown : {IID__RootVar, IID_IClassFactory, GUID_NULL}) {
      void* found = &found;
      EXPECT_EQ(face->QueryInterface(unknown, &found), E_NOINTERFACE);
      EXPECT_EQ(found, nullptr);
    }
    EXPECT_EQ(face->QueryInterface(IID_IUnknown, nullptr), E_POINTER);
  }
  auto* support = static_cast<ISupportErrorInfo*>(Ask(variable.get(), IID_ISupportErrorInfo));
  EXPECT_EQ(support->InterfaceSupportsErrorInfo(IID__Variable), S_OK);
  EXPECT_EQ(support->InterfaceSupportsErrorInfo(IID_IDispatch), S_OK);
  EXPECT_EQ(support->InterfaceSupportsErrorInfo(IID__RootVar), S_FALSE);
}

TEST_F(SurfaceTest, ReferencesAreCountedAndKeepTheLibraryLoaded) {
  ObjectPtr<Variable> variable = Variable::Create();
  auto* support = static_cast<IUnknown*>(Ask(variable.get(), IID_ISupportErrorInfo));
  EXPECT_EQ(variable->AddRef(), 2u);
  EXPECT_EQ(support->Release(), 1u);
  EXPECT_EQ(DllCanUnloadNow(), S_FALSE);
  variable = nullptr;
  EXPECT_EQ(DllCanUnloadNow(), S_OK);
}

TEST_F(SurfaceTest, NumbersOfFailuresOnTheWire) {
  ObjectPtr<Variable> variable = Variable::Create();
  SHORT status = 7;
  auto expect = [](HRESULT result, std::uint32_t number, const ErrorText& info) {
    EXPECT_EQ(static_cast<std::uint32_t>(result), number);
    EXPECT_EQ(TakeErrorInfo(), info);
  };
  auto update = [&](SHORT type, const Variant& value) {
    return variable->raw_Update(Variant(u"V"), type, value, Variant(), nullptr, &status);
  };
  expect(update(5, {}), 0x800405DD, {true, u"Variable:DataType Property Let", u"Type incorrect"});
  EXPECT_EQ(status, 0) << "a result is cleared before the call";
  expect(update(1, u"3000000000"), 0x800A0006, {true, u"MOXEL", u"Overflow"});
  expect(update(0, Variant::Null()), 0x800A005E, {true, u"MOXEL", u"Invalid use of Null"});
  Owner owner({IID__Domaine}, u"D");
  owner.Fail(DISP_E_EXCEPTION, 70000);  // no failure may read as success
  auto duplicate = [&] { return variable->raw_Duplicate(Variant(u"X"), &owner, &status); };
  expect(duplicate(), static_cast<std::uint32_t>(E_FAIL), {true, u"Owner:key", u"The owner has gone"});
  update(5, {});
  owner.Fail(DISP_E_UNKNOWNNAME);  // an old failure does not describe a new one
  expect(duplicate(), 0x80020006, {true, u"MOXEL", u"Automation error"});
  SetLanguage(StoredNumber(5));
  expect(update(2, u"x"), 0x800A0146, {true, u"MOXEL", u"Resource with identifier '1053' not found"});
}

TEST_F(SurfaceTest, NullPointersAreRefusedNotFollowed) {
  ObjectPtr<Variable> variable = Variable::Create();
  ObjectPtr<RootVar> root_var = RootVar::Create();
  Variant v(u"V");
  _Variable* found = variable.get();
  for (HRESULT result :
       {variable->GetTypeInfoCount(nullptr), variable->GetTypeInfo(0, 0, nullptr),
        variable->get_Value(nullptr), variable->raw_Duplicate(v, nullptr, nullptr),
        variable->raw_Update(v, 0, v, v, nullptr, nullptr), root_var->raw_RecupVariable(&v, &v, &v, nullptr),
        root_var->raw_RecupVariable(nullptr, &v, &v, &found),
        root_var->raw_RecupVariable(&v, &v, nullptr, &found)})
    EXPECT_EQ(result, E_POINTER);
  EXPECT_EQ(found, nullptr);
  EXPECT_EQ(Shown(variable->VarType()), "empty") << "nothing happens without a place for the result";
  EXPECT_FALSE(Exists(""));
  EXPECT_EQ(variable->put_key(nullptr), S_OK) << "a null text is the empty text";
}

TEST_F(SurfaceTest, TextsCrossTheInterfaceWhole) {
  ObjectPtr<Variable> variable = Variable::Create();
  for (const std::u16string& text :
       {std::u16string(1 << 20, u'\u20AC'), std::u16string(u"a\0\xD83D\xDE00", 4)}) {
    Bstr key;
    ASSERT_EQ(variable->put_key(Bstr(text).get()), S_OK);
    ASSERT_EQ(variable->get_key(key.Receive()), S_OK);
    EXPECT_TRUE(key.view() == text);
    variable->SetValue(text);
    Variant value;
    ASSERT_EQ(variable->get_Value(&value), S_OK);
    EXPECT_TRUE(value.text() == text);
    EXPECT_NE(value.bstrVal, variable->Value().bstrVal) << "a copy is handed over";
  }
}

}  // namespace
}  // namespace moxel::test
