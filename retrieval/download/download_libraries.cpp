#include "retrieval/download/download_libraries.h"

#include <windows.h>

#include <initializer_list>

namespace quill {

void KeepDownloadLibraries() noexcept
{
    for (const wchar_t* library : {L"urlmon.dll", L"wininet.dll"}) {
        HMODULE pinned = nullptr; // not counted, nothing to release
        GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_PIN, library, &pinned);
    }
}

} // namespace quill
