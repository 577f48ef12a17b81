#include <gtest/gtest.h>

#include <string>
#include <thread>

#include "moxel/platform.h"

namespace {

void* Ask(IUnknown* object, REFIID iid) {
  void* found = &found;
  const HRESULT result = object->QueryInterface(iid, &found);
  EXPECT_EQ(result, found == nullptr ? E_NOINTERFACE : S_OK);
  return found;
}

std::u16string Read(IErrorInfo* info, HRESULT (IErrorInfo::*get)(BSTR*)) {
  BSTR text = nullptr;
  EXPECT_EQ((info->*get)(&text), S_OK);
  std::u16string taken(text, SysStringLen(text));
  SysFreeString(text);
  return taken;
}

TEST(ErrorInfo, CarriesItsTexts) {
  ICreateErrorInfo* maker = nullptr;
  ASSERT_EQ(CreateErrorInfo(&maker), S_OK);
  auto* info = static_cast<IErrorInfo*>(Ask(maker, IID_IErrorInfo));
  EXPECT_EQ(Read(info, &IErrorInfo::GetSource), u"");
  char16_t source[] = u"source", description[] = u"description", file[] = u"help.chm";
  for (char16_t* text : {file, description}) EXPECT_EQ(maker->SetDescription(text), S_OK);
  EXPECT_EQ(maker->SetSource(source) | maker->SetHelpFile(file), S_OK);
  EXPECT_EQ(maker->SetHelpContext(7) | maker->SetGUID(IID_IDispatch), S_OK);
  GUID guid = GUID_NULL;
  DWORD context = 0;
  EXPECT_TRUE(info->GetGUID(&guid) == S_OK && guid == IID_IDispatch);
  EXPECT_TRUE(info->GetHelpContext(&context) == S_OK && context == 7);
  EXPECT_EQ(Read(info, &IErrorInfo::GetSource), source);
  EXPECT_EQ(Read(info, &IErrorInfo::GetDescription), description);
  EXPECT_EQ(Read(info, &IErrorInfo::GetHelpFile), file);

  EXPECT_EQ(Ask(maker, IID_IUnknown), Ask(info, IID_IUnknown));
  EXPECT_EQ(Ask(info, IID_IDispatch), nullptr);
  for (const ULONG left : {3u, 2u, 1u, 0u}) EXPECT_EQ(maker->Release(), left);
}

TEST(ErrorInfo, BelongsToItsThreadAndIsClearedByGettingIt) {
  ICreateErrorInfo* maker = nullptr;
  ASSERT_EQ(CreateErrorInfo(&maker), S_OK);
  auto* info = static_cast<IErrorInfo*>(Ask(maker, IID_IErrorInfo));
  std::thread([&] {
    for (int round = 0; round < 2; ++round) EXPECT_EQ(SetErrorInfo(0, info), S_OK);
    EXPECT_EQ(info->AddRef(), 4u);
  }).join();
  EXPECT_EQ(info->AddRef(), 4u);
  IErrorInfo* got = info;
  EXPECT_EQ(GetErrorInfo(0, &got), S_FALSE);
  EXPECT_EQ(got, nullptr);
  EXPECT_EQ(SetErrorInfo(0, info), S_OK);
  EXPECT_EQ(SetErrorInfo(1, nullptr), E_INVALIDARG);
  EXPECT_EQ(GetErrorInfo(0, &got), S_OK);
  EXPECT_EQ(got, info);
  EXPECT_EQ(GetErrorInfo(0, &got), S_FALSE);
  for (const ULONG left : {4u, 3u, 2u, 1u, 0u}) EXPECT_EQ(info->Release(), left);
}

}  // namespace
