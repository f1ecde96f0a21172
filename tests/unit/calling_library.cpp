// Stands in for the crash library: calls the program back while it is being loaded.
#include <windows.h>

#include <cstdio>

extern "C" __declspec(dllexport) int HandleException(EXCEPTION_POINTERS* exception)
{
    std::fprintf(stderr, "crashguard: exception %08lx\n", exception->ExceptionRecord->ExceptionCode);
    std::fflush(stderr);
    return EXCEPTION_EXECUTE_HANDLER;
}

extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD reason, void*)
{
    if (reason == DLL_PROCESS_ATTACH) {
        void* const found =
            reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(nullptr), "library_loads"));
        if (found)
            reinterpret_cast<void (*)()>(found)();
    }
    return TRUE;
}
