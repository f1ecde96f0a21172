// A tab of the system's browser engine with the helper object in it, as a browser puts it there.
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

    // Goes to a page and waits until all of the tab's sinks have heard that it is complete. A server may send
    // the browser on to another address.
    void show(const std::wstring& address) { show(address, address); }
    void show(const std::wstring& address, const std::wstring& arrives_at);
    // Goes to an address without waiting.
    void go_to(const std::wstring& address) { browser_.open(address); }
    // Sends a form there without waiting.
    void post_to(const std::wstring& address, std::string_view form);
    // The page that is shown; null when there is none or it is not complete.
    CComPtr<IHTMLDocument2> page();
    bool is_showing(const std::wstring& address);
    // One of its elements; null, and a failure of the test, when the page has none of that identifier.
    CComPtr<IHTMLElement> element(const wchar_t* id);
    void click(const wchar_t* id);
    // All of the page as markup.
    std::wstring markup();

    // Tells the tab's end, takes the helper object's site, and takes the tab down.
    void close();

    IWebBrowser2* object() { return tab_; }
    IObjectWithSite* helper() { return helper_; }
    // References to the tab's object besides this one's.
    ULONG references_to_tab();
    engine& browser() { return browser_; }
    tab_browser& tab() { return *tab_; }
    void release_helper() { helper_.Release(); }

    // Hear every event right before and right after the helper object.
    event_diary before;
    event_diary after;

private:
    engine browser_;
    CComPtr<tab_browser> tab_;
    CComPtr<IObjectWithSite> helper_;
};

// The longest that the browser waited in the helper object for one event so far, in seconds.
double longest_delay(const helper_tab& tab);

// A helper object by its class; null, and a failure of the test, when it cannot be had.
CComPtr<IObjectWithSite> create_helper();

} // namespace quill::test
