// Scripted replacements of the browser's save functions. WITHOUT_... omits one of them.
#include "tests/retrieval/ieframe/browser_script.h"

namespace {

const browser_script& script()
{
    const auto address =
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(nullptr), browser_script_name));
    return *static_cast<const browser_script*>(address);
}

} // namespace

extern "C" {

#ifndef WITHOUT_DIALOG
__declspec(dllexport) HRESULT WINAPI IEShowSaveFileDialog(HWND window, LPCWSTR file_name, LPCWSTR folder,
                                                          LPCWSTR filter, LPCWSTR extension,
                                                          DWORD filter_index, DWORD flags,
                                                          LPWSTR* destination, HANDLE* state)
{
    return script().show_dialog(window, file_name, folder, filter, extension, filter_index, flags,
                                destination, state);
}
#endif

#ifndef WITHOUT_FOLDER
__declspec(dllexport) HRESULT WINAPI IEGetWriteableFolderPath(REFKNOWNFOLDERID folder_id, LPWSTR* folder)
{
    return script().get_folder(folder_id, folder);
}
#endif

#ifndef WITHOUT_SAVE
__declspec(dllexport) HRESULT WINAPI IESaveFile(HANDLE state, LPCWSTR source)
{
    return script().save(state, source);
}
#endif

#ifndef WITHOUT_CANCEL
__declspec(dllexport) HRESULT WINAPI IECancelSaveFile(HANDLE state)
{
    return script().cancel(state);
}
#endif

BOOL WINAPI DllMain(HINSTANCE, DWORD reason, void*)
{
    if (reason == DLL_PROCESS_ATTACH || reason == DLL_PROCESS_DETACH)
        script().loaded(reason == DLL_PROCESS_ATTACH);
    return TRUE;
}

} // extern "C"
