// The services that the browser offers through its site: the automation object and the shell's window.
#pragma once

#include "tests/support/host/unexpected_web_browser.h"

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

class host_web_browser final : public unexpected_web_browser
{
public:
    explicit host_web_browser(call_log& calls);

    std::wstring location_url;
    std::vector<navigation> navigations;

    STDMETHODIMP get_LocationURL(BSTR* out) override;
    STDMETHODIMP Navigate(BSTR url, VARIANT* flags, VARIANT* target, VARIANT* post_data,
                          VARIANT* headers) override;

private:
    IUnknown* find(REFIID iid) override;
};

class host_shell_window final : public fake_object<IOleWindow>
{
public:
    explicit host_shell_window(call_log& calls);

    HWND window = nullptr;

    STDMETHODIMP GetWindow(HWND* out) override;
    STDMETHODIMP ContextSensitiveHelp(BOOL) override;

private:
    IUnknown* find(REFIID iid) override;
};

// Answers GetWindow of any host object.
HRESULT answer_window(bad_answer kind, HWND* out, HWND value);

} // namespace quill::test
