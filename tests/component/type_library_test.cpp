#include "component/type_library.h"

#include <gtest/gtest.h>

#include <map>
#include <sstream>

#include "moxel/component.h"
#include "moxel/enumerations.h"
#include "root/root_var.h"
#include "tests/component/calls.h"
#include "variables/variables.h"

namespace moxel::test {
namespace {

template <class T, class Call>
T* Given(Call call) {
  T* result = nullptr;
  EXPECT_EQ(call(&result), S_OK);
  return result;
}

std::string NameOf(ITypeInfo* info, MEMBERID member = MEMBERID_NIL) {
  Bstr name;
  EXPECT_EQ(info->GetDocumentation(member, name.Receive(), nullptr, nullptr, nullptr), S_OK);
  return {name.view().begin(), name.view().end()};
}

ObjectPtr<ITypeInfo> Referred(ITypeInfo* info, HREFTYPE reference) {
  return ObjectPtr<ITypeInfo>::Adopt(
      Given<ITypeInfo>([&](auto** result) { return info->GetRefTypeInfo(reference, result); }));
}

ObjectPtr<ITypeInfo> Implemented(ITypeInfo* info, UINT index) {
  HREFTYPE reference = 0;
  EXPECT_EQ(info->GetRefTypeOfImplType(index, &reference), S_OK);
  return Referred(info, reference);
}

const TYPEATTR& Attributes(ITypeInfo* info) {
  return *Given<TYPEATTR>([&](auto** result) { return info->GetTypeAttr(result); });
}

std::string Shown(ITypeInfo* info, const TYPEDESC& type) {
  switch (type.vt) {
    case VT_PTR: return Shown(info, *type.lptdesc) + "*";
    case VT_USERDEFINED: return NameOf(Referred(info, type.hreftype).get());
    case VT_I2: return "I2";
    case VT_I4: return "I4";
    case VT_BSTR: return "BSTR";
    case VT_VARIANT: return "VARIANT";
    case VT_DISPATCH: return "DISPATCH";
    case VT_UNKNOWN: return "UNKNOWN";
    case VT_VOID: return "void";
    case VT_HRESULT: return "HRESULT";
    default: return "?";
  }
}

// A member in one line: "4 get I4 Count 68030000 hidden (in I2 wForce)", its slot counted from the first of
// IUnknown.
std::string Shown(ITypeInfo* info, UINT index) {
  const FUNCDESC& record = *Given<FUNCDESC>([&](auto** result) { return info->GetFuncDesc(index, result); });
  BSTR names[9] = {};
  UINT count = 0;
  EXPECT_EQ(info->GetNames(record.memid, names, 9, &count), S_OK);
  static const char* const kKinds[] = {"", "call", "get", "", "put", "", "", "", "putref"};
  std::ostringstream line;
  line << record.oVft / 8 << ' ' << kKinds[record.invkind] << ' ' << Shown(info, record.elemdescFunc.tdesc)
       << ' ' << NameOf(info, record.memid) << ' ' << std::hex << record.memid
       << (record.wFuncFlags & FUNCFLAG_FHIDDEN ? " hidden" : "") << " (";
  for (SHORT i = 0; i < record.cParams; ++i) {
    const ELEMDESC& parameter = record.lprgelemdescParam[i];
    const USHORT flags = parameter.paramdesc.wParamFlags;
    line << (i ? ", " : "") << (flags & PARAMFLAG_FOPT ? "opt " : "") << (flags & PARAMFLAG_FIN ? "in" : "")
         << (flags & PARAMFLAG_FOUT ? "out" : "") << (flags & PARAMFLAG_FRETVAL ? "ret" : "") << ' '
         << Shown(info, parameter.tdesc);
    const auto name = static_cast<UINT>(i + 1);
    if (name < count) line << ' ' << std::string(names[name], names[name] + SysStringLen(names[name]));
  }
  for (BSTR name : names) SysFreeString(name);
  return line.str() + ")";
}

class TypeLibraryTest : public ProductTest {
 protected:
  TypeLibraryTest() {
    UINT count = 0;
    EXPECT_EQ(object_->GetTypeInfoCount(&count), S_OK);
    EXPECT_EQ(count, 1u);
    EXPECT_EQ(object_->GetTypeInfo(0, 0, info_.Receive()), S_OK);
    EXPECT_EQ(info_->GetContainingTypeLib(library_.Receive(), &place_), S_OK);
  }

  ObjectPtr<ITypeInfo> Find(REFGUID guid) {
    return ObjectPtr<ITypeInfo>::Adopt(
        Given<ITypeInfo>([&](auto** result) { return library_->GetTypeInfoOfGuid(guid, result); }));
  }

  ObjectPtr<Variables> object_ = Variables::Create();
  ObjectPtr<ITypeInfo> info_;
  ObjectPtr<ITypeLib> library_;
  UINT place_ = 0;
};

TEST_F(TypeLibraryTest, MembersAreDescribedAsTheyAreCalled) {
  ObjectPtr<ITypeInfo> users = Find(IID__Utilisateurs), user = Find(IID__User), root = Find(IID__Root);
  const std::tuple<ITypeInfo*, UINT, const char*> cases[] = {
      {users.get(), 0,
       "7 call _User* NewUser 60030001 (inout BSTR* wUser, in VARIANT wPassword, in VARIANT wPwdConf, in I2 "
       "wPermission)"},
      {users.get(), 1, "8 call I2 DeleteUser 60030002 (inout _User** wUser)"},
      {users.get(), 3, "10 get _User* Item 0 (inout VARIANT* vntIndexKey)"},
      {users.get(), 4, "11 get I4 Count 68030000 ()"},
      {users.get(), 5, "12 call void Remove 60030005 (inout VARIANT* vntIndexKey)"},
      {users.get(), 6, "13 get UNKNOWN NewEnum fffffffc hidden ()"},
      {user.get(), 1, "8 put void key 40030000 (in BSTR)"},
      {user.get(), 3,
       "10 call I2 Update 60030004 (inout I2* wPermission, opt in VARIANT wOldPwd, opt inout VARIANT* "
       "wNewPwd, opt inout VARIANT* wConfPwd)"},
      {root.get(), 1, "8 putref void Utilisateurs 68030002 (in _Utilisateurs*)"},
      {info_.get(), 5, "12 call I2 DeleteVariable 60030004 (in _Variable* wVariable, in DISPATCH wObj)"},
  };
  for (const auto& [info, index, line] : cases) EXPECT_EQ(Shown(info, index), line);
  const ObjectPtr<ITypeInfo> slots = Implemented(users.get(), ~0u);
  EXPECT_EQ(Shown(slots.get(), 0),
            "7 call HRESULT NewUser 60030001 (inout BSTR* wUser, in VARIANT wPassword, in VARIANT wPwdConf, "
            "in I2 wPermission, outret _User**)");
  EXPECT_EQ(Shown(slots.get(), 5), "12 call HRESULT Remove 60030005 (inout VARIANT* vntIndexKey)");
  EXPECT_EQ(Implemented(slots.get(), ~0u).get(), users.get());
  ObjectPtr<ITypeLib> owner;
  UINT place = 0, place_of_slots = 1;
  users->GetContainingTypeLib(owner.Receive(), &place);
  EXPECT_EQ(slots->GetContainingTypeLib(owner.Receive(), &place_of_slots), S_OK);
  EXPECT_EQ(place, place_of_slots);
  EXPECT_EQ(NameOf(Implemented(Implemented(slots.get(), 0).get(), 0).get()), "IUnknown");
  EXPECT_EQ(Given<FUNCDESC>([&](auto** result) { return user->GetFuncDesc(3, result); })->cParamsOpt, 3);
  const ObjectPtr<ITypeInfo> scenarios = Find(IID__Scenarios);
  EXPECT_EQ(Shown(scenarios.get(), 1), "8 call void Add 60030002 hidden (inout _Scenario** wScen)");
}

TEST_F(TypeLibraryTest, TheLibraryListsEnumerationsInterfacesAndClasses) {
  const TLIBATTR& library = *Given<TLIBATTR>([&](auto** result) { return library_->GetLibAttr(result); });
  EXPECT_TRUE(library.guid == kLibraryId && library.wMajorVerNum == 1 && library.wMinorVerNum == 4);
  std::map<TYPEKIND, std::string> names;
  std::string creatable;
  for (UINT i = 0; i < library_->GetTypeInfoCount(); ++i) {
    ObjectPtr<ITypeInfo> type;
    ASSERT_EQ(library_->GetTypeInfo(i, type.Receive()), S_OK);
    const TYPEATTR& attributes = Attributes(type.get());
    TYPEKIND kind{};
    library_->GetTypeInfoType(i, &kind);
    EXPECT_EQ(kind, attributes.typekind);
    names[kind] += NameOf(type.get()) + " ";
    if (attributes.wTypeFlags & TYPEFLAG_FCANCREATE) creatable += NameOf(type.get()) + " ";
    if (kind == TKIND_COCLASS) {
      EXPECT_EQ("_" + NameOf(type.get()), NameOf(Implemented(type.get(), 0).get()));
    }
    EXPECT_EQ((attributes.wTypeFlags & TYPEFLAG_FDUAL) != 0, kind == TKIND_DISPATCH);
  }
  EXPECT_EQ(names[TKIND_ENUM],
            "MXUserError lMXUserError MXVariableError lMXVariableError MXDomainError lMXDomainError "
            "MXScenarioError lMXScenarioError MXVariableType MXVariableDataType MXTraitementState "
            "MXScenarioState MXScenarioModeInit ");
  EXPECT_EQ(names[TKIND_COCLASS],
            "Root RootVar Domaines Domaine Scenarios Scenario Traitements Traitement Utilisateurs User "
            "Variables Variable ");
  EXPECT_EQ(creatable, "Root RootVar ");
  EXPECT_EQ(Find(IID__Variables).get(), info_.get());
  ObjectPtr<ITypeInfo> at_place;
  library_->GetTypeInfo(place_, at_place.Receive());
  EXPECT_EQ(at_place.get(), info_.get());
}

TEST_F(TypeLibraryTest, NamesAreFoundAndBoundInAnyLetterCase) {
  char16_t text[] = u"mxscenariostate_PAUSE";
  BOOL known = 0;
  EXPECT_EQ(library_->IsName(text, 0, &known), S_OK);
  EXPECT_TRUE(known);
  EXPECT_EQ(std::u16string(text), u"MXScenarioState_Pause");
  ITypeInfo* found[20] = {};
  MEMBERID members[20] = {};
  USHORT count = 20;
  char16_t update[] = u"UPDATE";
  EXPECT_EQ(library_->FindName(update, 0, found, members, &count), S_OK);
  std::string owners;
  for (USHORT i = 0; i < count; ++i) {
    owners += NameOf(found[i]) + " ";
    found[i]->Release();
  }
  EXPECT_EQ(owners, "_Domaine _User _Variable ");
  EXPECT_EQ(members[0], 0x60030004);
  auto bind = [](IUnknown* scope, std::u16string name, WORD flags, HRESULT expected = S_OK) {
    const auto compiler = ObjectPtr<ITypeComp>::Query(scope);
    ObjectPtr<ITypeInfo> owner;
    DESCKIND kind{};
    BINDPTR bound{};
    EXPECT_EQ(compiler->Bind(name.data(), 0, flags, owner.Receive(), &kind, &bound), expected);
    if (kind == DESCKIND_FUNCDESC)
      return NameOf(owner.get()) + " " + std::to_string(bound.lpfuncdesc->invkind);
    if (kind == DESCKIND_VARDESC)
      return NameOf(owner.get()) + " " + std::to_string(bound.lpvardesc->lpvarValue->lVal);
    return std::string("none");
  };
  EXPECT_EQ(bind(library_.get(), u"mxdomainerror_containelement", 0),
            "MXDomainError " + std::to_string(MXDomainError_ContainElement));
  const ObjectPtr<ITypeInfo> user = Find(IID__User);
  ObjectPtr<ITypeInfo> none;
  DESCKIND kind{};
  BINDPTR enumeration{};
  char16_t state[] = u"mxscenariostate";
  EXPECT_EQ(
      ObjectPtr<ITypeComp>::Query(library_.get())->Bind(state, 0, 0, none.Receive(), &kind, &enumeration),
      S_OK);
  ASSERT_EQ(kind, DESCKIND_TYPECOMP);
  EXPECT_EQ(bind(enumeration.lptcomp, u"MXScenarioState_Pause", 0), "MXScenarioState 2");
  enumeration.lptcomp->Release();
  EXPECT_EQ(bind(user.get(), u"KEY", DISPATCH_PROPERTYPUT), "_User 4");
  EXPECT_EQ(bind(user.get(), u"key", 0), "_User 2");
  EXPECT_EQ(bind(user.get(), u"key", DISPATCH_METHOD, TYPE_E_TYPEMISMATCH), "none");
  EXPECT_EQ(bind(user.get(), u"Mode", 0), "none");
}

TEST_F(TypeLibraryTest, MembersCanBeCalledAndClassesCreatedThroughIt) {
  Variant count;
  DISPPARAMS none{};
  EXPECT_EQ(info_->Invoke(object_.get(), 0x68030000, DISPATCH_PROPERTYGET, &none, &count, nullptr, nullptr),
            S_OK);
  EXPECT_EQ(count.lVal, 0);
  const ObjectPtr<RootVar> other = RootVar::Create();
  EXPECT_EQ(info_->Invoke(other.get(), 0x68030000, DISPATCH_PROPERTYGET, &none, &count, nullptr, nullptr),
            E_NOINTERFACE);
  void* created = nullptr;
  EXPECT_EQ(Find(CLSID_RootVar)->CreateInstance(nullptr, IID__RootVar, &created), S_OK);
  static_cast<IUnknown*>(created)->Release();
  EXPECT_EQ(Find(CLSID_Domaine)->CreateInstance(nullptr, IID__Domaine, &created), TYPE_E_BADMODULEKIND);
  EXPECT_EQ(created, nullptr);
}

TEST_F(TypeLibraryTest, WhatIsNotThereIsRefused) {
  ITypeInfo* none = info_.get();
  FUNCDESC* function = nullptr;
  VARDESC* constant = nullptr;
  HREFTYPE reference = 0;
  BSTR name = nullptr;
  UINT count = 9;
  EXPECT_EQ(object_->GetTypeInfo(1, 0, &none), DISP_E_BADINDEX);
  EXPECT_EQ(none, nullptr);
  for (HRESULT answer : {info_->GetFuncDesc(7, &function), info_->GetVarDesc(0, &constant),
                         info_->GetRefTypeOfImplType(1, &reference), info_->GetRefTypeInfo(9999, &none),
                         info_->GetNames(4711, &name, 1, &count),
                         info_->GetDocumentation(4711, &name, nullptr, nullptr, nullptr),
                         library_->GetTypeInfo(9999, &none), library_->GetTypeInfoOfGuid(GUID_NULL, &none),
                         library_->GetDocumentation(-2, &name, nullptr, nullptr, nullptr)})
    EXPECT_EQ(answer, TYPE_E_ELEMENTNOTFOUND);
  EXPECT_EQ(count, 0u);
  for (HRESULT answer :
       {info_->GetTypeAttr(nullptr), info_->GetFuncDesc(0, nullptr), info_->GetNames(0, nullptr, 1, &count),
        info_->GetContainingTypeLib(nullptr, nullptr), library_->GetLibAttr(nullptr),
        library_->IsName(nullptr, 0, nullptr),
        info_->Invoke(nullptr, 0, 2, nullptr, nullptr, nullptr, nullptr)})
    EXPECT_EQ(answer, E_POINTER);
}

TEST_F(TypeLibraryTest, TypeInformationKeepsTheLibraryLoaded) {
  object_ = nullptr;
  library_ = nullptr;
  EXPECT_EQ(DllCanUnloadNow(), S_FALSE);
  info_ = nullptr;
  EXPECT_EQ(DllCanUnloadNow(), S_OK);
}

}  // namespace
}  // namespace moxel::test
