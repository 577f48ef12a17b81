#include <gtest/gtest.h>

#include <string>
#include <thread>

#include "moxel/platform.h"

namespace {

std::u16string Take(BSTR text) {
  std::u16string taken(text, SysStringLen(text));
  SysFreeString(text);
  return taken;
}

// An error object whose end can be seen.
struct Witness final : IErrorInfo {
  HRESULT QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
  ULONG AddRef() override { return ++references; }
  ULONG Release() override { return --references; }
  HRESULT GetGUID(GUID*) override { return E_NOTIMPL; }
  HRESULT GetSource(BSTR*) override { return E_NOTIMPL; }
  HRESULT GetDescription(BSTR*) override { return E_NOTIMPL; }
  HRESULT GetHelpFile(BSTR*) override { return E_NOTIMPL; }
  HRESULT GetHelpContext(DWORD*) override { return E_NOTIMPL; }
  ULONG references = 1;
};

TEST(ErrorInfo, CarriesItsTexts) {
  ICreateErrorInfo* maker = nullptr;
  ASSERT_EQ(CreateErrorInfo(&maker), S_OK);
  IErrorInfo* info = nullptr;
  ASSERT_EQ(maker->QueryInterface(IID_IErrorInfo, reinterpret_cast<void**>(&info)), S_OK);

  BSTR unset = nullptr;
  EXPECT_EQ(info->GetSource(&unset), S_OK);
  EXPECT_EQ(Take(unset), u"");

  std::u16string source = u"Domaines:NewDomain";
  std::u16string description = u"Renseigner le nom du domaine";
  std::u16string file = u"help.chm";
  EXPECT_EQ(maker->SetSource(source.data()), S_OK);
  EXPECT_EQ(maker->SetDescription(file.data()), S_OK);
  EXPECT_EQ(maker->SetDescription(description.data()), S_OK);
  EXPECT_EQ(maker->SetHelpFile(file.data()), S_OK);
  EXPECT_EQ(maker->SetHelpContext(7), S_OK);
  EXPECT_EQ(maker->SetGUID(IID_IDispatch), S_OK);

  BSTR texts[3] = {};
  GUID guid = GUID_NULL;
  DWORD context = 0;
  EXPECT_EQ(info->GetSource(&texts[0]), S_OK);
  EXPECT_EQ(info->GetDescription(&texts[1]), S_OK);
  EXPECT_EQ(info->GetHelpFile(&texts[2]), S_OK);
  EXPECT_EQ(info->GetHelpContext(&context), S_OK);
  EXPECT_EQ(info->GetGUID(&guid), S_OK);
  EXPECT_EQ(Take(texts[0]), source);
  EXPECT_EQ(Take(texts[1]), description);
  EXPECT_EQ(Take(texts[2]), file);
  EXPECT_EQ(context, 7u);
  EXPECT_TRUE(guid == IID_IDispatch);

  IUnknown* from_maker = nullptr;
  IUnknown* from_info = nullptr;
  ASSERT_EQ(maker->QueryInterface(IID_IUnknown, reinterpret_cast<void**>(&from_maker)), S_OK);
  ASSERT_EQ(info->QueryInterface(IID_IUnknown, reinterpret_cast<void**>(&from_info)), S_OK);
  EXPECT_EQ(from_maker, from_info);
  void* none = &guid;
  EXPECT_EQ(info->QueryInterface(IID_IDispatch, &none), E_NOINTERFACE);
  EXPECT_EQ(none, nullptr);
  from_info->Release();
  from_maker->Release();
  info->Release();
  EXPECT_EQ(maker->Release(), 0u);
}

TEST(ErrorInfo, GettingItClearsIt) {
  Witness witness;
  IErrorInfo* got = &witness;
  SetErrorInfo(0, nullptr);
  EXPECT_EQ(GetErrorInfo(0, &got), S_FALSE);
  EXPECT_EQ(got, nullptr);
  EXPECT_EQ(SetErrorInfo(0, &witness), S_OK);
  EXPECT_EQ(SetErrorInfo(0, &witness), S_OK);
  EXPECT_EQ(witness.references, 2u);
  EXPECT_EQ(GetErrorInfo(0, &got), S_OK);
  EXPECT_EQ(got, &witness);
  got->Release();
  EXPECT_EQ(witness.references, 1u);
  EXPECT_EQ(GetErrorInfo(0, &got), S_FALSE);
  EXPECT_EQ(SetErrorInfo(1, &witness), E_INVALIDARG);
  EXPECT_EQ(GetErrorInfo(0, nullptr), E_INVALIDARG);
}

TEST(ErrorInfo, BelongsToItsThreadAndEndsWithIt) {
  Witness witness;
  SetErrorInfo(0, nullptr);
  std::thread([&] {
    SetErrorInfo(0, &witness);
    EXPECT_EQ(witness.references, 2u);
  }).join();
  EXPECT_EQ(witness.references, 1u);
  IErrorInfo* got = nullptr;
  EXPECT_EQ(GetErrorInfo(0, &got), S_FALSE);
}

}  // namespace
