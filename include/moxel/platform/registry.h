// The registry entry points (ANSI) and their constants. The tree behind them is one file, named by the
// environment variable MOXEL_REGISTRY and shared by every process that names the same file. Every function
// may be called from any thread. Results are the platform's own codes, ERROR_SUCCESS (0) or one of the ERROR_
// constants.
#pragma once

#include "moxel/platform/types.h"

// A 32-bit opaque key handle. It stays valid until RegCloseKey; one that is never closed costs a few bytes.
using HKEY = std::uint32_t;
using LSTATUS = LONG;
using REGSAM = DWORD;

struct SECURITY_ATTRIBUTES;

// An alias of "SOFTWARE\Classes" below HKEY_LOCAL_MACHINE.
inline constexpr HKEY HKEY_CLASSES_ROOT = 0x80000000;
inline constexpr HKEY HKEY_LOCAL_MACHINE = 0x80000002;

inline constexpr REGSAM KEY_QUERY_VALUE = 0x0001;
inline constexpr REGSAM KEY_SET_VALUE = 0x0002;
inline constexpr REGSAM KEY_CREATE_SUB_KEY = 0x0004;
inline constexpr REGSAM KEY_ENUMERATE_SUB_KEYS = 0x0008;
inline constexpr REGSAM KEY_READ = 0x20019;
inline constexpr REGSAM KEY_WRITE = 0x20006;
inline constexpr REGSAM KEY_ALL_ACCESS = 0xF003F;
inline constexpr REGSAM MAXIMUM_ALLOWED = 0x02000000;
inline constexpr REGSAM GENERIC_ALL = 0x10000000;
inline constexpr REGSAM GENERIC_WRITE = 0x40000000;
inline constexpr REGSAM GENERIC_READ = 0x80000000;

inline constexpr DWORD REG_OPTION_NON_VOLATILE = 0;
inline constexpr DWORD REG_CREATED_NEW_KEY = 1;
inline constexpr DWORD REG_OPENED_EXISTING_KEY = 2;

inline constexpr DWORD REG_NONE = 0;
inline constexpr DWORD REG_SZ = 1;
inline constexpr DWORD REG_EXPAND_SZ = 2;
inline constexpr DWORD REG_BINARY = 3;
inline constexpr DWORD REG_DWORD = 4;
inline constexpr DWORD REG_MULTI_SZ = 7;
inline constexpr DWORD REG_QWORD = 11;

inline constexpr LSTATUS ERROR_SUCCESS = 0;
inline constexpr LSTATUS ERROR_FILE_NOT_FOUND = 2;
inline constexpr LSTATUS ERROR_PATH_NOT_FOUND = 3;
inline constexpr LSTATUS ERROR_ACCESS_DENIED = 5;
inline constexpr LSTATUS ERROR_INVALID_HANDLE = 6;
inline constexpr LSTATUS ERROR_OUTOFMEMORY = 14;
inline constexpr LSTATUS ERROR_INVALID_PARAMETER = 87;
inline constexpr LSTATUS ERROR_DISK_FULL = 112;
inline constexpr LSTATUS ERROR_BAD_PATHNAME = 161;
inline constexpr LSTATUS ERROR_BUSY = 170;
inline constexpr LSTATUS ERROR_MORE_DATA = 234;
inline constexpr LSTATUS ERROR_NO_MORE_ITEMS = 259;
inline constexpr LSTATUS ERROR_NOACCESS = 998;
inline constexpr LSTATUS ERROR_BADDB = 1009;
inline constexpr LSTATUS ERROR_REGISTRY_IO_FAILED = 1016;
inline constexpr LSTATUS ERROR_KEY_DELETED = 1018;

#pragma GCC visibility push(default)
extern "C" {

LSTATUS RegOpenKeyExA(HKEY hKey, LPCSTR lpSubKey, DWORD ulOptions, REGSAM samDesired, HKEY* phkResult);
LSTATUS RegCreateKeyExA(HKEY hKey, LPCSTR lpSubKey, DWORD Reserved, LPSTR lpClass, DWORD dwOptions,
                        REGSAM samDesired, const SECURITY_ATTRIBUTES* lpSecurityAttributes, HKEY* phkResult,
                        DWORD* lpdwDisposition);
LSTATUS RegQueryValueExA(HKEY hKey, LPCSTR lpValueName, DWORD* lpReserved, DWORD* lpType, BYTE* lpData,
                         DWORD* lpcbData);
LSTATUS RegSetValueExA(HKEY hKey, LPCSTR lpValueName, DWORD Reserved, DWORD dwType, const BYTE* lpData,
                       DWORD cbData);
LSTATUS RegEnumKeyExA(HKEY hKey, DWORD dwIndex, LPSTR lpName, DWORD* lpcchName, DWORD* lpReserved,
                      LPSTR lpClass, DWORD* lpcchClass, FILETIME* lpftLastWriteTime);
LSTATUS RegEnumValueA(HKEY hKey, DWORD dwIndex, LPSTR lpValueName, DWORD* lpcchValueName, DWORD* lpReserved,
                      DWORD* lpType, BYTE* lpData, DWORD* lpcbData);
LSTATUS RegDeleteKeyA(HKEY hKey, LPCSTR lpSubKey);
LSTATUS RegDeleteValueA(HKEY hKey, LPCSTR lpValueName);
LSTATUS RegCloseKey(HKEY hKey);

}  // extern "C"
#pragma GCC visibility pop
