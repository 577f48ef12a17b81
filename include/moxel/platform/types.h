// Scalar types, result codes and small records of the platform, with its own names and widths.
#pragma once

#include <cstdint>
#include <cstring>

using BYTE = std::uint8_t;
using CHAR = char;
using WORD = std::uint16_t;
using SHORT = std::int16_t;
using USHORT = std::uint16_t;
using INT = std::int32_t;
using UINT = std::uint32_t;
using LONG = std::int32_t;
using ULONG = std::uint32_t;
using DWORD = std::uint32_t;
using BOOL = std::int32_t;
using LONGLONG = std::int64_t;
using ULONGLONG = std::uint64_t;
using FLOAT = float;
using DOUBLE = double;
using LPSTR = char*;
using LPCSTR = const char*;
using HMODULE = void*;
using LCID = DWORD;

// One UTF-16 code unit.
using OLECHAR = char16_t;
using LPOLESTR = OLECHAR*;
using LPCOLESTR = const OLECHAR*;

using HRESULT = std::int32_t;
using SCODE = std::int32_t;

struct GUID {
  std::uint32_t Data1;
  std::uint16_t Data2;
  std::uint16_t Data3;
  std::uint8_t Data4[8];
};
static_assert(sizeof(GUID) == 16);

inline bool operator==(const GUID& a, const GUID& b) { return std::memcmp(&a, &b, sizeof a) == 0; }

using IID = GUID;
using CLSID = GUID;
using REFGUID = const GUID&;
using REFIID = const IID&;
using REFCLSID = const CLSID&;

struct FILETIME {
  DWORD dwLowDateTime;
  DWORD dwHighDateTime;
};

struct SYSTEMTIME {
  WORD wYear;
  WORD wMonth;
  WORD wDayOfWeek;
  WORD wDay;
  WORD wHour;
  WORD wMinute;
  WORD wSecond;
  WORD wMilliseconds;
};

inline constexpr bool SUCCEEDED(HRESULT result) { return result >= 0; }
inline constexpr bool FAILED(HRESULT result) { return result < 0; }

namespace platform_detail {
inline constexpr HRESULT Failure(std::uint32_t code) { return static_cast<HRESULT>(code); }
}  // namespace platform_detail

inline constexpr HRESULT S_OK = 0;
inline constexpr HRESULT S_FALSE = 1;
inline constexpr HRESULT E_NOTIMPL = platform_detail::Failure(0x80004001);
inline constexpr HRESULT E_NOINTERFACE = platform_detail::Failure(0x80004002);
inline constexpr HRESULT E_POINTER = platform_detail::Failure(0x80004003);
inline constexpr HRESULT E_FAIL = platform_detail::Failure(0x80004005);
inline constexpr HRESULT E_UNEXPECTED = platform_detail::Failure(0x8000FFFF);
inline constexpr HRESULT E_OUTOFMEMORY = platform_detail::Failure(0x8007000E);
inline constexpr HRESULT E_INVALIDARG = platform_detail::Failure(0x80070057);
inline constexpr HRESULT DISP_E_UNKNOWNINTERFACE = platform_detail::Failure(0x80020001);
inline constexpr HRESULT DISP_E_MEMBERNOTFOUND = platform_detail::Failure(0x80020003);
inline constexpr HRESULT DISP_E_PARAMNOTFOUND = platform_detail::Failure(0x80020004);
inline constexpr HRESULT DISP_E_TYPEMISMATCH = platform_detail::Failure(0x80020005);
inline constexpr HRESULT DISP_E_UNKNOWNNAME = platform_detail::Failure(0x80020006);
inline constexpr HRESULT DISP_E_NONAMEDARGS = platform_detail::Failure(0x80020007);
inline constexpr HRESULT DISP_E_BADVARTYPE = platform_detail::Failure(0x80020008);
inline constexpr HRESULT DISP_E_EXCEPTION = platform_detail::Failure(0x80020009);
inline constexpr HRESULT DISP_E_OVERFLOW = platform_detail::Failure(0x8002000A);
inline constexpr HRESULT DISP_E_BADINDEX = platform_detail::Failure(0x8002000B);
inline constexpr HRESULT DISP_E_BADPARAMCOUNT = platform_detail::Failure(0x8002000E);
inline constexpr HRESULT DISP_E_PARAMNOTOPTIONAL = platform_detail::Failure(0x8002000F);
inline constexpr HRESULT CLASS_E_NOAGGREGATION = platform_detail::Failure(0x80040110);
inline constexpr HRESULT CLASS_E_CLASSNOTAVAILABLE = platform_detail::Failure(0x80040111);
inline constexpr HRESULT REGDB_E_CLASSNOTREG = platform_detail::Failure(0x80040154);
inline constexpr HRESULT CO_E_CLASSSTRING = platform_detail::Failure(0x800401F3);
inline constexpr HRESULT CO_E_DLLNOTFOUND = platform_detail::Failure(0x800401F8);
inline constexpr HRESULT CO_E_ERRORINDLL = platform_detail::Failure(0x800401F9);
inline constexpr HRESULT SELFREG_E_CLASS = platform_detail::Failure(0x80040201);
