// Takes the place of the crash library and calls back into the program while it is loaded and freed.
#include <windows.h>

#include <cstdio>

extern "C" __declspec(dllexport) int HandleException(EXCEPTION_POINTERS* exception)
{
    std::fprintf(stderr, "crashguard: exception %08lx\n", exception->ExceptionRecord->ExceptionCode);
    std::fflush(stderr);
    return EXCEPTION_EXECUTE_HANDLER;
}

namespace {

void call_program(const char* name)
{
    void* const found = reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(nullptr), name));
    if (found)
        reinterpret_cast<void (*)()>(found)();
}

} // namespace

extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD reason, void*)
{
    if (reason == DLL_PROCESS_ATTACH)
        call_program("library_loads");
    if (reason == DLL_PROCESS_DETACH)
        call_program("library_ends");
    return TRUE;
}
