// The services of the browser's site: the automation object and the window of the shell.
#pragma once

#include "tests/support/fakes/logged_object.h"

#include <exdisp.h>
#include <mshtml.h>
#include <ocidl.h>
#include <unimplemented_interfaces.h>

#include <string>
#include <vector>

namespace quill::test {

struct navigation
{
    std::wstring url;
    VARTYPE flags_type = VT_ILLEGAL;
    long flags = -1;
    VARTYPE target_type = VT_ILLEGAL;
    std::wstring target;
    VARTYPE post_data_type = VT_ILLEGAL; // VT_ILLEGAL for a null pointer
    VARTYPE headers_type = VT_ILLEGAL;
};

class host_web_browser final : public logged_object<without_IWebBrowser2<IWebBrowser2>>
{
public:
    explicit host_web_browser(call_log& calls);

    std::wstring location_url;
    std::vector<navigation> navigations;

    STDMETHODIMP get_LocationURL(BSTR* out) override;
    STDMETHODIMP Navigate(BSTR url, VARIANT* flags, VARIANT* target, VARIANT* post_data,
                          VARIANT* headers) override;
};

class host_shell_window final : public logged_object<without_IOleWindow<IOleWindow>>
{
public:
    explicit host_shell_window(call_log& calls);

    HWND window = nullptr;

    STDMETHODIMP GetWindow(HWND* out) override;
};

// Result of GetWindow of any host object.
HRESULT answer_window(call_fault fault, HWND* out, HWND value);

} // namespace quill::test
