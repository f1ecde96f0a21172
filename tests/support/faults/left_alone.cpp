// The module's imports that are not made to fail, with the reasons.
#include "tests/support/faults/import_faults.h"

#include <algorithm>
#include <iterator>

namespace quill::test {
namespace {

struct left_alone
{
    const char* reason;
    std::vector<const char*> names;
};

const std::vector<left_alone>& all_left_alone()
{
    static const std::vector<left_alone> all = {
        {"Debian 13's runtime: frees, formats into a buffer of its caller's, or cannot fail",
         {"GetTickCount", "TlsFree", "_vscprintf", "_vsnprintf"}},
        {"gives something back: its failure would itself be the loss",
         {"CloseHandle",
          "CoTaskMemFree",
          "DeleteCriticalSection",
          "DeleteDC",
          "DeleteMetaFile",
          "DeleteObject",
          "DestroyMenu",
          "DestroyWindow",
          "EndPaint",
          "FindClose",
          "FreeLibrary",
          "GlobalDeleteAtom",
          "GlobalFree",
          "GlobalUnlock",
          "InternetCloseHandle",
          "LeaveCriticalSection",
          "LocalFree",
          "OleDestroyMenuDescriptor",
          "RegCloseKey",
          "ReleaseDC",
          "ReleaseSRWLockExclusive",
          "RemovePropW",
          "SysFreeString",
          "UnhookWindowsHookEx",
          "UnregisterClassW",
          "VariantClear",
          "_close",
          "_unlock",
          "fclose",
          "free"}},
        {"works on what its caller has and cannot fail for it",
         {"CompareStringOrdinal",
          "DecodePointer",
          "DisableThreadLibraryCalls",
          "EncodePointer",
          "EqualRect",
          "GetCurrentProcess",
          "GetCurrentProcessId",
          "GetCurrentThreadId",
          "GetDynamicTimeZoneInformation",
          "GetKeyState",
          "GetLastError",
          "GetSidSubAuthority",
          "GetSidSubAuthorityCount",
          "GetSysColor",
          "GetSystemTimeAsFileTime",
          "GetSystemTimePreciseAsFileTime",
          "GetThreadLocale",
          "GetTickCount64",
          "GetUserDefaultLCID",
          "IntersectRect",
          "IsDBCSLeadByteEx",
          "LockResource",
          "MulDiv",
          "OffsetRect",
          "PathFindExtensionW",
          "PathFindFileNameW",
          "PathIsRelativeW",
          "PathIsUNCW",
          "PathRemoveExtensionW",
          "PtInRect",
          "QueryPerformanceCounter",
          "QueryPerformanceFrequency",
          "SetLastError",
          "SetThreadErrorMode",
          "SetThreadLocale",
          "SizeofResource",
          "StringFromGUID2",
          "SysStringLen",
          "VariantInit"}},
        {"asks about or changes a window, thread or event of its caller's, which is there",
         {"CallNextHookEx", "CallWindowProcW", "DefWindowProcW", "GetClassLongPtrW", "GetExitCodeThread",
          "GetPropW", "GetThreadId", "GetWindowLongPtrW", "GetWindowRgnBox", "InSendMessageEx", "IsChild",
          "IsWindow", "PeekMessageW", "ResetEvent", "SendMessageW", "SetEvent", "SetWindowLongPtrW",
          "ShowWindow", "TlsGetValue"}},
        {"locks: has no result",
         {"AcquireSRWLockExclusive", "EnterCriticalSection", "InitializeCriticalSection",
          "SleepConditionVariableSRW", "WakeAllConditionVariable", "_lock"}},
        {"succeeds always, by its documentation", {"InitializeCriticalSectionAndSpinCount"}},
        {"computes",
         {"_wcslwr_s",
          "_wcsnicmp",
          "_wcstoi64",
          "isspace",
          "iswctype",
          "iswspace",
          "iswxdigit",
          "localeconv",
          "memchr",
          "memcmp",
          "memcpy",
          "memmove",
          "memset",
          "sprintf",
          "strcmp",
          "strcoll",
          "strerror",
          "strftime",
          "strlen",
          "strncmp",
          "strstr",
          "strtoul",
          "strxfrm",
          "towlower",
          "towupper",
          "wcscoll",
          "wcscspn",
          "wcsftime",
          "wcslen",
          "wcsncpy",
          "wcsstr",
          "wcstol",
          "wcsxfrm",
          "___lc_codepage_func",
          "___mb_cur_max_func"}},
        {"exceptions and the stack: called by the compiler's code, which cannot handle a failure",
         {"RaiseException", "RtlCaptureContext", "RtlLookupFunctionEntry", "RtlUnwindEx", "RtlVirtualUnwind",
          "VirtualProtect", "VirtualQuery", "_resetstkoflw", "__C_specific_handler", "_initterm"}},
        {"linked in with the log's library for output and pauses, or with the runtime for last words: a "
         "failure goes unnoticed",
         {"GetConsoleMode", "GetConsoleScreenBufferInfo", "GetStdHandle", "SetConsoleTextAttribute",
          "SetHandleInformation", "Sleep", "WriteConsoleA", "__iob_func", "_amsg_exit", "_assert", "_errno",
          "_read", "_write", "abort", "fputc", "fputs", "fputwc", "fwprintf", "vfprintf"}},
    };
    return all;
}

// Debian 12's, then Debian 13's.
constexpr const char* names_of_toolchains[] = {"AddVectoredExceptionHandler",
                                               "RemoveVectoredExceptionHandler",
                                               "_close",
                                               "_ultoa",
                                               "getenv",
                                               "sprintf",
                                               "strstr",
                                               "strtoul",
                                               "GetTickCount",
                                               "TlsFree",
                                               "_vscprintf",
                                               "_vsnprintf",
                                               "_wstat64",
                                               "_assert"};

} // namespace

std::vector<std::string> names_left_alone()
{
    std::vector<std::string> names;
    for (const left_alone& each : all_left_alone())
        names.insert(names.end(), each.names.begin(), each.names.end());
    return names;
}

const char* reason_to_leave_alone(const std::string& name)
{
    for (const left_alone& each : all_left_alone())
        if (std::find(each.names.begin(), each.names.end(), name) != each.names.end())
            return each.reason;
    return nullptr;
}

bool depends_on_toolchain(const std::string& name)
{
    return std::find(std::begin(names_of_toolchains), std::end(names_of_toolchains), name) !=
           std::end(names_of_toolchains);
}

} // namespace quill::test
