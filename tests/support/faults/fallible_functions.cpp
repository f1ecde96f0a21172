// How each function that the module imports can fail.
#include "tests/support/faults/import_faults.h"

#include <olectl.h>
#include <shellapi.h>
#include <urlmon.h>
#include <wininet.h>

#include <cstdint>

namespace quill::test {
namespace {

// Accepts any arguments: in this calling convention the caller removes its own arguments.
template <auto Result, DWORD Error>
std::uintptr_t answer()
{
    SetLastError(Error);
    return static_cast<std::uintptr_t>(Result);
}

template <auto Result, DWORD Error>
fault_way way(const char* name)
{
    return {name, reinterpret_cast<code_address>(&answer<Result, Error>)};
}

using ways = std::vector<fault_way>;
using functions = std::vector<fallible_function>;

void add(functions& all, const ways& same_ways, std::initializer_list<const char*> names)
{
    for (const char* name : names)
        all.push_back({name, same_ways, name});
}

// Counted as one group: for the caller, each of them is a failed allocation.
void add_memory(functions& all)
{
    const fault_way none = way<0, ERROR_NOT_ENOUGH_MEMORY>("no memory");
    fault_way none_any_more = none;
    none_any_more.name = "no memory any more";
    none_any_more.stays = true;
    for (const char* name : {"malloc", "calloc", "realloc"})
        all.push_back({name, {none, none_any_more}, memory_group});
}

void add_registry(functions& all)
{
    const fault_way denied = way<ERROR_ACCESS_DENIED, ERROR_SUCCESS>("access denied");
    const fault_way missing = way<ERROR_FILE_NOT_FOUND, ERROR_SUCCESS>("not found");
    const fault_way no_memory = way<ERROR_OUTOFMEMORY, ERROR_SUCCESS>("no memory");
    const fault_way too_long = way<ERROR_MORE_DATA, ERROR_SUCCESS>("more data");
    add(all, {denied, missing}, {"RegOpenKeyExW"});
    add(all, {missing, too_long}, {"RegQueryValueExW"});
    add(all, {denied, no_memory}, {"RegCreateKeyExW", "RegSetValueExW"});
    add(all, {denied}, {"RegDeleteKeyW", "RegDeleteValueW", "RegEnumKeyExW", "RegQueryInfoKeyW"});
}

void add_files(functions& all)
{
    constexpr auto no_handle = static_cast<std::intptr_t>(-1);
    constexpr DWORD no_attributes = INVALID_FILE_ATTRIBUTES;
    const fault_way denied = way<FALSE, ERROR_ACCESS_DENIED>("access denied");
    add(all,
        {way<no_handle, ERROR_ACCESS_DENIED>("access denied"),
         way<no_handle, ERROR_FILE_NOT_FOUND>("not found")},
        {"CreateFileW"});
    add(all,
        {way<no_handle, ERROR_ACCESS_DENIED>("access denied"),
         way<no_handle, ERROR_FILE_NOT_FOUND>("not found")},
        {"FindFirstFileExW"});
    add(all, {denied, way<FALSE, ERROR_NO_MORE_FILES>("no more files")}, {"FindNextFileW"});
    add(all, {denied, way<FALSE, ERROR_DISK_FULL>("disk full")}, {"CreateDirectoryW", "CopyFileExW"});
    add(all,
        {way<no_attributes, ERROR_FILE_NOT_FOUND>("not found"),
         way<no_attributes, ERROR_ACCESS_DENIED>("access denied")},
        {"GetFileAttributesW"});
    add(all, {denied}, {"DeleteFileW", "DeviceIoControl", "ReadFile", "SetFileAttributesW"});
    add(all, {way<FALSE, ERROR_DISK_FULL>("disk full")}, {"WriteFile"});
    add(all, {way<FALSE, ERROR_FILE_NOT_FOUND>("not found")}, {"PathFileExistsW"});
    add(all,
        {way<FILE_TYPE_UNKNOWN, ERROR_INVALID_HANDLE>("unknown"),
         way<FILE_TYPE_PIPE, ERROR_SUCCESS>("a pipe")},
        {"GetFileType"});
    add(all, {way<0, ERROR_ACCESS_DENIED>("nothing")},
        {"GetFullPathNameW", "GetShortPathNameW", "GetTempFileNameW", "GetTempPathW", "_wfopen", "_wfsopen",
         "fwrite"});
    add(all, {way<-1, ERROR_DISK_FULL>("failure")},
        {"_filelengthi64", "_wmkdir", "_wremove", "_wrename", "_wstat64", "fflush"});
    // As in a browser, which has no standard output.
    add(all, {way<-1, ERROR_INVALID_HANDLE>("none")}, {"_fileno", "_get_osfhandle"});
    const fault_way failure = way<E_FAIL, ERROR_SUCCESS>("E_FAIL");
    add(all, {failure, way<E_ACCESSDENIED, ERROR_SUCCESS>("E_ACCESSDENIED")}, {"SHGetFolderPathW"});
    add(all, {failure, way<S_OK, ERROR_SUCCESS>("S_OK with nothing")}, {"SHGetKnownFolderPath"});
    add(all, {way<FALSE, ERROR_INSUFFICIENT_BUFFER>("failure")}, {"PathAppendW"});
}

void add_system(functions& all)
{
    add(all, {way<0, ERROR_NOT_ENOUGH_MEMORY>("no memory")},
        {"CreateEventW", "CreateThread", "GlobalAddAtomW", "GlobalAlloc", "GlobalLock", "LocalAlloc"});
    add(all,
        {way<FALSE, ERROR_FILE_NOT_FOUND>("not found"), way<FALSE, ERROR_NOT_ENOUGH_MEMORY>("no memory")},
        {"CreateProcessW"});
    add(all,
        {way<SE_ERR_NOASSOC, ERROR_NO_ASSOCIATION>("no program"), way<0, ERROR_OUTOFMEMORY>("no memory")},
        {"ShellExecuteW"});
    add(all, {way<FALSE, ERROR_ACCESS_DENIED>("access denied")},
        {"AllowSetForegroundWindow", "GetTokenInformation", "OpenProcessToken"});
    add(all, {way<0, ERROR_MOD_NOT_FOUND>("not found")},
        {"FindResourceW", "GetModuleHandleExW", "GetModuleHandleW", "LoadLibraryExW", "LoadLibraryW",
         "LoadResource"});
    add(all, {way<0, ERROR_PROC_NOT_FOUND>("not found")}, {"GetProcAddress"});
    add(all, {way<0, ERROR_ENVVAR_NOT_FOUND>("not found")},
        {"GetEnvironmentVariableA", "GetEnvironmentVariableW", "getenv"});
    add(all, {way<0, ERROR_ACCESS_DENIED>("nothing")}, {"FormatMessageA", "GetModuleFileNameW"});
    add(all, {way<0, ERROR_NO_UNICODE_TRANSLATION>("not convertible")},
        {"MultiByteToWideChar", "WideCharToMultiByte"});
    add(all, {way<WAIT_FAILED, ERROR_INVALID_HANDLE>("failure")}, {"WaitForSingleObject"});
    add(all, {way<0, ERROR_SUCCESS>("null")}, {"_gmtime64", "_localtime64", "setlocale"});
}

void add_com(functions& all)
{
    const fault_way no_memory = way<E_OUTOFMEMORY, ERROR_SUCCESS>("E_OUTOFMEMORY");
    add(all, {way<CO_E_CLASSSTRING, ERROR_SUCCESS>("CO_E_CLASSSTRING"), no_memory},
        {"CLSIDFromProgID", "CLSIDFromString"});
    const fault_way nothing = way<S_OK, ERROR_SUCCESS>("S_OK with nothing");
    add(all, {way<REGDB_E_CLASSNOTREG, ERROR_SUCCESS>("REGDB_E_CLASSNOTREG"), no_memory, nothing},
        {"CoGetClassObject"});
    add(all, {no_memory},
        {"CreateDataAdviseHolder", "CreateOleAdviseHolder", "DispCallFunc", "SetErrorInfo"});
    add(all, {way<0, ERROR_NOT_ENOUGH_MEMORY>("null")},
        {"OleCreateMenuDescriptor", "SysAllocString", "SysAllocStringLen"});
    add(all, {way<REGDB_E_CLASSNOTREG, ERROR_SUCCESS>("REGDB_E_CLASSNOTREG")},
        {"OleRegEnumVerbs", "OleRegGetMiscStatus", "OleRegGetUserType"});
    add(all, {way<S_FALSE, ERROR_SUCCESS>("S_FALSE")}, {"OleTranslateAccelerator"});
    add(all, {way<TYPE_E_CANTLOADLIBRARY, ERROR_SUCCESS>("TYPE_E_CANTLOADLIBRARY"), no_memory, nothing},
        {"LoadRegTypeLib", "LoadTypeLibEx"});
    add(all, {way<TYPE_E_REGISTRYACCESS, ERROR_SUCCESS>("TYPE_E_REGISTRYACCESS")},
        {"RegisterTypeLib", "UnRegisterTypeLib"});
    add(all, {way<DISP_E_TYPEMISMATCH, ERROR_SUCCESS>("DISP_E_TYPEMISMATCH"), no_memory},
        {"VariantChangeType"});
}

void add_windows(functions& all)
{
    add(all, {way<0, ERROR_NOT_ENOUGH_MEMORY>("nothing")},
        {"BeginPaint", "CreateMenu", "CreateWindowExW", "GetDC", "LoadCursorW", "LoadMenuW", "LoadStringW",
         "RegisterClassExW", "RegisterWindowMessageW", "SetPropW", "SetWindowRgn", "SetWindowsHookExW"});
    add(all, {way<0, ERROR_INVALID_PARAMETER>("nothing")},
        {"DrawTextW", "FillRect", "FindWindowExW", "GetAncestor", "GetClientRect", "GetFocus", "GetWindow",
         "GetWindowThreadProcessId", "InvalidateRect", "RedrawWindow", "RemoveMenu", "SetFocus",
         "SetWindowPos"});
    add(all, {way<-1, ERROR_INVALID_MENU_HANDLE>("failure")}, {"GetMenuItemCount"});
    add(all, {way<FALSE, ERROR_NOT_ENOUGH_QUOTA>("queue full")},
        {"PostMessageW", "PostThreadMessageW", "SendNotifyMessageW"});
    add(all, {way<0, ERROR_TIMEOUT>("time-out"), way<0, ERROR_INVALID_WINDOW_HANDLE>("no window")},
        {"SendMessageTimeoutW"});
}

void add_drawing(functions& all)
{
    add(all, {way<0, ERROR_NOT_ENOUGH_MEMORY>("nothing")},
        {"BitBlt", "CloseMetaFile", "CreateCompatibleBitmap", "CreateCompatibleDC", "CreateFontW",
         "CreateMetaFileW", "CreateRectRgnIndirect", "CreateSolidBrush", "GetDeviceCaps", "GetStockObject",
         "LPtoDP", "RestoreDC", "SaveDC", "SelectObject", "SetBkMode", "SetMapMode", "SetViewportOrgEx",
         "SetWindowExtEx", "SetWindowOrgEx"});
    add(all, {way<CLR_INVALID, ERROR_INVALID_PARAMETER>("failure")}, {"SetTextColor"});
}

void add_network(functions& all)
{
    add(all,
        {way<E_OUTOFMEMORY, ERROR_SUCCESS>("E_OUTOFMEMORY"),
         way<INET_E_RESOURCE_NOT_FOUND, ERROR_SUCCESS>("INET_E_RESOURCE_NOT_FOUND"),
         way<E_ABORT, ERROR_SUCCESS>("E_ABORT"), way<S_OK, ERROR_SUCCESS>("S_OK without a file")},
        {"URLDownloadToFileW"});
    add(all, {way<0, ERROR_INTERNET_CONNECTION_RESET>("nothing")},
        {"HttpOpenRequestW", "HttpQueryInfoW", "HttpSendRequestW", "InternetConnectW", "InternetCrackUrlW",
         "InternetOpenUrlW", "InternetOpenW", "InternetQueryDataAvailable", "InternetQueryOptionW",
         "InternetReadFile", "InternetSetOptionW"});
}

} // namespace

const std::vector<fallible_function>& fallible_functions()
{
    static const functions all = [] {
        functions made;
        add_memory(made);
        add_registry(made);
        add_files(made);
        add_system(made);
        add_com(made);
        add_windows(made);
        add_drawing(made);
        add_network(made);
        return made;
    }();
    return all;
}

} // namespace quill::test
