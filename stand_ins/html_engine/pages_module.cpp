// The entry points of QuillPages.dll, the page object for machines without an HTML engine.
#include "stand_ins/html_engine/html_page.h"
#include "stand_ins/html_engine/live_objects.h"

#include <atlbase.h>
#include <atlcom.h>

namespace {

class pages_module : public CAtlDllModuleT<pages_module>
{
};

pages_module module_object;

} // namespace

OBJECT_ENTRY_AUTO(quill::CLSID_html_page, html_page)

// The result of the HTML interfaces' methods that are not implemented.
HRESULT unimplemented_method(const char*) noexcept
{
    return E_NOTIMPL;
}

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

extern "C" void quill_count_living_objects(quill::live_objects* counts)
{
    *counts = quill::live_counts;
}
