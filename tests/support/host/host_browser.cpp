#include "tests/support/host/host_browser.h"

namespace quill::test {
namespace {

std::wstring text_of(BSTR text)
{
    return text ? std::wstring(text, SysStringLen(text)) : std::wstring{};
}

} // namespace

HRESULT answer_window(call_fault fault, HWND* out, HWND value)
{
    HRESULT result = S_OK;
    if (wants_value(fault, out, result))
        *out = value;
    return result;
}

host_web_browser::host_web_browser(call_log& calls) : logged_object(calls, "web browser")
{
    calls.allow("IWebBrowser2::get_LocationURL");
    calls.allow("IWebBrowser2::Navigate");
}

STDMETHODIMP host_web_browser::get_LocationURL(BSTR* out)
{
    HRESULT result = S_OK;
    if (wants_value(arrive("IWebBrowser2::get_LocationURL"), out, result))
        *out = SysAllocStringLen(location_url.data(), static_cast<UINT>(location_url.size()));
    return result;
}

STDMETHODIMP host_web_browser::Navigate(BSTR url, VARIANT* flags, VARIANT* target, VARIANT* post_data,
                                        VARIANT* headers)
{
    navigation seen;
    seen.url = text_of(url);
    if (flags) {
        seen.flags_type = flags->vt;
        seen.flags = flags->vt == VT_I4 ? flags->lVal : -1;
    }
    if (target) {
        seen.target_type = target->vt;
        seen.target = target->vt == VT_BSTR ? text_of(target->bstrVal) : std::wstring{};
    }
    if (post_data)
        seen.post_data_type = post_data->vt;
    if (headers)
        seen.headers_type = headers->vt;
    const call_fault kind = arrive("IWebBrowser2::Navigate");
    navigations.push_back(std::move(seen));
    return answer_plain(kind);
}

host_shell_window::host_shell_window(call_log& calls) : logged_object(calls, "shell browser")
{
    calls.allow("IShellBrowser::GetWindow");
}

STDMETHODIMP host_shell_window::GetWindow(HWND* out)
{
    return answer_window(arrive("IShellBrowser::GetWindow"), out, window);
}

} // namespace quill::test
