// The part of the system's headers that plain code needs, for building it natively: types, constants and text
// functions. Code that needs more is not plain and does not compile here.
#pragma once

#include <cstdint>

#define __stdcall

static_assert(sizeof(wchar_t) == 2, "the product's wide text is UTF-16: build with -fshort-wchar");

using BOOL = int;
using BYTE = unsigned char;
using WORD = unsigned short;
using DWORD = std::uint32_t;
using LONG = int; // 32 bits, as on Windows
using UINT = unsigned int;
using HRESULT = std::int32_t;
using LPWSTR = wchar_t*;
using LPCWSTR = const wchar_t*;
using LPCOLESTR = const wchar_t*;
using HKEY = struct registry_key*;

#define TRUE 1
#define FALSE 0
#define MAX_PATH 260
#define ARRAYSIZE(array) (sizeof(array) / sizeof((array)[0]))
#define MAXWORD 0xFFFF
#define MAXDWORD 0xFFFFFFFFu

#define E_FAIL static_cast<HRESULT>(0x80004005)
#define HRESULT_FROM_WIN32(error) static_cast<HRESULT>(((error) & 0xFFFF) | 0x80070000)
#define ERROR_SUCCESS 0u
#define ERROR_FILE_NOT_FOUND 2u
#define ERROR_PATH_NOT_FOUND 3u
#define ERROR_ACCESS_DENIED 5u
#define ERROR_SHARING_VIOLATION 32u
#define ERROR_LOCK_VIOLATION 33u
#define ERROR_INVALID_PARAMETER 87u
#define ERROR_FILE_TOO_LARGE 223u
#define ERROR_MORE_DATA 234u

#define HKEY_CLASSES_ROOT reinterpret_cast<HKEY>(0x80000000)
#define HKEY_CURRENT_USER reinterpret_cast<HKEY>(0x80000001)
#define HKEY_LOCAL_MACHINE reinterpret_cast<HKEY>(0x80000002)
#define HKEY_USERS reinterpret_cast<HKEY>(0x80000003)
#define HKEY_CURRENT_CONFIG reinterpret_cast<HKEY>(0x80000005)

#define REG_NONE 0u
#define REG_SZ 1u
#define REG_EXPAND_SZ 2u
#define REG_BINARY 3u
#define REG_DWORD 4u

#define CP_UTF8 65001u
#define CSTR_LESS_THAN 1
#define CSTR_EQUAL 2
#define CSTR_GREATER_THAN 3

struct SIZE
{
    LONG cx;
    LONG cy;
};

struct POINT
{
    LONG x;
    LONG y;
};

struct RECT
{
    LONG left;
    LONG top;
    LONG right;
    LONG bottom;
};

struct IMAGE_DOS_HEADER
{
    WORD e_magic;
};

extern "C" {
DWORD GetLastError();
int MultiByteToWideChar(UINT code_page, DWORD flags, const char* bytes, int byte_count, wchar_t* text,
                        int capacity);
int WideCharToMultiByte(UINT code_page, DWORD flags, const wchar_t* text, int units, char* bytes,
                        int capacity, const char* default_character, BOOL* used_default);
int CompareStringOrdinal(const wchar_t* left, int left_units, const wchar_t* right, int right_units,
                         BOOL ignore_case);
}
