// The PDF core library: knows the code of its exception in flight, here QUILL_PDFCORE_ERROR.
#include <windows.h>

#include <cstdlib>

extern "C" __declspec(dllexport) int ASGetExceptionErrorCode()
{
    char code[16] = {};
    GetEnvironmentVariableA("QUILL_PDFCORE_ERROR", code, sizeof code);
    return std::atoi(code);
}
