#include "component/class_factory.h"

#include <gtest/gtest.h>

#include <tuple>

#include "moxel/component.h"
#include "tests/component/calls.h"
#include "tests/support/configuration.h"

namespace moxel::test {
namespace {

// No thread of these tests is started up but by the factory.
class ClassFactoryTest : public RegistryTest {
 protected:
  void TearDown() override { EXPECT_EQ(DllCanUnloadNow(), S_OK) << "references do not balance"; }
};

ObjectPtr<IClassFactory> Factory() {
  ObjectPtr<IClassFactory> factory;
  EXPECT_EQ(DllGetClassObject(CLSID_RootVar, IID_IClassFactory, factory.ReceiveAny()), S_OK);
  return factory;
}

// Hands over one new reference or, with any failure, none.
template <class Make>
void ExpectMade(HRESULT expected, Make&& make) {
  void* found = &found;
  EXPECT_EQ(make(&found), expected);
  EXPECT_EQ(found != nullptr, expected == S_OK);
  EXPECT_EQ(found ? static_cast<IUnknown*>(found)->Release() : 0u, 0u);
}

TEST_F(ClassFactoryTest, ClassesAndInterfacesThatCanBeHad) {
  const std::tuple<CLSID, IID, HRESULT> factories[] = {
      {CLSID_RootVar, IID_IClassFactory, S_OK},
      {CLSID_RootVar, IID__RootVar, E_NOINTERFACE},
      {CLSID_Variable, IID_IClassFactory, CLASS_E_CLASSNOTAVAILABLE},
      {IID__RootVar, IID_IClassFactory, CLASS_E_CLASSNOTAVAILABLE}};
  for (const auto& [clsid, iid, result] : factories)
    ExpectMade(result, [&](void** found) { return DllGetClassObject(clsid, iid, found); });
  const std::pair<IID, HRESULT> objects[] = {
      {IID__RootVar, S_OK},          {IID_IDispatch, S_OK},          {IID_IUnknown, S_OK},
      {IID_ISupportErrorInfo, S_OK}, {IID__Variable, E_NOINTERFACE}, {IID_IClassFactory, E_NOINTERFACE}};
  const ObjectPtr<IClassFactory> factory = Factory();
  for (const auto& [iid, result] : objects)
    ExpectMade(result, [&](void** found) { return factory->CreateInstance(nullptr, iid, found); });
  ExpectMade(CLASS_E_NOAGGREGATION,
             [&](void** found) { return factory->CreateInstance(factory.get(), IID_IUnknown, found); });
  EXPECT_EQ(DllGetClassObject(CLSID_RootVar, IID_IClassFactory, nullptr), E_POINTER);
  EXPECT_EQ(factory->CreateInstance(nullptr, IID_IUnknown, nullptr), E_POINTER);
}

TEST_F(ClassFactoryTest, ServerLocksKeepTheLibraryLoaded) {
  for (BOOL lock : {1, 1, 0}) {
    EXPECT_EQ(Factory()->LockServer(lock), S_OK);
    EXPECT_EQ(DllCanUnloadNow(), S_FALSE);
  }
  EXPECT_EQ(Factory()->LockServer(0), S_OK);
}

// Looks up Domain\D\Var\X with a new object: its value, or the failure of the creation.
std::string LookUp() {
  ObjectPtr<_RootVar> root_var;
  if (FAILED(Factory()->CreateInstance(nullptr, IID__RootVar, root_var.ReceiveAny()))) {
    const ErrorText info = TakeErrorInfo();
    return Shown(Variant(info.source)) + Shown(Variant(info.description));
  }
  Variant domain(u"D"), scenario(u""), name(u"X"), value;
  ObjectPtr<_Variable> variable;
  root_var->raw_RecupVariable(&domain, &scenario, &name, variable.Receive());
  if (variable) variable->get_Value(&value);
  return Shown(value);
}

TEST_F(ClassFactoryTest, EveryThreadStartsUpBeforeItsFirstObjectUntilThatSucceeds) {
  Configure("Domain\\D\\Var\\X  Value=x");
  std::string answers;
  for (int i = 0; i < 2; ++i)
    OnAnotherThread([&] {
      // Once started, a thread stays so.
      for (const char* language : {"English", "English", "9999999999", "10000", "English"}) {
        SetLanguage(StoredText(language));
        answers += LookUp() + " ";
      }
    });
  const std::string mismatch = "'MOXEL''Type mismatch' ", overflow = "'MOXEL''Overflow' ";
  const std::string expected = mismatch + mismatch + overflow + "'x' 'x' ";
  EXPECT_EQ(answers, expected + expected);
}

}  // namespace
}  // namespace moxel::test
