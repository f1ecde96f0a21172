// The browser's side of saving a copy, behind the test's ieframe.dll: scripted results, a record of the
// calls, real folders and files.
#pragma once

#include "tests/support/scopes.h"

#include <windows.h>

#include <functional>
#include <string>
#include <vector>

namespace quill::test {

// The names of the files in a folder.
std::vector<std::wstring> files_in(const std::wstring& folder);

// One at a time. Linking it makes the program export the script that the library's functions look up.
struct save_browser
{
    save_browser();
    // Expects that every load of the library was undone and that no copy is left.
    ~save_browser();
    save_browser(const save_browser&) = delete;
    save_browser& operator=(const save_browser&) = delete;

    static const HANDLE state; // represents a pending save

    scratch_directory cache;  // where the document may write
    scratch_directory chosen; // the place that the user chose

    // The script.
    HRESULT dialog_result = S_OK;
    HRESULT folder_result = S_OK;
    HRESULT save_result = S_OK;
    HRESULT cancel_result = S_OK;
    bool gives_destination = true;
    bool gives_folder = true;
    bool returns_state = true; // if the dialog succeeds
    bool moves_copy = true;    // if saving succeeds
    bool writes_null = false;  // on failure; otherwise out parameters are not touched
    std::function<void()> while_dialog_is_up;
    std::function<void(const wchar_t* copy)> before_save;
    HWND owner = nullptr; // the required owner window of the dialog
    std::wstring cache_path = cache.path();
    std::wstring destination = chosen / L"saved.pdf";

    // The record.
    std::wstring suggested;
    std::vector<std::string> calls; // "dialog", "folder", "save", "cancel"
    int loads = 0;
    int unloads = 0;
    int states_returned = 0;
    int states_released = 0; // passed to saving or cancelling
};

} // namespace quill::test
