// The browser's save functions for protected mode, looked up by name at every call: they exist only where
// the browser does, and the module must not keep its library loaded.
#pragma once

#include <windows.h>

#include <shtypes.h>

namespace quill {

// Each returns what the browser's function of the same name returns, or E_NOTIMPL when there is none.
// Strings handed out are freed with CoTaskMemFree; state stands for the pending save and is given back by
// one of the last two functions.

HRESULT IEShowSaveFileDialog(HWND window, const wchar_t* file_name, const wchar_t* folder,
                             const wchar_t* filter, const wchar_t* extension, DWORD filter_index, DWORD flags,
                             wchar_t** destination, HANDLE* state) noexcept;
HRESULT IEGetWriteableFolderPath(REFKNOWNFOLDERID folder_id, wchar_t** folder) noexcept;
HRESULT IESaveFile(HANDLE state, const wchar_t* source) noexcept;
HRESULT IECancelSaveFile(HANDLE state) noexcept;

} // namespace quill
