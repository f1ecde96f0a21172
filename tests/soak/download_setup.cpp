#include "tests/soak/download_setup.h"

#include <windows.h>

#include <cstdlib>

namespace quill::soak {

download_setup::download_setup()
{
    // The module reads its variables through its C runtime, when it first looks up the folder.
    _wputenv_s(L"QUILL_TMP_FOLDER", cache.path().c_str());
}

void download_setup::use(download_path path)
{
    if (path == download_path::wininet)
        setting_.use_wininet();
    else
        setting_.use_urlmon();
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
