// The shell's path functions as they are documented.
#include <shlwapi.h>

// Behind the last "\", "/" or ":" that has a character behind it which is none of the separators.
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

// The last "." behind which there is no "\" and no blank; the end of the path when there is none.
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
