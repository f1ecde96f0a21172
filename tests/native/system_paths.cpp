// The path functions of the shell that plain code calls, as documented.
#include <shlwapi.h>

// After the last "\", "/" or ":" that is followed by a character other than a separator.
wchar_t* PathFindFileNameW(const wchar_t* path)
{
    const wchar_t* name = path;
    for (; *path != L'\0'; ++path) {
        if ((*path == L'\\' || *path == L'/' || *path == L':') && path[1] != L'\0' && path[1] != L'\\' &&
            path[1] != L'/')
            name = path + 1;
    }
    return const_cast<wchar_t*>(name);
}

// The last "." that neither a "\" nor a blank follows; the end of the path if there is none.
wchar_t* PathFindExtensionW(const wchar_t* path)
{
    const wchar_t* extension = nullptr;
    for (; *path != L'\0'; ++path) {
        if (*path == L'.')
            extension = path;
        else if (*path == L'\\' || *path == L' ')
            extension = nullptr;
    }
    return const_cast<wchar_t*>(extension ? extension : path);
}
