#include "module/load_gate.h"

#include <cwchar>

namespace quill {

bool refuses_host(wchar_t (&path)[MAX_PATH])
{
    path[MAX_PATH - 1] = L'\0';
    // Matches anywhere in the path, including a folder of that name.
    return _wcslwr_s(path, MAX_PATH) == 0 && std::wcsstr(path, L"explorer.exe") != nullptr;
}

bool refuses_this_process()
{
    wchar_t path[MAX_PATH] = {};
    return GetModuleFileNameW(nullptr, path, MAX_PATH) != 0 && refuses_host(path);
}

} // namespace quill
