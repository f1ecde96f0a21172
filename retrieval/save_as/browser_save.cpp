#include "retrieval/save_as/browser_save.h"

#include "platform/library_function.h"
#include "platform/unique_handle.h"

namespace quill {
namespace {

// The browser has loaded this system library already, so its bare name resolves to that instance.
template <typename... Parameters>
HRESULT call_browser(const char* name, Parameters... arguments) noexcept
{
    const unique_library library(LoadLibraryExW(L"ieframe.dll", nullptr, 0));
    using function = HRESULT(WINAPI*)(Parameters...);
    const auto entry = library_function<function>(library.get(), name);
    return entry ? entry(arguments...) : E_NOTIMPL;
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
