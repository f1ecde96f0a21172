// A host program for the load gate's tests, started under various names: loads the library named by its
// argument. The exit code is 0 when that worked, the system's error otherwise.
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
