// The automation runtime: texts, tagged values, the well-known interfaces, error info and object creation,
// with the platform's names, signatures, identifiers and binary layouts.
#pragma once

#include "moxel/platform/types.h"

// UTF-16 text behind a 4-byte count of its bytes, NUL-terminated; a null pointer is the empty text.
using BSTR = OLECHAR*;

using VARTYPE = std::uint16_t;
using VARIANT_BOOL = std::int16_t;
using DATE = double;
using DISPID = LONG;

inline constexpr VARIANT_BOOL VARIANT_TRUE = -1;
inline constexpr VARIANT_BOOL VARIANT_FALSE = 0;

enum VARENUM : VARTYPE {
  VT_EMPTY = 0,
  VT_NULL = 1,
  VT_I2 = 2,
  VT_I4 = 3,
  VT_R4 = 4,
  VT_R8 = 5,
  VT_CY = 6,
  VT_DATE = 7,
  VT_BSTR = 8,
  VT_DISPATCH = 9,
  VT_ERROR = 10,
  VT_BOOL = 11,
  VT_VARIANT = 12,
  VT_UNKNOWN = 13,
  VT_DECIMAL = 14,
  VT_I1 = 16,
  VT_UI1 = 17,
  VT_UI2 = 18,
  VT_UI4 = 19,
  VT_I8 = 20,
  VT_UI8 = 21,
  VT_INT = 22,
  VT_UINT = 23,
  VT_VOID = 24,
  VT_HRESULT = 25,
  VT_PTR = 26,
  VT_USERDEFINED = 29,
  VT_TYPEMASK = 0x0FFF,
  VT_ARRAY = 0x2000,
  VT_BYREF = 0x4000,
};

struct IDispatch;
struct ITypeInfo;
struct IUnknown;
struct SAFEARRAY;

// Four decimal places: the value is int64 / 10000.
struct CY {
  LONGLONG int64;
};

// A 96-bit integer over a power of ten. It covers a VARIANT from its first byte on; the tag lies in
// wReserved.
struct DECIMAL {
  USHORT wReserved;
  BYTE scale;
  BYTE sign;
  ULONG Hi32;
  ULONGLONG Lo64;
};
static_assert(sizeof(DECIMAL) == 16);

struct VARIANT {
  VARTYPE vt;
  WORD wReserved1;
  WORD wReserved2;
  WORD wReserved3;
  union {
    LONGLONG llVal;
    LONG lVal;
    BYTE bVal;
    SHORT iVal;
    FLOAT fltVal;
    DOUBLE dblVal;
    VARIANT_BOOL boolVal;
    SCODE scode;
    CY cyVal;
    DATE date;
    BSTR bstrVal;
    IUnknown* punkVal;
    IDispatch* pdispVal;
    SAFEARRAY* parray;
    CHAR cVal;
    USHORT uiVal;
    ULONG ulVal;
    ULONGLONG ullVal;
    INT intVal;
    UINT uintVal;
    void* byref;
    SHORT* piVal;
    LONG* plVal;
    DOUBLE* pdblVal;
    VARIANT_BOOL* pboolVal;
    DATE* pdate;
    BSTR* pbstrVal;
    IUnknown** ppunkVal;
    IDispatch** ppdispVal;
    VARIANT* pvarVal;
    struct {
      void* pvRecord;
      void* pRecInfo;
    } record;
  };
};
static_assert(sizeof(VARIANT) == 24);

using VARIANTARG = VARIANT;

struct DISPPARAMS {
  VARIANTARG* rgvarg;         // last argument first; named arguments come first of all
  DISPID* rgdispidNamedArgs;  // positions of the named arguments, or DISPID_PROPERTYPUT
  UINT cArgs;
  UINT cNamedArgs;
};

struct EXCEPINFO {
  WORD wCode;
  WORD wReserved;
  BSTR bstrSource;
  BSTR bstrDescription;
  BSTR bstrHelpFile;
  DWORD dwHelpContext;
  void* pvReserved;
  HRESULT (*pfnDeferredFillIn)(EXCEPINFO*);
  SCODE scode;
};

inline constexpr DISPID DISPID_VALUE = 0;
inline constexpr DISPID DISPID_UNKNOWN = -1;
inline constexpr DISPID DISPID_PROPERTYPUT = -3;
inline constexpr DISPID DISPID_NEWENUM = -4;

inline constexpr WORD DISPATCH_METHOD = 1;
inline constexpr WORD DISPATCH_PROPERTYGET = 2;
inline constexpr WORD DISPATCH_PROPERTYPUT = 4;
inline constexpr WORD DISPATCH_PROPERTYPUTREF = 8;

inline constexpr IID IID_IUnknown{0x00000000, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
inline constexpr IID IID_IClassFactory{0x00000001, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
inline constexpr IID IID_IDispatch{0x00020400, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
inline constexpr IID IID_ITypeInfo{0x00020401, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
inline constexpr IID IID_IEnumVARIANT{0x00020404, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
inline constexpr IID IID_IErrorInfo{
    0x1CF2B120, 0x547D, 0x101B, {0x8E, 0x65, 0x08, 0x00, 0x2B, 0x2B, 0xD1, 0x19}};
inline constexpr IID IID_ICreateErrorInfo{
    0x22F03340, 0x547D, 0x101B, {0x8E, 0x65, 0x08, 0x00, 0x2B, 0x2B, 0xD1, 0x19}};
inline constexpr IID IID_ISupportErrorInfo{
    0xDF0B3D60, 0x548F, 0x101B, {0x8E, 0x65, 0x08, 0x00, 0x2B, 0x2B, 0xD1, 0x19}};
inline constexpr GUID GUID_NULL{0, 0, 0, {0, 0, 0, 0, 0, 0, 0, 0}};

// Interfaces are pure vtables in slot order; they have no virtual destructor on purpose.
struct IUnknown {
  virtual HRESULT QueryInterface(REFIID riid, void** ppvObject) = 0;
  virtual ULONG AddRef() = 0;
  virtual ULONG Release() = 0;
};

struct IDispatch : IUnknown {
  virtual HRESULT GetTypeInfoCount(UINT* pctinfo) = 0;
  virtual HRESULT GetTypeInfo(UINT iTInfo, LCID lcid, ITypeInfo** ppTInfo) = 0;
  virtual HRESULT GetIDsOfNames(REFIID riid, LPOLESTR* rgszNames, UINT cNames, LCID lcid,
                                DISPID* rgDispId) = 0;
  virtual HRESULT Invoke(DISPID dispIdMember, REFIID riid, LCID lcid, WORD wFlags, DISPPARAMS* pDispParams,
                         VARIANT* pVarResult, EXCEPINFO* pExcepInfo, UINT* puArgErr) = 0;
};

struct IClassFactory : IUnknown {
  virtual HRESULT CreateInstance(IUnknown* pUnkOuter, REFIID riid, void** ppvObject) = 0;
  virtual HRESULT LockServer(BOOL fLock) = 0;
};

struct IEnumVARIANT : IUnknown {
  virtual HRESULT Next(ULONG celt, VARIANT* rgVar, ULONG* pCeltFetched) = 0;
  virtual HRESULT Skip(ULONG celt) = 0;
  virtual HRESULT Reset() = 0;
  virtual HRESULT Clone(IEnumVARIANT** ppEnum) = 0;
};

struct IErrorInfo : IUnknown {
  virtual HRESULT GetGUID(GUID* pGUID) = 0;
  virtual HRESULT GetSource(BSTR* pBstrSource) = 0;
  virtual HRESULT GetDescription(BSTR* pBstrDescription) = 0;
  virtual HRESULT GetHelpFile(BSTR* pBstrHelpFile) = 0;
  virtual HRESULT GetHelpContext(DWORD* pdwHelpContext) = 0;
};

struct ICreateErrorInfo : IUnknown {
  virtual HRESULT SetGUID(REFGUID rguid) = 0;
  virtual HRESULT SetSource(LPOLESTR szSource) = 0;
  virtual HRESULT SetDescription(LPOLESTR szDescription) = 0;
  virtual HRESULT SetHelpFile(LPOLESTR szHelpFile) = 0;
  virtual HRESULT SetHelpContext(DWORD dwHelpContext) = 0;
};

struct ISupportErrorInfo : IUnknown {
  virtual HRESULT InterfaceSupportsErrorInfo(REFIID riid) = 0;
};

// What VarParseNumFromStr found in a text: the number is digits * 10^nPwr10.
struct NUMPARSE {
  INT cDig;          // in: room in rgbDig; out: significant digits stored
  ULONG dwInFlags;   // NUMPRS_ forms to accept
  ULONG dwOutFlags;  // forms met
  INT cchUsed;       // characters of the text consumed
  INT nBaseShift;    // 0: decimal
  INT nPwr10;
};

inline constexpr ULONG NUMPRS_LEADING_WHITE = 0x0001;
inline constexpr ULONG NUMPRS_TRAILING_WHITE = 0x0002;
inline constexpr ULONG NUMPRS_LEADING_PLUS = 0x0004;
inline constexpr ULONG NUMPRS_TRAILING_PLUS = 0x0008;
inline constexpr ULONG NUMPRS_LEADING_MINUS = 0x0010;
inline constexpr ULONG NUMPRS_TRAILING_MINUS = 0x0020;
inline constexpr ULONG NUMPRS_DECIMAL = 0x0100;
inline constexpr ULONG NUMPRS_THOUSANDS = 0x0200;
inline constexpr ULONG NUMPRS_EXPONENT = 0x0800;
inline constexpr ULONG NUMPRS_STD = 0x1FFF;
inline constexpr ULONG NUMPRS_NEG = 0x10000;
inline constexpr ULONG NUMPRS_INEXACT = 0x20000;

inline constexpr USHORT VARIANT_ALPHABOOL = 0x02;

inline constexpr DWORD CLSCTX_INPROC_SERVER = 1;

inline constexpr DWORD GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT = 2;
inline constexpr DWORD GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS = 4;

#pragma GCC visibility push(default)
extern "C" {

BSTR SysAllocString(const OLECHAR* psz);
BSTR SysAllocStringLen(const OLECHAR* strIn, UINT ui);
BSTR SysAllocStringByteLen(LPCSTR psz, UINT len);
UINT SysStringLen(BSTR pbstr);
UINT SysStringByteLen(BSTR bstr);
void SysFreeString(BSTR bstrString);

void VariantInit(VARIANTARG* pvarg);
HRESULT VariantClear(VARIANTARG* pvarg);
HRESULT VariantCopy(VARIANTARG* pvargDest, const VARIANTARG* pvargSrc);
// Copies what a by-reference variant refers to.
HRESULT VariantCopyInd(VARIANT* pvarDest, const VARIANTARG* pvargSrc);
// Converts in the user's locale; source and destination may be the same.
// DISP_E_TYPEMISMATCH, DISP_E_OVERFLOW, DISP_E_BADVARTYPE, E_OUTOFMEMORY; the destination then keeps its
// content.
HRESULT VariantChangeType(VARIANTARG* pvargDest, const VARIANTARG* pvarSrc, USHORT wFlags, VARTYPE vt);
// The one parser of number texts, in the user's locale. DISP_E_TYPEMISMATCH when the text does not begin with
// a number.
HRESULT VarParseNumFromStr(LPCOLESTR strIn, LCID lcid, ULONG dwFlags, NUMPARSE* pnumprs, BYTE* rgbDig);

HRESULT CreateErrorInfo(ICreateErrorInfo** pperrinfo);
HRESULT SetErrorInfo(ULONG dwReserved, IErrorInfo* perrinfo);
HRESULT GetErrorInfo(ULONG dwReserved, IErrorInfo** pperrinfo);

HRESULT CLSIDFromProgID(LPCOLESTR lpszProgID, CLSID* lpclsid);
HRESULT CLSIDFromString(LPCOLESTR lpsz, CLSID* pclsid);
// The "{...}" form in upper case with its NUL, 39 characters; 0 when cchMax is less.
INT StringFromGUID2(REFGUID rguid, LPOLESTR lpsz, INT cchMax);
HRESULT CoGetClassObject(REFCLSID rclsid, DWORD dwClsContext, void* pvReserved, REFIID riid, void** ppv);
HRESULT CoCreateInstance(REFCLSID rclsid, IUnknown* pUnkOuter, DWORD dwClsContext, REFIID riid, void** ppv);

// The module that holds an address, and its file.
BOOL GetModuleHandleExA(DWORD dwFlags, LPCSTR lpModuleName, HMODULE* phModule);
DWORD GetModuleFileNameA(HMODULE hModule, LPSTR lpFilename, DWORD nSize);

}  // extern "C"
#pragma GCC visibility pop
