#include "retrieval/browser_save.h"

#include <cstring>
#include <memory>
#include <type_traits>

namespace quill {
namespace {

struct library_closer
{
    void operator()(HMODULE library) const noexcept { FreeLibrary(library); }
};
using library_handle = std::unique_ptr<std::remove_pointer_t<HMODULE>, library_closer>;

// The library is a system component that the browser has loaded already; its bare name finds that one.
template <typename... Parameters>
HRESULT call_browser(const char* name, Parameters... arguments) noexcept
{
    const library_handle library(LoadLibraryExW(L"ieframe.dll", nullptr, 0));
    const FARPROC address = library ? GetProcAddress(library.get(), name) : nullptr;
    if (!address)
        return E_NOTIMPL;
    using function = HRESULT(WINAPI*)(Parameters...);
    static_assert(sizeof(function) == sizeof(FARPROC));
    function entry = nullptr;
    std::memcpy(&entry, &address, sizeof entry);
    return entry(arguments...);
}

} // namespace

HRESULT IEShowSaveFileDialog(HWND window, const wchar_t* file_name, const wchar_t* folder,
                             const wchar_t* filter, const wchar_t* extension, DWORD filter_index, DWORD flags,
                             wchar_t** destination, HANDLE* state) noexcept
{
    return call_browser("IEShowSaveFileDialog", window, file_name, folder, filter, extension, filter_index,
                        flags, destination, state);
}

HRESULT IEGetWriteableFolderPath(REFKNOWNFOLDERID folder_id, wchar_t** folder) noexcept
{
    return call_browser<REFKNOWNFOLDERID, wchar_t**>("IEGetWriteableFolderPath", folder_id, folder);
}

HRESULT IESaveFile(HANDLE state, const wchar_t* source) noexcept
{
    return call_browser("IESaveFile", state, source);
}

HRESULT IECancelSaveFile(HANDLE state) noexcept
{
    return call_browser("IECancelSaveFile", state);
}

} // namespace quill
