// The result of IWebBrowser2's methods that no helper object calls. A file of its own: test programs define
// the function themselves.
#include <windows.h>

HRESULT unimplemented_method(const char* name) noexcept;

HRESULT unimplemented_method(const char*) noexcept
{
    return E_NOTIMPL;
}
