// The browser's save functions for protected mode, resolved by name at every call: they exist only in the
// browser, and the module must not keep the browser's library loaded.
#pragma once

#include <windows.h>

#include <shtypes.h>

namespace quill {

// Each returns the result of the browser's function of the same name, or E_NOTIMPL if there is none. Returned
// strings are freed with CoTaskMemFree. state is the pending save, which either of the last two functions
// ends.

HRESULT IEShowSaveFileDialog(HWND window, const wchar_t* file_name, const wchar_t* folder,
                             const wchar_t* filter, const wchar_t* extension, DWORD filter_index, DWORD flags,
                             wchar_t** destination, HANDLE* state) noexcept;
HRESULT IEGetWriteableFolderPath(REFKNOWNFOLDERID folder_id, wchar_t** folder) noexcept;
HRESULT IESaveFile(HANDLE state, const wchar_t* source) noexcept;
HRESULT IECancelSaveFile(HANDLE state) noexcept;

} // namespace quill
