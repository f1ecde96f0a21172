// Connects the test's ieframe.dll with the test: the program exports the script that the library's four
// functions follow.
#pragma once

#include <windows.h>

#include <shtypes.h>

struct browser_script
{
    void (*loaded)(bool is_loaded);
    HRESULT (*show_dialog)(HWND window, const wchar_t* file_name, const wchar_t* folder,
                           const wchar_t* filter, const wchar_t* extension, DWORD filter_index, DWORD flags,
                           wchar_t** destination, HANDLE* state);
    HRESULT (*get_folder)(REFKNOWNFOLDERID folder_id, wchar_t** folder);
    HRESULT (*save)(HANDLE state, const wchar_t* source);
    HRESULT (*cancel)(HANDLE state);
};

inline constexpr char browser_script_name[] = "quill_browser_script";
