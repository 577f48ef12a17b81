// Locale services: date and time formatting, and the code pages.
#pragma once

#include "moxel/platform/types.h"

// The system's single-byte code page. Here it is always 1252, with its five unassigned codes passed through
// to U+0081, U+008D, U+008F, U+0090 and U+009D, so that all 256 codes survive a round trip.
inline constexpr UINT CP_ACP = 0;
inline constexpr UINT CP_UTF8 = 65001;

inline constexpr LCID LOCALE_USER_DEFAULT = 0x0400;

#pragma GCC visibility push(default)
extern "C" {

// Formats by a picture ("dd MMMM yyyy", "hh mm ss"); a null picture is the user's short form. The result is
// the number of characters with the NUL, with a count of 0 the number needed; 0 when the date or time does
// not exist or the buffer is too small. Month and day names are those of the user's locale.
INT GetDateFormatA(LCID Locale, DWORD dwFlags, const SYSTEMTIME* lpDate, LPCSTR lpFormat, LPSTR lpDateStr,
                   INT cchDate);
INT GetTimeFormatA(LCID Locale, DWORD dwFlags, const SYSTEMTIME* lpTime, LPCSTR lpFormat, LPSTR lpTimeStr,
                   INT cchTime);

// Code page CP_ACP, 1252 or CP_UTF8. A length of -1 takes the text up to and with its NUL; an output count of
// 0 asks for the size. 0 on failure. A character outside the code page becomes *lpDefaultChar or "?", and
// *lpUsedDefaultChar tells so.
INT MultiByteToWideChar(UINT CodePage, DWORD dwFlags, LPCSTR lpMultiByteStr, INT cbMultiByte,
                        LPOLESTR lpWideCharStr, INT cchWideChar);
INT WideCharToMultiByte(UINT CodePage, DWORD dwFlags, LPCOLESTR lpWideCharStr, INT cchWideChar,
                        LPSTR lpMultiByteStr, INT cbMultiByte, LPCSTR lpDefaultChar, BOOL* lpUsedDefaultChar);

}  // extern "C"
#pragma GCC visibility pop
