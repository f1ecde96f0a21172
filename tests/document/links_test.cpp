// Links that the viewer asks to open: resolved against the URL of the document, opened by the browser.
#include "tests/document/document_fixture.h"
#include "tests/document/document_messages.h"

#include <gtest/gtest.h>
#include <ole2.h>

namespace quill::test {
namespace {

void show_with_url(document_fixture& fixture, const wchar_t* url)
{
    fixture.show_url(unserved_url);
    fixture.wait_for_failed_worker();
    fixture.host.object_moniker.display_name = url;
    fixture.host.calls.forget_calls();
}

void open_link(document_fixture& fixture, const wchar_t* link, WPARAM new_window = 0)
{
    fixture.host.browser.navigations.clear();
    EXPECT_EQ(fixture.send_text(message_open_link, new_window, link), 0);
}

QUILL_DOCUMENT_TEST(DocumentLinks, ResolvesRelativeLinksAgainstTheDocument)
{
    struct link_case
    {
        const wchar_t* url;
        const wchar_t* link;
        const wchar_t* opened;
    };
    // The rules of the resolution are tested with ResolveLink.
    const link_case cases[] = {
        {L"http://host.test/a/c/d.pdf", L"../b.pdf", L"http://host.test/a/b.pdf"},
        {L"http://host.test/a/c/d.pdf", L"", L"http://host.test/a/c/"},
        {L"https://host.test:8443/a/d.pdf", L"/b.pdf", L"https://host.test:8443/b.pdf"},
    };
    show_with_url(fixture, L"");
    for (const auto& one : cases) {
        SCOPED_TRACE(testing::PrintToString(std::wstring{one.url} + L" + " + one.link));
        fixture.host.object_moniker.display_name = one.url;
        open_link(fixture, one.link);
        ASSERT_EQ(fixture.host.browser.navigations.size(), 1u);
        EXPECT_EQ(fixture.host.browser.navigations[0].url, one.opened);
    }
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentLinks, OpensAbsoluteLinksUnchanged)
{
    show_with_url(fixture, L"http://host.test/a/c/d.pdf");
    for (const wchar_t* link : {L"http://other.test/a/../q.pdf", L"www.other.test/x"}) {
        SCOPED_TRACE(testing::PrintToString(link));
        open_link(fixture, link);
        ASSERT_EQ(fixture.host.browser.navigations.size(), 1u);
        EXPECT_EQ(fixture.host.browser.navigations[0].url, link);
    }
    EXPECT_EQ(fixture.host.calls.count("IOleClientSite::GetMoniker"), 0);
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentLinks, NavigatesWithDefaultArguments)
{
    show_with_url(fixture, L"http://host.test/a/c/d.pdf");
    for (const WPARAM new_window : {WPARAM{0}, WPARAM{1}, WPARAM{0x1'0000'0000}}) {
        open_link(fixture, L"x.pdf", new_window);
        ASSERT_EQ(fixture.host.browser.navigations.size(), 1u);
        const navigation& seen = fixture.host.browser.navigations[0];
        EXPECT_EQ(seen.flags_type, VT_I4);
        EXPECT_EQ(seen.flags, 0);
        EXPECT_EQ(seen.target_type, VT_BSTR);
        EXPECT_EQ(seen.target, new_window ? L"_blank" : L"");
        EXPECT_EQ(seen.post_data_type, VT_EMPTY);
        EXPECT_EQ(seen.headers_type, VT_EMPTY);
    }
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentLinks, OpensNoRelativeLinkWithoutTheDocumentMoniker)
{
    show_with_url(fixture, L"http://host.test/a/c/d.pdf");
    fixture.host.container_moniker.display_name = L"http://host.test/container/d.pdf";
    for (const char* call : {"IOleClientSite::GetMoniker", "object moniker::GetDisplayName"}) {
        for (const call_fault kind : host_faults) {
            SCOPED_TRACE(std::string{call} + ": " + to_text(kind));
            fixture.host.calls.make_fail(call, kind);
            open_link(fixture, L"x.pdf");
            EXPECT_TRUE(fixture.host.browser.navigations.empty());
        }
        fixture.host.calls.make_fail(call, call_fault::none);
    }
    fixture.host.object_moniker.display_name.reset();
    open_link(fixture, L"x.pdf");
    EXPECT_TRUE(fixture.host.browser.navigations.empty());
    open_link(fixture, L"http://other.test/x.pdf");
    EXPECT_EQ(fixture.host.browser.navigations.size(), 1u);
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentLinks, OpensNothingWithoutTheBrowser)
{
    show_with_url(fixture, L"http://host.test/a/c/d.pdf");
    for (const call_fault kind : host_faults) {
        SCOPED_TRACE(to_text(kind));
        fixture.host.calls.make_fail("IServiceProvider::QueryService", kind);
        open_link(fixture, L"x.pdf");
        EXPECT_TRUE(fixture.host.browser.navigations.empty());
    }
    fixture.host.calls.make_fail("IServiceProvider::QueryService", call_fault::none);
    fixture.host.calls.make_fail("IWebBrowser2::Navigate", call_fault::error);
    open_link(fixture, L"x.pdf");
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentLinks, OpensLinksOfAnyLength)
{
    std::wstring url = L"http://host.test/";
    url.append(50'000, L'a').append(L"/d.pdf");
    show_with_url(fixture, url.c_str());
    const std::wstring link(50'000, L'b');
    open_link(fixture, link.c_str());
    ASSERT_EQ(fixture.host.browser.navigations.size(), 1u);
    EXPECT_EQ(fixture.host.browser.navigations[0].url, url.substr(0, url.size() - 5) + link);
    std::wstring climbing;
    for (int level = 0; level < 5'000; ++level)
        climbing += L"../";
    open_link(fixture, (climbing + L"x.pdf").c_str());
    ASSERT_EQ(fixture.host.browser.navigations.size(), 1u);
    EXPECT_EQ(fixture.host.browser.navigations[0].url, L"http://host.test/x.pdf");
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentLinks, IgnoresANullLink)
{
    show_with_url(fixture, L"http://host.test/a/c/d.pdf");
    open_link(fixture, nullptr);
    open_link(fixture, nullptr, 1);
    EXPECT_TRUE(fixture.host.browser.navigations.empty());
    fixture.close_in_order();
}

} // namespace
} // namespace quill::test
