#include "component/class_factory.h"

#include <gtest/gtest.h>

#include <thread>

#include "moxel/component.h"
#include "tests/component/calls.h"

namespace moxel::test {
namespace {

// No thread of these tests is started up but by the factory.
class ClassFactoryTest : public RegistryTest {
 protected:
  static ObjectPtr<IClassFactory> Factory() {
    ObjectPtr<IClassFactory> factory;
    EXPECT_EQ(DllGetClassObject(CLSID_RootVar, IID_IClassFactory, factory.ReceiveAny()), S_OK);
    return factory;
  }
};

TEST_F(ClassFactoryTest, OnlyKnownClassesHaveFactories) {
  const struct {
    CLSID clsid;
    IID iid;
    HRESULT result;
  } cases[] = {
      {CLSID_RootVar, IID_IClassFactory, S_OK},
      {CLSID_RootVar, IID_IUnknown, S_OK},
      {CLSID_RootVar, IID_IDispatch, E_NOINTERFACE},
      {CLSID_RootVar, IID__RootVar, E_NOINTERFACE},
      {CLSID_Variable, IID_IClassFactory, CLASS_E_CLASSNOTAVAILABLE},
      {CLSID_Variables, IID_IClassFactory, CLASS_E_CLASSNOTAVAILABLE},
      {IID__RootVar, IID_IClassFactory, CLASS_E_CLASSNOTAVAILABLE},
      {GUID_NULL, IID_IClassFactory, CLASS_E_CLASSNOTAVAILABLE},
  };
  for (const auto& c : cases) {
    int dummy = 0;
    void* found = &dummy;
    EXPECT_EQ(DllGetClassObject(c.clsid, c.iid, &found), c.result);
    EXPECT_EQ(found != nullptr, c.result == S_OK);
    EXPECT_EQ(found ? static_cast<IUnknown*>(found)->Release() : 0u, 0u);
  }
  EXPECT_EQ(DllGetClassObject(CLSID_RootVar, IID_IClassFactory, nullptr), E_POINTER);
  EXPECT_EQ(DllCanUnloadNow(), S_OK);
}

TEST_F(ClassFactoryTest, ObjectsComeAsTheInterfaceAskedFor) {
  ObjectPtr<IClassFactory> factory = Factory();
  const struct {
    IID iid;
    HRESULT result;
  } cases[] = {{IID__RootVar, S_OK},           {IID_IDispatch, S_OK},
               {IID_IUnknown, S_OK},           {IID_ISupportErrorInfo, S_OK},
               {IID__Variable, E_NOINTERFACE}, {IID_IClassFactory, E_NOINTERFACE}};
  for (const auto& c : cases) {
    int dummy = 0;
    void* object = &dummy;
    EXPECT_EQ(factory->CreateInstance(nullptr, c.iid, &object), c.result);
    EXPECT_EQ(object != nullptr, c.result == S_OK);
    EXPECT_EQ(object ? static_cast<IUnknown*>(object)->Release() : 0u, 0u);
  }
  void* object = &object;
  EXPECT_EQ(factory->CreateInstance(factory.get(), IID_IUnknown, &object), CLASS_E_NOAGGREGATION);
  EXPECT_EQ(object, nullptr);
  EXPECT_EQ(factory->CreateInstance(nullptr, IID_IUnknown, nullptr), E_POINTER);
  factory = nullptr;
  EXPECT_EQ(DllCanUnloadNow(), S_OK);
}

TEST_F(ClassFactoryTest, ServerLocksKeepTheLibraryLoaded) {
  ObjectPtr<IClassFactory> factory = Factory();
  EXPECT_EQ(factory->LockServer(1), S_OK);
  EXPECT_EQ(factory->LockServer(1), S_OK);
  factory = nullptr;
  EXPECT_EQ(DllCanUnloadNow(), S_FALSE);
  EXPECT_EQ(Factory()->LockServer(0), S_OK);
  EXPECT_EQ(DllCanUnloadNow(), S_FALSE);
  EXPECT_EQ(Factory()->LockServer(0), S_OK);
  EXPECT_EQ(DllCanUnloadNow(), S_OK);
}

// Looks up Domain\D\Var\X with a new object: its value, or the failure of the creation.
std::string LookUp() {
  ObjectPtr<IClassFactory> factory;
  DllGetClassObject(CLSID_RootVar, IID_IClassFactory, factory.ReceiveAny());
  ObjectPtr<_RootVar> root_var;
  HRESULT created = factory->CreateInstance(nullptr, IID__RootVar, root_var.ReceiveAny());
  if (FAILED(created)) {
    char number[16];
    std::snprintf(number, sizeof number, "%08X", static_cast<unsigned>(created));
    ErrorText info = TakeErrorInfo();
    return number + Shown(Variant(info.source)) + Shown(Variant(info.description));
  }
  Variant domain(u"D"), scenario(u""), name(u"X"), value;
  ObjectPtr<_Variable> variable;
  root_var->raw_RecupVariable(&domain, &scenario, &name, variable.Receive());
  if (!variable) return "no object";
  variable->get_Value(&value);
  return Shown(value);
}

TEST_F(ClassFactoryTest, EveryThreadIsStartedUpBeforeItsFirstObject) {
  WriteRecord("Domain\\D\\Var\\X", {{"Value", StoredText("x")}});
  for (int i = 0; i < 2; ++i) {
    std::string found;
    std::thread([&] { found = LookUp(); }).join();
    EXPECT_EQ(found, "'x'");
  }
}

TEST_F(ClassFactoryTest, AThreadWhoseStartFailedStartsAgain) {
  WriteRecord("Domain\\D\\Var\\X", {{"Value", StoredText("x")}});
  std::vector<std::string> answers;
  std::thread([&] {
    SetLanguage(StoredText("English"));
    answers.push_back(LookUp());
    answers.push_back(LookUp());
    SetLanguage(StoredText("9999999999"));
    answers.push_back(LookUp());
    SetLanguage(StoredText("10000"));
    answers.push_back(LookUp());
    SetLanguage(StoredText("English"));
    answers.push_back(LookUp());  // once started, a thread stays so
  }).join();
  const std::string mismatch = "800A000D'MOXEL''Type mismatch'";
  EXPECT_EQ(answers,
            (std::vector<std::string>{mismatch, mismatch, "800A0006'MOXEL''Overflow'", "'x'", "'x'"}));
  EXPECT_EQ(DllCanUnloadNow(), S_OK);
}

}  // namespace
}  // namespace moxel::test
