// The entry points of QuillPDFCtrl.dll, the stand-in for the suite's viewer control.
#include "stand_ins/viewer/viewer_control.h"

#include <atlbase.h>
#include <atlcom.h>

namespace {

class viewer_module : public CAtlDllModuleT<viewer_module>
{
};

viewer_module module_object;

} // namespace

OBJECT_ENTRY_AUTO(quill::CLSID_viewer_control, viewer_control)

extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD reason, LPVOID reserved)
{
    return module_object.DllMain(reason, reserved);
}

STDAPI DllCanUnloadNow()
{
    return module_object.DllCanUnloadNow();
}

STDAPI DllGetClassObject(REFCLSID class_id, REFIID interface_id, LPVOID* object)
{
    return module_object.DllGetClassObject(class_id, interface_id, object);
}

STDAPI DllRegisterServer()
{
    return module_object.DllRegisterServer(FALSE);
}

STDAPI DllUnregisterServer()
{
    return module_object.DllUnregisterServer(FALSE);
}
