// Stands in for the PDF core library, which returns the error code of its current exception: the value of
// QUILL_PDFCORE_ERROR, or the number of calls if that is "count". If it is "throw", the function throws.
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
