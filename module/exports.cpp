// DllMain and the DLL's exports.
#include "module/active_doc_module.h"
#include "module/load_gate.h"

#include <olectl.h>

#include <cwchar>

namespace {

active_doc_module _AtlModule;

} // namespace

extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID reserved)
{
    if (quill::refuses_this_process())
        return FALSE;
    if (reason != DLL_PROCESS_ATTACH)
        return TRUE;
    // Fails for a module with static TLS; ignored.
    DisableThreadLibraryCalls(instance);
    return _AtlModule.DllMain(reason, reserved);
}

STDAPI DllCanUnloadNow()
{
    return _AtlModule.DllCanUnloadNow();
}

STDAPI DllGetClassObject(REFCLSID rclsid, REFIID riid, LPVOID* ppv)
{
    return _AtlModule.DllGetClassObject(rclsid, riid, ppv);
}

STDAPI DllRegisterServer()
{
    return _AtlModule.DllRegisterServer();
}

STDAPI DllUnregisterServer()
{
    return _AtlModule.DllUnregisterServer();
}

// Called by "regsvr32 /i:COMMAND_LINE". "user" selects per-user registration.
STDAPI DllInstall(BOOL install, LPCWSTR command_line)
{
    static constexpr wchar_t per_user[] = L"user";
    // Includes the terminator in the comparison, so that "users" does not match.
    if (command_line && _wcsnicmp(command_line, per_user, ARRAYSIZE(per_user)) == 0)
        AtlSetPerUserRegistration(true);
    if (!install)
        return DllUnregisterServer();
    const HRESULT hr = DllRegisterServer();
    // Return the registration's error, not the result of the clean-up.
    if (FAILED(hr))
        DllUnregisterServer();
    return hr;
}
