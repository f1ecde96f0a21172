#include "tests/soak/download_setup.h"

#include <windows.h>

#include <cstdlib>

namespace quill::soak {
namespace {

constexpr wchar_t switch_path[] = L"SOFTWARE\\Quill\\DocStudio\\14\\Settings\\Preferences\\kBrowserPlugin";
constexpr wchar_t switch_value[] = L"kIEBrowserPluginWinINet";

} // namespace

download_setup::download_setup() : switch_(HKEY_CURRENT_USER, switch_path)
{
    // The module reads its variables with its C runtime, when it is first asked for the folder.
    _wputenv_s(L"QUILL_TMP_FOLDER", cache.path().c_str());
}

void download_setup::use(download_path path)
{
    switch_.set_string(switch_value, path == download_path::wininet ? L"/b 1" : L"/b 0");
}

void download_setup::empty_cache()
{
    WIN32_FIND_DATAW found{};
    const HANDLE search = FindFirstFileW((cache / L"qll*").c_str(), &found);
    if (search == INVALID_HANDLE_VALUE)
        return;
    do
        test::remove_path(cache / found.cFileName);
    while (FindNextFileW(search, &found));
    FindClose(search);
}

} // namespace quill::soak
