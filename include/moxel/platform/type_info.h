// Type information: what an object, its interfaces and its library look like, with the platform's names,
// identifiers and binary layouts.
#pragma once

#include "moxel/platform/automation.h"

using MEMBERID = DISPID;
using HREFTYPE = DWORD;

struct ITypeComp;
struct ITypeLib;

enum TYPEKIND : INT {
  TKIND_ENUM,
  TKIND_RECORD,
  TKIND_MODULE,
  TKIND_INTERFACE,
  TKIND_DISPATCH,
  TKIND_COCLASS,
  TKIND_ALIAS,
  TKIND_UNION,
};
enum CALLCONV : INT { CC_CDECL = 1, CC_STDCALL = 4 };
enum FUNCKIND : INT { FUNC_VIRTUAL, FUNC_PUREVIRTUAL, FUNC_NONVIRTUAL, FUNC_STATIC, FUNC_DISPATCH };
enum INVOKEKIND : INT {
  INVOKE_FUNC = 1,
  INVOKE_PROPERTYGET = 2,
  INVOKE_PROPERTYPUT = 4,
  INVOKE_PROPERTYPUTREF = 8,
};
enum VARKIND : INT { VAR_PERINSTANCE, VAR_STATIC, VAR_CONST, VAR_DISPATCH };
enum SYSKIND : INT { SYS_WIN16, SYS_WIN32, SYS_MAC, SYS_WIN64 };
enum DESCKIND : INT {
  DESCKIND_NONE,
  DESCKIND_FUNCDESC,
  DESCKIND_VARDESC,
  DESCKIND_TYPECOMP,
  DESCKIND_IMPLICITAPPOBJ,
};

inline constexpr WORD TYPEFLAG_FCANCREATE = 0x0002;
inline constexpr WORD TYPEFLAG_FHIDDEN = 0x0010;
inline constexpr WORD TYPEFLAG_FDUAL = 0x0040;
inline constexpr WORD TYPEFLAG_FNONEXTENSIBLE = 0x0080;
inline constexpr WORD TYPEFLAG_FOLEAUTOMATION = 0x0100;
inline constexpr WORD TYPEFLAG_FDISPATCHABLE = 0x1000;
inline constexpr WORD FUNCFLAG_FHIDDEN = 0x0040;
inline constexpr INT IMPLTYPEFLAG_FDEFAULT = 0x1;
inline constexpr USHORT PARAMFLAG_FIN = 0x01;
inline constexpr USHORT PARAMFLAG_FOUT = 0x02;
inline constexpr USHORT PARAMFLAG_FRETVAL = 0x08;
inline constexpr USHORT PARAMFLAG_FOPT = 0x10;

inline constexpr MEMBERID MEMBERID_NIL = -1;

inline constexpr HRESULT TYPE_E_ELEMENTNOTFOUND = platform_detail::Failure(0x8002802B);
inline constexpr HRESULT TYPE_E_BADMODULEKIND = platform_detail::Failure(0x800288BD);
inline constexpr HRESULT TYPE_E_TYPEMISMATCH = platform_detail::Failure(0x80028CA0);

// A type: VT_PTR points at what is referred to, VT_USERDEFINED is a reference for ITypeInfo::GetRefTypeInfo.
struct TYPEDESC {
  union {
    TYPEDESC* lptdesc;
    void* lpadesc;
    HREFTYPE hreftype;
  };
  VARTYPE vt;
};
static_assert(sizeof(TYPEDESC) == 16);

struct PARAMDESC {
  void* pparamdescex;  // the default value, where PARAMFLAG_FHASDEFAULT says so
  USHORT wParamFlags;
};

struct IDLDESC {
  std::uintptr_t dwReserved;
  USHORT wIDLFlags;
};

struct ELEMDESC {
  TYPEDESC tdesc;
  union {
    IDLDESC idldesc;
    PARAMDESC paramdesc;
  };
};
static_assert(sizeof(ELEMDESC) == 32);

struct TYPEATTR {
  GUID guid;
  LCID lcid;
  DWORD dwReserved;
  MEMBERID memidConstructor;
  MEMBERID memidDestructor;
  LPOLESTR lpstrSchema;
  ULONG cbSizeInstance;
  TYPEKIND typekind;
  WORD cFuncs;
  WORD cVars;
  WORD cImplTypes;
  WORD cbSizeVft;
  WORD cbAlignment;
  WORD wTypeFlags;
  WORD wMajorVerNum;
  WORD wMinorVerNum;
  TYPEDESC tdescAlias;
  IDLDESC idldescType;
};
static_assert(sizeof(TYPEATTR) == 96);

struct FUNCDESC {
  MEMBERID memid;
  SCODE* lprgscode;
  ELEMDESC* lprgelemdescParam;
  FUNCKIND funckind;
  INVOKEKIND invkind;
  CALLCONV callconv;
  SHORT cParams;
  SHORT cParamsOpt;
  SHORT oVft;  // in bytes
  SHORT cScodes;
  ELEMDESC elemdescFunc;  // the result
  WORD wFuncFlags;
};
static_assert(sizeof(FUNCDESC) == 88);

struct VARDESC {
  MEMBERID memid;
  LPOLESTR lpstrSchema;
  union {
    ULONG oInst;
    VARIANT* lpvarValue;
  };
  ELEMDESC elemdescVar;
  WORD wVarFlags;
  VARKIND varkind;
};
static_assert(sizeof(VARDESC) == 64);

struct TLIBATTR {
  GUID guid;
  LCID lcid;
  SYSKIND syskind;
  WORD wMajorVerNum;
  WORD wMinorVerNum;
  WORD wLibFlags;
};
static_assert(sizeof(TLIBATTR) == 32);

union BINDPTR {
  FUNCDESC* lpfuncdesc;
  VARDESC* lpvardesc;
  ITypeComp* lptcomp;
};

inline constexpr IID IID_ITypeLib{0x00020402, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
inline constexpr IID IID_ITypeComp{0x00020403, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};

// One type: an interface, a class, an enumeration. What GetTypeAttr, GetFuncDesc and GetVarDesc hand out is
// read only and goes back by the matching Release.
struct ITypeInfo : IUnknown {
  virtual HRESULT GetTypeAttr(TYPEATTR** ppTypeAttr) = 0;
  virtual HRESULT GetTypeComp(ITypeComp** ppTComp) = 0;
  virtual HRESULT GetFuncDesc(UINT index, FUNCDESC** ppFuncDesc) = 0;
  virtual HRESULT GetVarDesc(UINT index, VARDESC** ppVarDesc) = 0;
  // The member's name, then those of its parameters.
  virtual HRESULT GetNames(MEMBERID memid, BSTR* rgBstrNames, UINT cMaxNames, UINT* pcNames) = 0;
  virtual HRESULT GetRefTypeOfImplType(UINT index, HREFTYPE* pRefType) = 0;
  virtual HRESULT GetImplTypeFlags(UINT index, INT* pImplTypeFlags) = 0;
  virtual HRESULT GetIDsOfNames(LPOLESTR* rgszNames, UINT cNames, MEMBERID* pMemId) = 0;
  virtual HRESULT Invoke(void* pvInstance, MEMBERID memid, WORD wFlags, DISPPARAMS* pDispParams,
                         VARIANT* pVarResult, EXCEPINFO* pExcepInfo, UINT* puArgErr) = 0;
  // Of a member, or with MEMBERID_NIL of the type itself.
  virtual HRESULT GetDocumentation(MEMBERID memid, BSTR* pBstrName, BSTR* pBstrDocString,
                                   DWORD* pdwHelpContext, BSTR* pBstrHelpFile) = 0;
  virtual HRESULT GetDllEntry(MEMBERID memid, INVOKEKIND invKind, BSTR* pBstrDllName, BSTR* pBstrName,
                              WORD* pwOrdinal) = 0;
  virtual HRESULT GetRefTypeInfo(HREFTYPE hRefType, ITypeInfo** ppTInfo) = 0;
  virtual HRESULT AddressOfMember(MEMBERID memid, INVOKEKIND invKind, void** ppv) = 0;
  virtual HRESULT CreateInstance(IUnknown* pUnkOuter, REFIID riid, void** ppvObj) = 0;
  virtual HRESULT GetMops(MEMBERID memid, BSTR* pBstrMops) = 0;
  virtual HRESULT GetContainingTypeLib(ITypeLib** ppTLib, UINT* pIndex) = 0;
  virtual void ReleaseTypeAttr(TYPEATTR* pTypeAttr) = 0;
  virtual void ReleaseFuncDesc(FUNCDESC* pFuncDesc) = 0;
  virtual void ReleaseVarDesc(VARDESC* pVarDesc) = 0;
};

// A library of types.
struct ITypeLib : IUnknown {
  virtual UINT GetTypeInfoCount() = 0;
  virtual HRESULT GetTypeInfo(UINT index, ITypeInfo** ppTInfo) = 0;
  virtual HRESULT GetTypeInfoType(UINT index, TYPEKIND* pTKind) = 0;
  virtual HRESULT GetTypeInfoOfGuid(REFGUID guid, ITypeInfo** ppTinfo) = 0;
  virtual HRESULT GetLibAttr(TLIBATTR** ppTLibAttr) = 0;
  virtual HRESULT GetTypeComp(ITypeComp** ppTComp) = 0;
  // Of a type, or with index -1 of the library itself.
  virtual HRESULT GetDocumentation(INT index, BSTR* pBstrName, BSTR* pBstrDocString, DWORD* pdwHelpContext,
                                   BSTR* pBstrHelpFile) = 0;
  virtual HRESULT IsName(LPOLESTR szNameBuf, ULONG lHashVal, BOOL* pfName) = 0;
  virtual HRESULT FindName(LPOLESTR szNameBuf, ULONG lHashVal, ITypeInfo** ppTInfo, MEMBERID* rgMemId,
                           USHORT* pcFound) = 0;
  virtual void ReleaseTLibAttr(TLIBATTR* pTLibAttr) = 0;
};

// Binds names to members, as compilers do.
struct ITypeComp : IUnknown {
  virtual HRESULT Bind(LPOLESTR szName, ULONG lHashVal, WORD wFlags, ITypeInfo** ppTInfo, DESCKIND* pDescKind,
                       BINDPTR* pBindPtr) = 0;
  virtual HRESULT BindType(LPOLESTR szName, ULONG lHashVal, ITypeInfo** ppTInfo, ITypeComp** ppTComp) = 0;
};
