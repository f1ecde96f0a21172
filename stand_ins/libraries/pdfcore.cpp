// The PDF core library: knows the code of its exception in flight, here QUILL_PDFCORE_ERROR; for "count" the
// number of times that it was asked. For "throw" it throws.
#include <windows.h>

#include <cstdlib>
#include <cstring>

extern "C" __declspec(dllexport) int ASGetExceptionErrorCode()
{
    char code[16] = {};
    GetEnvironmentVariableA("QUILL_PDFCORE_ERROR", code, sizeof code);
    if (std::strcmp(code, "throw") == 0)
        throw 0;
    static int asked = 0;
    ++asked;
    return std::strcmp(code, "count") == 0 ? asked : std::atoi(code);
}
