#include "component/type_library.h"

#include <algorithm>
#include <atomic>
#include <deque>

#include "component/boundary.h"
#include "component/class_factory.h"
#include "component/dispatch.h"
#include "component/library.h"
#include "component/module.h"
#include "component/type_description.h"

namespace moxel::component {
namespace {

class TypeLibrary;

// Counts the references to an object that lives as long as the library; each keeps the library loaded.
class References {
 public:
  ULONG Add() {
    LockModule();
    return count_.fetch_add(1, std::memory_order_relaxed) + 1;
  }
  ULONG Release() {
    ULONG left = count_.fetch_sub(1, std::memory_order_relaxed) - 1;
    UnlockModule();
    return left;
  }

 private:
  std::atomic<ULONG> count_{0};
};

template <class Interface>
HRESULT HandOver(Interface* object, Interface** result) {
  object->AddRef();
  *result = object;
  return S_OK;
}

// A text that the caller may not want; none is a null text.
HRESULT GiveText(std::u16string_view text, BSTR* result) {
  if (!result) return S_OK;
  *result = text.empty() ? nullptr : SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
  return *result || text.empty() ? S_OK : E_OUTOFMEMORY;
}

HRESULT GiveDocumentation(std::u16string_view name, std::u16string_view help, BSTR* name_result,
                          BSTR* help_result, DWORD* help_context, BSTR* help_file) {
  if (help_context) *help_context = 0;
  if (help_file) *help_file = nullptr;
  HRESULT status = GiveText(name, name_result);
  return FAILED(status) ? status : GiveText(help, help_result);
}

std::u16string_view NameFrom(LPOLESTR text) { return text ? text : std::u16string_view(); }

// ---- one type

// The records that it hands out are the description's own, so there is nothing to release.
class TypeInfo final : public ITypeInfo, public ITypeComp {
 public:
  TypeInfo(TypeLibrary& library, TypeDescription& type, UINT index)
      : library_(library), type_(type), index_(index) {}

  TypeDescription& type() { return type_; }

  // DISPID_UNKNOWN: has no member of that name.
  MEMBERID IdOf(std::u16string_view name) const {
    for (const FunctionDescription& function : type_.functions)
      if (SameName(function.names[0], name)) return function.record.memid;
    for (const ConstantDescription& constant : type_.constants)
      if (SameName(constant.name, name)) return constant.record.memid;
    return MEMBERID_NIL;
  }

  HRESULT QueryInterface(REFIID riid, void** ppvObject) override {
    if (!ppvObject) return E_POINTER;
    *ppvObject = nullptr;
    if (riid == IID_IUnknown || riid == IID_ITypeInfo)
      *ppvObject = static_cast<ITypeInfo*>(this);
    else if (riid == IID_ITypeComp)
      *ppvObject = static_cast<ITypeComp*>(this);
    else
      return E_NOINTERFACE;
    AddRef();
    return S_OK;
  }
  ULONG AddRef() override { return references_.Add(); }
  ULONG Release() override { return references_.Release(); }

  HRESULT GetTypeAttr(TYPEATTR** ppTypeAttr) override {
    if (!ppTypeAttr) return E_POINTER;
    *ppTypeAttr = &type_.attributes;
    return S_OK;
  }
  void ReleaseTypeAttr(TYPEATTR*) override {}

  HRESULT GetTypeComp(ITypeComp** ppTComp) override {
    if (!ppTComp) return E_POINTER;
    return HandOver<ITypeComp>(this, ppTComp);
  }

  HRESULT GetFuncDesc(UINT index, FUNCDESC** ppFuncDesc) override {
    if (!ppFuncDesc) return E_POINTER;
    *ppFuncDesc = nullptr;
    if (index >= type_.functions.size()) return TYPE_E_ELEMENTNOTFOUND;
    *ppFuncDesc = &type_.functions[index].record;
    return S_OK;
  }
  void ReleaseFuncDesc(FUNCDESC*) override {}

  HRESULT GetVarDesc(UINT index, VARDESC** ppVarDesc) override {
    if (!ppVarDesc) return E_POINTER;
    *ppVarDesc = nullptr;
    if (index >= type_.constants.size()) return TYPE_E_ELEMENTNOTFOUND;
    *ppVarDesc = &type_.constants[index].record;
    return S_OK;
  }
  void ReleaseVarDesc(VARDESC*) override {}

  HRESULT GetNames(MEMBERID memid, BSTR* rgBstrNames, UINT cMaxNames, UINT* pcNames) override {
    if (!rgBstrNames || !pcNames) return E_POINTER;
    *pcNames = 0;
    const std::vector<std::u16string_view> names = NamesOf(memid);
    if (names.empty()) return TYPE_E_ELEMENTNOTFOUND;
    while (*pcNames < cMaxNames && *pcNames < names.size()) {
      if (HRESULT status = GiveText(names[*pcNames], rgBstrNames + *pcNames); FAILED(status)) {
        while (*pcNames > 0) SysFreeString(rgBstrNames[--*pcNames]);
        return status;
      }
      ++*pcNames;
    }
    return S_OK;
  }

  // Index -1 is the other view of a dual interface.
  HRESULT GetRefTypeOfImplType(UINT index, HREFTYPE* pRefType) override {
    if (!pRefType) return E_POINTER;
    *pRefType = 0;
    if (index == ~UINT{0} && type_.other_view)
      *pRefType = *type_.other_view;
    else if (index < type_.implemented.size())
      *pRefType = type_.implemented[index];
    else
      return TYPE_E_ELEMENTNOTFOUND;
    return S_OK;
  }

  HRESULT GetImplTypeFlags(UINT index, INT* pImplTypeFlags) override {
    if (!pImplTypeFlags) return E_POINTER;
    *pImplTypeFlags = 0;
    if (index >= type_.implemented.size()) return TYPE_E_ELEMENTNOTFOUND;
    if (type_.attributes.typekind == TKIND_COCLASS) *pImplTypeFlags = IMPLTYPEFLAG_FDEFAULT;
    return S_OK;
  }

  HRESULT GetIDsOfNames(LPOLESTR* rgszNames, UINT cNames, MEMBERID* pMemId) override {
    if (HasMembers()) return FindIds(*type_.info, GUID_NULL, rgszNames, cNames, pMemId);
    if (cNames == 0) return S_OK;
    if (!rgszNames || !pMemId) return E_POINTER;
    std::fill_n(pMemId, cNames, MEMBERID_NIL);
    pMemId[0] = IdOf(NameFrom(rgszNames[0]));
    return pMemId[0] == MEMBERID_NIL || cNames > 1 ? DISP_E_UNKNOWNNAME : S_OK;
  }

  HRESULT Invoke(void* pvInstance, MEMBERID memid, WORD wFlags, DISPPARAMS* pDispParams, VARIANT* pVarResult,
                 EXCEPINFO* pExcepInfo, UINT* puArgErr) override {
    if (!pvInstance) return E_POINTER;
    if (!HasMembers()) return TYPE_E_BADMODULEKIND;
    // Any interface of an object leads to the dual one, and somebody else's object to none.
    ObjectPtr<IDispatch> object;
    HRESULT found = static_cast<IUnknown*>(pvInstance)->QueryInterface(*type_.info->iid, object.ReceiveAny());
    if (FAILED(found)) return found;
    return component::Invoke(*type_.info, object.get(), memid, GUID_NULL, wFlags, pDispParams, pVarResult,
                             pExcepInfo, puArgErr);
  }

  HRESULT GetDocumentation(MEMBERID memid, BSTR* pBstrName, BSTR* pBstrDocString, DWORD* pdwHelpContext,
                           BSTR* pBstrHelpFile) override {
    std::u16string_view name = type_.name;
    std::u16string_view help = type_.help;
    if (memid != MEMBERID_NIL) {
      const std::vector<std::u16string_view> names = NamesOf(memid);
      if (names.empty()) return TYPE_E_ELEMENTNOTFOUND;
      name = names[0];
      help = HelpOf(memid);
    }
    return GiveDocumentation(name, help, pBstrName, pBstrDocString, pdwHelpContext, pBstrHelpFile);
  }

  // The library has no modules of plain functions.
  HRESULT GetDllEntry(MEMBERID, INVOKEKIND, BSTR*, BSTR*, WORD*) override { return TYPE_E_BADMODULEKIND; }
  HRESULT AddressOfMember(MEMBERID, INVOKEKIND, void**) override { return TYPE_E_BADMODULEKIND; }

  HRESULT GetRefTypeInfo(HREFTYPE hRefType, ITypeInfo** ppTInfo) override;

  HRESULT CreateInstance(IUnknown* pUnkOuter, REFIID riid, void** ppvObj) override {
    if (!ppvObj) return E_POINTER;
    *ppvObj = nullptr;
    if (!(type_.attributes.wTypeFlags & TYPEFLAG_FCANCREATE)) return TYPE_E_BADMODULEKIND;
    for (const CreatableClass& creatable : CreatableClasses()) {
      if (&creatable.info() != type_.info) continue;
      ObjectPtr<IClassFactory> factory;
      HRESULT status = CreateFactory(creatable, IID_IClassFactory, factory.ReceiveAny());
      return FAILED(status) ? status : factory->CreateInstance(pUnkOuter, riid, ppvObj);
    }
    return CLASS_E_CLASSNOTAVAILABLE;
  }

  HRESULT GetMops(MEMBERID, BSTR* pBstrMops) override { return GiveText({}, pBstrMops); }

  HRESULT GetContainingTypeLib(ITypeLib** ppTLib, UINT* pIndex) override;

  HRESULT Bind(LPOLESTR szName, ULONG, WORD wFlags, ITypeInfo** ppTInfo, DESCKIND* pDescKind,
               BINDPTR* pBindPtr) override {
    if (!szName || !ppTInfo || !pDescKind || !pBindPtr) return E_POINTER;
    *ppTInfo = nullptr;
    *pDescKind = DESCKIND_NONE;
    pBindPtr->lpfuncdesc = nullptr;
    bool other_kind = false;
    for (FunctionDescription& function : type_.functions) {
      if (!SameName(function.names[0], szName)) continue;
      other_kind = wFlags != 0 && !(function.record.invkind & wFlags);
      if (other_kind) continue;
      *pDescKind = DESCKIND_FUNCDESC;
      pBindPtr->lpfuncdesc = &function.record;
      return HandOver<ITypeInfo>(this, ppTInfo);
    }
    for (ConstantDescription& constant : type_.constants) {
      if (!SameName(constant.name, szName)) continue;
      *pDescKind = DESCKIND_VARDESC;
      pBindPtr->lpvardesc = &constant.record;
      return HandOver<ITypeInfo>(this, ppTInfo);
    }
    return other_kind ? TYPE_E_TYPEMISMATCH : S_OK;
  }

  // A type contains no types.
  HRESULT BindType(LPOLESTR, ULONG, ITypeInfo** ppTInfo, ITypeComp** ppTComp) override {
    if (!ppTInfo || !ppTComp) return E_POINTER;
    *ppTInfo = nullptr;
    *ppTComp = nullptr;
    return S_OK;
  }

 private:
  bool HasMembers() const { return type_.info && type_.attributes.typekind != TKIND_COCLASS; }

  // A property's getter tells the names of its parameters also for its setters.
  std::vector<std::u16string_view> NamesOf(MEMBERID memid) const {
    for (const FunctionDescription& function : type_.functions)
      if (function.record.memid == memid) return function.names;
    for (const ConstantDescription& constant : type_.constants)
      if (constant.record.memid == memid) return {constant.name};
    return {};
  }

  std::u16string_view HelpOf(MEMBERID memid) const {
    for (const FunctionDescription& function : type_.functions)
      if (function.record.memid == memid && !function.help.empty()) return function.help;
    return {};
  }

  TypeLibrary& library_;
  TypeDescription& type_;
  const UINT index_;
  References references_;
};

// ---- the library

class TypeLibrary final : public ITypeLib, public ITypeComp {
 public:
  static TypeLibrary& Instance() {
    static TypeLibrary library;
    return library;
  }

  TypeInfo* At(HREFTYPE reference) { return reference < types_.size() ? &types_[reference] : nullptr; }

  // The view by name.
  TypeInfo& Of(const ClassInfo& info) {
    return *std::ranges::find_if(types_, [&](TypeInfo& each) { return each.type().info == &info; });
  }

  HRESULT QueryInterface(REFIID riid, void** ppvObject) override {
    if (!ppvObject) return E_POINTER;
    *ppvObject = nullptr;
    if (riid == IID_IUnknown || riid == IID_ITypeLib)
      *ppvObject = static_cast<ITypeLib*>(this);
    else if (riid == IID_ITypeComp)
      *ppvObject = static_cast<ITypeComp*>(this);
    else
      return E_NOINTERFACE;
    AddRef();
    return S_OK;
  }
  ULONG AddRef() override { return references_.Add(); }
  ULONG Release() override { return references_.Release(); }

  UINT GetTypeInfoCount() override { return static_cast<UINT>(descriptions_.published); }

  HRESULT GetTypeInfo(UINT index, ITypeInfo** ppTInfo) override {
    if (!ppTInfo) return E_POINTER;
    *ppTInfo = nullptr;
    if (index >= descriptions_.published) return TYPE_E_ELEMENTNOTFOUND;
    return HandOver<ITypeInfo>(&types_[index], ppTInfo);
  }

  HRESULT GetTypeInfoType(UINT index, TYPEKIND* pTKind) override {
    if (!pTKind) return E_POINTER;
    if (index >= descriptions_.published) return TYPE_E_ELEMENTNOTFOUND;
    *pTKind = types_[index].type().attributes.typekind;
    return S_OK;
  }

  HRESULT GetTypeInfoOfGuid(REFGUID guid, ITypeInfo** ppTinfo) override {
    if (!ppTinfo) return E_POINTER;
    *ppTinfo = nullptr;
    for (std::size_t i = 0; i < descriptions_.published && !(guid == GUID_NULL); ++i)
      if (types_[i].type().attributes.guid == guid) return HandOver<ITypeInfo>(&types_[i], ppTinfo);
    return TYPE_E_ELEMENTNOTFOUND;
  }

  HRESULT GetLibAttr(TLIBATTR** ppTLibAttr) override {
    if (!ppTLibAttr) return E_POINTER;
    *ppTLibAttr = &attributes_;
    return S_OK;
  }
  void ReleaseTLibAttr(TLIBATTR*) override {}

  HRESULT GetTypeComp(ITypeComp** ppTComp) override {
    if (!ppTComp) return E_POINTER;
    return HandOver<ITypeComp>(this, ppTComp);
  }

  HRESULT GetDocumentation(INT index, BSTR* pBstrName, BSTR* pBstrDocString, DWORD* pdwHelpContext,
                           BSTR* pBstrHelpFile) override {
    if (index == -1)
      return GiveDocumentation(kLibraryName, kLibraryTitle, pBstrName, pBstrDocString, pdwHelpContext,
                               pBstrHelpFile);
    if (index < 0 || static_cast<std::size_t>(index) >= descriptions_.published)
      return TYPE_E_ELEMENTNOTFOUND;
    return types_[static_cast<std::size_t>(index)].GetDocumentation(MEMBERID_NIL, pBstrName, pBstrDocString,
                                                                    pdwHelpContext, pBstrHelpFile);
  }

  // Corrects the letter case of a name that it knows.
  HRESULT IsName(LPOLESTR szNameBuf, ULONG, BOOL* pfName) override {
    if (!szNameBuf || !pfName) return E_POINTER;
    std::u16string_view known;
    for (std::size_t i = 0; i < descriptions_.published; ++i)
      if (known.empty()) known = KnownName(types_[i].type(), szNameBuf);
    *pfName = known.empty() ? 0 : 1;
    std::ranges::copy(known, szNameBuf);
    return S_OK;
  }

  HRESULT FindName(LPOLESTR szNameBuf, ULONG, ITypeInfo** ppTInfo, MEMBERID* rgMemId,
                   USHORT* pcFound) override {
    if (!szNameBuf || !ppTInfo || !rgMemId || !pcFound) return E_POINTER;
    USHORT found = 0;
    for (std::size_t i = 0; i < descriptions_.published && found < *pcFound; ++i) {
      const MEMBERID member = types_[i].IdOf(szNameBuf);
      if (member == MEMBERID_NIL && !SameName(types_[i].type().name, szNameBuf)) continue;
      rgMemId[found] = member;
      HandOver<ITypeInfo>(&types_[i], ppTInfo + found++);
    }
    *pcFound = found;
    return S_OK;
  }

  // The constants of enumerations are known with and without the enumeration's name.
  HRESULT Bind(LPOLESTR szName, ULONG lHashVal, WORD wFlags, ITypeInfo** ppTInfo, DESCKIND* pDescKind,
               BINDPTR* pBindPtr) override {
    if (!szName || !ppTInfo || !pDescKind || !pBindPtr) return E_POINTER;
    *ppTInfo = nullptr;
    *pDescKind = DESCKIND_NONE;
    for (TypeInfo& each : types_) {
      if (each.type().attributes.typekind != TKIND_ENUM || *pDescKind != DESCKIND_NONE) continue;
      each.Bind(szName, lHashVal, wFlags, ppTInfo, pDescKind, pBindPtr);
      if (!SameName(each.type().name, szName)) continue;
      *pDescKind = DESCKIND_TYPECOMP;
      return HandOver<ITypeComp>(&each, &pBindPtr->lptcomp);
    }
    return S_OK;
  }

  HRESULT BindType(LPOLESTR szName, ULONG, ITypeInfo** ppTInfo, ITypeComp** ppTComp) override {
    if (!szName || !ppTInfo || !ppTComp) return E_POINTER;
    *ppTInfo = nullptr;
    *ppTComp = nullptr;
    for (std::size_t i = 0; i < descriptions_.published; ++i)
      if (SameName(types_[i].type().name, szName)) return HandOver<ITypeInfo>(&types_[i], ppTInfo);
    return S_OK;
  }

 private:
  TypeLibrary() {
    for (UINT i = 0; TypeDescription & type : descriptions_.types) types_.emplace_back(*this, type, i++);
    attributes_.guid = kLibraryId;
    attributes_.syskind = SYS_WIN64;
    attributes_.wMajorVerNum = kMajorVersion;
    attributes_.wMinorVerNum = kMinorVersion;
  }

  static std::u16string_view KnownName(const TypeDescription& type, std::u16string_view name) {
    if (SameName(type.name, name)) return type.name;
    for (const FunctionDescription& function : type.functions)
      for (std::u16string_view known : function.names)
        if (SameName(known, name)) return known;
    for (const ConstantDescription& constant : type.constants)
      if (SameName(constant.name, name)) return constant.name;
    return {};
  }

  TypeDescriptions descriptions_ = DescribeTypes();
  std::deque<TypeInfo> types_;
  TLIBATTR attributes_{};
  References references_;
};

HRESULT TypeInfo::GetRefTypeInfo(HREFTYPE hRefType, ITypeInfo** ppTInfo) {
  if (!ppTInfo) return E_POINTER;
  *ppTInfo = nullptr;
  TypeInfo* referred = library_.At(hRefType);
  return referred ? HandOver<ITypeInfo>(referred, ppTInfo) : TYPE_E_ELEMENTNOTFOUND;
}

// The slots of an interface stand in the library at the place of its members by name.
HRESULT TypeInfo::GetContainingTypeLib(ITypeLib** ppTLib, UINT* pIndex) {
  if (!ppTLib) return E_POINTER;
  *ppTLib = nullptr;
  const UINT place = type_.other_view ? std::min(index_, UINT{*type_.other_view}) : index_;
  if (place >= library_.GetTypeInfoCount()) return TYPE_E_ELEMENTNOTFOUND;  // one of the platform's own
  if (pIndex) *pIndex = place;
  return HandOver<ITypeLib>(&library_, ppTLib);
}

}  // namespace

ITypeInfo* TypeInfoOf(const ClassInfo& info) {
  ITypeInfo* result = nullptr;
  HandOver<ITypeInfo>(&TypeLibrary::Instance().Of(info), &result);
  return result;
}

}  // namespace moxel::component
