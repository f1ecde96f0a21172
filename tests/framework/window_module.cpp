// A DLL with a window class and a hosting window class of its own, for the test that loads and unloads it.
#include "atl/atlhost.h"
#include "atl/atlwin.h"

namespace {

class module_window : public ATL::CWindowImpl<module_window>
{
public:
    DECLARE_WND_CLASS(L"QuillFrameworkModuleWindow")

    BEGIN_MSG_MAP(module_window)
    END_MSG_MAP()
};

} // namespace

// Creates a window and destroys it. FALSE if a class could not be registered.
extern "C" __declspec(dllexport) BOOL use_window_classes()
{
    module_window window;
    if (!ATL::AtlAxWinInit() || !window.Create(HWND_MESSAGE))
        return FALSE;
    return window.DestroyWindow();
}
