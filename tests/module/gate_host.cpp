// A host program for the load gate's tests, started under various names. Loads the library that its argument
// names and exits with 0 or the system's error code.
#include <windows.h>

int wmain(int count, wchar_t** arguments)
{
    if (count != 2)
        return ERROR_INVALID_PARAMETER;
    const HMODULE module = LoadLibraryW(arguments[1]);
    if (!module)
        return static_cast<int>(GetLastError());
    FreeLibrary(module);
    return 0;
}
