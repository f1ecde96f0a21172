#include "tests/support/host/host_browser.h"

namespace quill::test {
namespace {

std::wstring text_of(BSTR text)
{
    return text ? std::wstring(text, SysStringLen(text)) : std::wstring{};
}

} // namespace

HRESULT answer_window(bad_answer kind, HWND* out, HWND value)
{
    if (!out) {
        ADD_FAILURE() << "GetWindow without an out argument";
        return E_POINTER;
    }
    EXPECT_EQ(*out, nullptr) << "the out variable was not initialised";
    switch (kind) {
    case bad_answer::failure:
        *out = nullptr;
        return E_FAIL;
    case bad_answer::failure_untouched:
        return E_NOTIMPL;
    case bad_answer::success_null:
        *out = nullptr;
        return S_OK;
    case bad_answer::success_untouched:
        return S_OK;
    case bad_answer::none:
        break;
    }
    *out = value;
    return S_OK;
}

host_web_browser::host_web_browser(call_log& calls) : unexpected_web_browser(calls, "web browser")
{
    calls.allow("IWebBrowser2::get_LocationURL");
    calls.allow("IWebBrowser2::Navigate");
}

IUnknown* host_web_browser::find(REFIID iid)
{
    return IsEqualIID(iid, IID_IWebBrowser2) ? this : nullptr;
}

STDMETHODIMP host_web_browser::get_LocationURL(BSTR* out)
{
    if (!out) {
        ADD_FAILURE() << "get_LocationURL without an out argument";
        return E_POINTER;
    }
    EXPECT_EQ(*out, nullptr) << "the out variable was not initialised";
    switch (arrive("IWebBrowser2::get_LocationURL")) {
    case bad_answer::failure:
        *out = nullptr;
        return E_FAIL;
    case bad_answer::failure_untouched:
        return E_NOTIMPL;
    case bad_answer::success_null:
        *out = nullptr;
        return S_OK;
    case bad_answer::success_untouched:
        return S_OK;
    case bad_answer::none:
        break;
    }
    *out = SysAllocStringLen(location_url.data(), static_cast<UINT>(location_url.size()));
    return S_OK;
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
    const bad_answer kind = arrive("IWebBrowser2::Navigate");
    navigations.push_back(std::move(seen));
    return answer_plain(kind);
}

host_shell_window::host_shell_window(call_log& calls) : fake_object(calls, "shell browser")
{
    calls.allow("IShellBrowser::GetWindow");
}

IUnknown* host_shell_window::find(REFIID iid)
{
    return IsEqualIID(iid, IID_IOleWindow) ? this : nullptr;
}

STDMETHODIMP host_shell_window::GetWindow(HWND* out)
{
    return answer_window(arrive("IShellBrowser::GetWindow"), out, window);
}

STDMETHODIMP host_shell_window::ContextSensitiveHelp(BOOL)
{
    ADD_FAILURE() << "unexpected call: IShellBrowser::ContextSensitiveHelp";
    return E_NOTIMPL;
}

} // namespace quill::test
