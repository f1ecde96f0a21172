// Fixture: a tab of the system's browser engine with the helper object, as the browser sets it up.
#pragma once

#include "stand_ins/browser/tab_browser.h"
#include "tests/browser/engine.h"
#include "tests/sharepoint_pages/event_log.h"

#include <atlcom.h>
#include <mshtml.h>
#include <ocidl.h>

#include <string>
#include <string_view>

namespace quill::test {

enum class with_helper
{
    no,
    yes
};

class helper_tab
{
public:
    explicit helper_tab(with_helper helper = with_helper::yes);
    ~helper_tab() { close(); }
    helper_tab(const helper_tab&) = delete;
    helper_tab& operator=(const helper_tab&) = delete;

    // Navigates and waits until all of the tab's sinks have got DocumentComplete. arrives_at differs from url
    // after a redirection.
    void show(const std::wstring& url) { show(url, url); }
    void show(const std::wstring& url, const std::wstring& arrives_at);
    // Navigates without waiting.
    void go_to(const std::wstring& url) { browser_.open(url); }
    // Posts a form without waiting.
    void post_to(const std::wstring& url, std::string_view form);
    // The current page if it is complete; otherwise null.
    CComPtr<IHTMLDocument2> page();
    bool is_showing(const std::wstring& url);
    // Fails the test and returns null if the page has no element with that identifier.
    CComPtr<IHTMLElement> element(const wchar_t* id);
    void click(const wchar_t* id);
    // The markup of the whole page.
    std::wstring markup();

    // Fires OnQuit, calls SetSite(nullptr), and closes the tab.
    void close();

    IWebBrowser2* object() { return tab_; }
    IObjectWithSite* helper() { return helper_; }
    // References to the tab object except this one's.
    ULONG references_to_tab();
    engine& browser() { return browser_; }
    tab_browser& tab() { return *tab_; }
    void release_helper() { helper_.Release(); }

    // Get each event directly before and directly after the helper object.
    event_log before;
    event_log after;

private:
    engine browser_;
    CComPtr<tab_browser> tab_;
    CComPtr<IObjectWithSite> helper_;
};

// The longest time in seconds that one event has spent in the helper object.
double longest_delay(const helper_tab& tab);

// Fails the test and returns null if the helper object cannot be created.
CComPtr<IObjectWithSite> create_helper();

} // namespace quill::test
