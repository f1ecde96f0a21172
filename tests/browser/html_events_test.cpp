// Clicks and states of a page in the system's browser engine, as sinks receive and cancel them.
#include "stand_ins/html_engine/identifiers.h"
#include "tests/browser/html_page_access.h"
#include "tests/browser/page_sink.h"
#include "tests/browser/registered_pages.h"
#include "tests/support/http_server.h"
#include "tests/support/wait.h"

#include <gmock/gmock.h>
#include <ocidl.h>
#include <olectl.h>

namespace quill::test {
namespace {

class PageEvents : public testing::Test
{
protected:
    PageEvents()
    {
        server.route("/page.html",
                     http_response::ok("<a id=link href='/next.html'>Next <b id=inner>page</b></a>"
                                       "<p id=text>Text<p><a id=here href='#below'>Here</a>"
                                       "<a id=script href='javascript:go()'>Script</a>",
                                       "text/html"));
        server.route("/next.html", http_response::ok("<p>Next", "text/html"));
    }

    std::size_t requests_for(const std::string& target) const
    {
        std::size_t count = 0;
        for (const auto& request : server.requests())
            count += request.target == target ? 1 : 0;
        return count;
    }

    bool arrives_at(engine& browser, const wchar_t* target) const
    {
        return wait_until([&] {
            const auto page = complete_page(browser);
            CComBSTR url;
            return page && page->get_URL(&url) == S_OK && url == server.url(target).c_str();
        });
    }

    ole_apartment apartment;
    cross_process_lock lock{L"registration"};
    registered_pages pages;
    http_server server;
};

TEST_F(PageEvents, AClickOnALinkIsReportedAndThenFollowed)
{
    engine browser;
    const auto page = open_page(browser, server.url(L"/page.html"));
    page_sink sink;
    sink.advise(page);
    EXPECT_EQ(element_by_id(page, L"link")->click(), S_OK);
    EXPECT_TRUE(arrives_at(browser, L"/next.html"));
    ASSERT_EQ(sink.events().size(), 1u);
    EXPECT_EQ(sink.events()[0].id, event_click);
    EXPECT_EQ(sink.events()[0].type, L"click");
    EXPECT_EQ(sink.events()[0].source, L"link");
}

TEST_F(PageEvents, AClickThatASinkCancelsIsNotFollowed)
{
    engine browser;
    const auto page = open_page(browser, server.url(L"/page.html"));
    page_sink sink;
    sink.advise(page);
    sink.on_click = [](IHTMLEventObj*) -> VARIANT_BOOL { return VARIANT_FALSE; };
    EXPECT_EQ(element_by_id(page, L"link")->click(), S_OK);
    EXPECT_EQ(sink.count(event_click), 1);

    sink.on_click = [](IHTMLEventObj* event) -> VARIANT_BOOL {
        EXPECT_EQ(event->put_returnValue(CComVariant(false)), S_OK);
        EXPECT_EQ(event->put_cancelBubble(VARIANT_TRUE), S_OK);
        CComVariant value;
        VARIANT_BOOL cancelled = VARIANT_FALSE;
        EXPECT_EQ(event->get_returnValue(&value), S_OK);
        EXPECT_EQ(event->get_cancelBubble(&cancelled), S_OK);
        EXPECT_TRUE(value.vt == VT_BOOL && value.boolVal == VARIANT_FALSE);
        EXPECT_EQ(cancelled, VARIANT_TRUE);
        return VARIANT_TRUE;
    };
    EXPECT_EQ(element_by_id(page, L"link")->click(), S_OK);
    EXPECT_EQ(sink.count(event_click), 2);

    // The third click is not cancelled and is the first one to make a request.
    sink.on_click = nullptr;
    EXPECT_EQ(element_by_id(page, L"link")->click(), S_OK);
    EXPECT_TRUE(arrives_at(browser, L"/next.html"));
    EXPECT_EQ(requests_for("/next.html"), 1u);
}

TEST_F(PageEvents, AClickInsideALinkNamesTheInnermostElement)
{
    engine browser;
    const auto page = open_page(browser, server.url(L"/page.html"));
    page_sink sink;
    sink.advise(page);
    EXPECT_EQ(element_by_id(page, L"inner")->click(), S_OK);
    ASSERT_EQ(sink.events().size(), 1u);
    EXPECT_EQ(sink.events()[0].source, L"inner");
    EXPECT_TRUE(arrives_at(browser, L"/next.html"));
}

TEST_F(PageEvents, OtherClicksAreReportedAndNotFollowed)
{
    engine browser;
    const auto page = open_page(browser, server.url(L"/page.html"));
    page_sink sink;
    sink.advise(page);
    for (const wchar_t* id : {L"text", L"here", L"script"})
        EXPECT_EQ(element_by_id(page, id)->click(), S_OK);
    EXPECT_EQ(sink.count(event_click), 3);
    // The next request is for the target of a link.
    EXPECT_EQ(element_by_id(page, L"link")->click(), S_OK);
    EXPECT_TRUE(arrives_at(browser, L"/next.html"));
    EXPECT_EQ(server.requests().size(), 2u);
}

TEST_F(PageEvents, TheMouseClicksOnWhatTheWindowShows)
{
    engine browser;
    const auto page = open_page(browser, server.url(L"/page.html"));
    page_sink sink;
    sink.advise(page);
    ASSERT_TRUE(wait_until([&] { return browser.find_window(page_window_class) != nullptr; }));
    const HWND window = browser.find_window(page_window_class);
    const LPARAM link = MAKELPARAM(24, 24); // the first word of the page
    // The words are there once they have been laid out.
    EXPECT_TRUE(wait_until([&] {
        if (sink.events().empty()) {
            PostMessageW(window, WM_LBUTTONDOWN, MK_LBUTTON, link);
            PostMessageW(window, WM_LBUTTONUP, 0, link);
        }
        return !sink.events().empty();
    }));
    EXPECT_EQ(sink.events()[0].source, L"link");
    EXPECT_TRUE(arrives_at(browser, L"/next.html"));
}

TEST_F(PageEvents, EverySinkReceivesClicksUntilItIsUnadvised)
{
    engine browser;
    const auto page = open_page(browser, server.url(L"/page.html"));
    page_sink first;
    page_sink second;
    first.advise(page);
    second.advise(page);
    EXPECT_EQ(element_by_id(page, L"text")->click(), S_OK);
    first.unadvise();
    EXPECT_EQ(element_by_id(page, L"text")->click(), S_OK);
    EXPECT_EQ(first.count(event_click), 1);
    EXPECT_EQ(second.count(event_click), 2);
}

TEST_F(PageEvents, ASinkMayUnadviseDuringTheEvent)
{
    engine browser;
    const auto page = open_page(browser, server.url(L"/page.html"));
    page_sink sink;
    sink.advise(page);
    sink.on_click = [&](IHTMLEventObj*) -> VARIANT_BOOL {
        sink.unadvise();
        return VARIANT_TRUE;
    };
    EXPECT_EQ(element_by_id(page, L"text")->click(), S_OK);
    EXPECT_EQ(element_by_id(page, L"text")->click(), S_OK);
    EXPECT_EQ(sink.count(event_click), 1);
}

TEST_F(PageEvents, TheStateIsReportedWhileThePageArrives)
{
    http_response held = http_response::ok("<p>Slow" + std::string(20'000, ' '), "text/html");
    held.hold_after = 10'000;
    server.route("/slow.html", held);
    engine browser;
    browser.open(server.url(L"/slow.html"));
    CComPtr<IDispatch> document;
    ASSERT_TRUE(
        wait_until([&] { return browser.control().browser()->get_Document(&document) == S_OK && document; }));
    const CComQIPtr<IHTMLDocument2> page(document);
    ASSERT_TRUE(page);
    CComBSTR state;
    EXPECT_EQ(page->get_readyState(&state), S_OK);
    EXPECT_EQ(state, L"loading");
    CComVariant number;
    DISPPARAMS none{};
    EXPECT_EQ(document->Invoke(DISPID_READYSTATE, IID_NULL, 0, DISPATCH_PROPERTYGET, &none, &number, nullptr,
                               nullptr),
              S_OK);
    EXPECT_TRUE(number.vt == VT_I4 && number.lVal == READYSTATE_LOADING);

    page_sink sink;
    sink.advise(page);
    server.release();
    ASSERT_TRUE(wait_until([&] { return sink.count(event_ready_state_change) == 2; }));
    EXPECT_EQ(sink.events()[0].type, L"readystatechange");
    state.Empty();
    EXPECT_EQ(page->get_readyState(&state), S_OK);
    EXPECT_EQ(state, L"complete");
}

TEST_F(PageEvents, TheBrowserIsNotifiedOfTheCompletePage)
{
    engine browser;
    open_page(browser, server.url(L"/page.html"));
    EXPECT_TRUE(wait_until([&] {
        READYSTATE state = READYSTATE_UNINITIALIZED;
        return browser.control().browser()->get_ReadyState(&state) == S_OK && state == READYSTATE_COMPLETE;
    }));
}

TEST_F(PageEvents, WrongConnectionsAreRefused)
{
    engine browser;
    const CComQIPtr<IConnectionPointContainer> container(open_page(browser, server.url(L"/page.html")));
    CComPtr<IConnectionPoint> point;
    EXPECT_EQ(container->FindConnectionPoint(IID_IUnknown, &point), CONNECT_E_NOCONNECTION);
    EXPECT_FALSE(point);
    ASSERT_EQ(container->FindConnectionPoint(IID_IPropertyNotifySink, &point), S_OK);
    DWORD cookie = 7;
    page_sink sink; // no IPropertyNotifySink
    EXPECT_EQ(point->Advise(static_cast<IDispatch*>(&sink), &cookie), CONNECT_E_CANNOTCONNECT);
    EXPECT_EQ(cookie, 0u);
    EXPECT_EQ(point->Unadvise(99), CONNECT_E_NOCONNECTION);
}

} // namespace
} // namespace quill::test
