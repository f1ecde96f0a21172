// Links that the viewer asks to open: resolved against the document's address, opened by the browser.
#include "tests/document/document_fixture.h"
#include "tests/document/document_messages.h"

#include <gtest/gtest.h>
#include <ole2.h>

namespace quill::test {
namespace {

void show_with_address(document_bench& bench, const wchar_t* address)
{
    bench.show_url(unserved_url);
    bench.wait_for_failed_worker();
    bench.host.object_moniker.display_name = address;
    bench.host.calls.forget_calls();
}

void open_link(document_bench& bench, const wchar_t* link, WPARAM new_window = 0)
{
    bench.host.browser.navigations.clear();
    EXPECT_EQ(bench.send_text(message_open_link, new_window, link), 0);
}

QUILL_DOCUMENT_TEST(DocumentLinks, AreResolvedAgainstTheDocument)
{
    struct link_case
    {
        const wchar_t* address;
        const wchar_t* link;
        const wchar_t* opened;
    };
    const link_case cases[] = {
        {L"http://host.test/a/c/d.pdf", L"../b.pdf", L"http://host.test/a/b.pdf"},
        {L"http://host.test/a/c/d.pdf", L"/x.pdf", L"http://host.test/x.pdf"},
        {L"http://host.test/a/c/d.pdf", L"x.pdf", L"http://host.test/a/c/x.pdf"},
        {L"http://host.test/a/c/d.pdf", L"./x.pdf", L"http://host.test/a/c/x.pdf"},
        {L"http://host.test/a/c/d.pdf", L"../../x.pdf", L"http://host.test/x.pdf"},
        {L"http://host.test/a/c/d.pdf", L"../../../x.pdf", L"http://host.test/x.pdf"},
        {L"http://host.test/a/c/d.pdf", L"sub/x.pdf#page=2", L"http://host.test/a/c/sub/x.pdf#page=2"},
        {L"http://host.test/a/c/d.pdf", L"#page=2", L"http://host.test/a/c/#page=2"},
        {L"http://host.test/a/c/d.pdf", L"", L"http://host.test/a/c/"},
        {L"http://host.test/a/c/d.pdf", L"a/../b.pdf", L"http://host.test/a/./b.pdf"},
        {L"http://host.test/a/c/d.pdf", L"a/./b.pdf", L"http://host.test/a/c/./b.pdf"},
        {L"http://host.test/a/c/d.pdf", L"a b.pdf", L"http://host.test/a/c/a b.pdf"},
        {L"https://host.test/a/c/d.pdf", L"../b.pdf", L"https://host.test/a/b.pdf"},
        {L"https://host.test:8443/a/d.pdf", L"/b.pdf", L"https://host.test:8443/b.pdf"},
        {L"http://host.test/a/get.aspx?f=/z/y.pdf", L"x.pdf", L"http://host.test/a/x.pdf"},
        {L"http://host.test/a/d.pdf?x=1?y=2", L"/x.pdf", L"http://host.test/x.pdf"},
        {L"http://host.test/d.pdf", L"x.pdf", L"http://host.test/x.pdf"},
        {L"http://host.test/d.pdf", L"/x.pdf", L"http://host.test/x.pdf"},
        {L"file:///c:/a/d.pdf", L"x.pdf", L"file:///c:/a/x.pdf"},
    };
    show_with_address(bench, L"");
    for (const auto& one : cases) {
        SCOPED_TRACE(testing::PrintToString(std::wstring{one.address} + L" + " + one.link));
        bench.host.object_moniker.display_name = one.address;
        open_link(bench, one.link);
        ASSERT_EQ(bench.host.browser.navigations.size(), 1u);
        EXPECT_EQ(bench.host.browser.navigations[0].url, one.opened);
    }
    bench.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentLinks, AbsoluteOnesAreOpenedAsTheyAre)
{
    show_with_address(bench, L"http://host.test/a/c/d.pdf");
    for (const wchar_t* link :
         {L"http://other.test/a/../q.pdf", L"https://other.test/", L"ftp://other.test/x", L"www.other.test/x",
          L"mailto:a@b.test", L"file:///c:/x.pdf", L"q?u=http://x.test/"}) {
        SCOPED_TRACE(testing::PrintToString(link));
        open_link(bench, link);
        ASSERT_EQ(bench.host.browser.navigations.size(), 1u);
        EXPECT_EQ(bench.host.browser.navigations[0].url, link);
    }
    EXPECT_EQ(bench.host.calls.count("IOleClientSite::GetMoniker"), 0);
    bench.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentLinks, AreOpenedWithPlainArguments)
{
    show_with_address(bench, L"http://host.test/a/c/d.pdf");
    for (const WPARAM new_window : {WPARAM{0}, WPARAM{1}, WPARAM{0x1'0000'0000}}) {
        open_link(bench, L"x.pdf", new_window);
        ASSERT_EQ(bench.host.browser.navigations.size(), 1u);
        const navigation& seen = bench.host.browser.navigations[0];
        EXPECT_EQ(seen.flags_type, VT_I4);
        EXPECT_EQ(seen.flags, 0);
        EXPECT_EQ(seen.target_type, VT_BSTR);
        EXPECT_EQ(seen.target, new_window ? L"_blank" : L"");
        EXPECT_EQ(seen.post_data_type, VT_EMPTY);
        EXPECT_EQ(seen.headers_type, VT_EMPTY);
    }
    bench.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentLinks, RelativeOnesNeedTheDocumentsMoniker)
{
    show_with_address(bench, L"http://host.test/a/c/d.pdf");
    bench.host.container_moniker.display_name = L"http://host.test/container/d.pdf";
    for (const char* call : {"IOleClientSite::GetMoniker", "object moniker::GetDisplayName"}) {
        for (const bad_answer kind : every_bad_answer) {
            SCOPED_TRACE(std::string{call} + ": " + to_text(kind));
            bench.host.calls.make_fail(call, kind);
            open_link(bench, L"x.pdf");
            EXPECT_TRUE(bench.host.browser.navigations.empty());
        }
        bench.host.calls.make_fail(call, bad_answer::none);
    }
    bench.host.object_moniker.display_name.reset();
    open_link(bench, L"x.pdf");
    EXPECT_TRUE(bench.host.browser.navigations.empty());
    open_link(bench, L"http://other.test/x.pdf");
    EXPECT_EQ(bench.host.browser.navigations.size(), 1u);
    bench.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentLinks, NeedTheBrowser)
{
    show_with_address(bench, L"http://host.test/a/c/d.pdf");
    for (const bad_answer kind : every_bad_answer) {
        SCOPED_TRACE(to_text(kind));
        bench.host.calls.make_fail("IServiceProvider::QueryService", kind);
        open_link(bench, L"x.pdf");
        EXPECT_TRUE(bench.host.browser.navigations.empty());
    }
    bench.host.calls.make_fail("IServiceProvider::QueryService", bad_answer::none);
    bench.host.calls.make_fail("IWebBrowser2::Navigate", bad_answer::failure);
    open_link(bench, L"x.pdf");
    bench.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentLinks, OfAnyLengthAreOpened)
{
    std::wstring address = L"http://host.test/";
    address.append(50'000, L'a').append(L"/d.pdf");
    show_with_address(bench, address.c_str());
    const std::wstring link(50'000, L'b');
    open_link(bench, link.c_str());
    ASSERT_EQ(bench.host.browser.navigations.size(), 1u);
    EXPECT_EQ(bench.host.browser.navigations[0].url, address.substr(0, address.size() - 5) + link);
    std::wstring climbing;
    for (int level = 0; level < 5'000; ++level)
        climbing += L"../";
    open_link(bench, (climbing + L"x.pdf").c_str());
    ASSERT_EQ(bench.host.browser.navigations.size(), 1u);
    EXPECT_EQ(bench.host.browser.navigations[0].url, L"http://host.test/x.pdf");
    bench.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentLinks, WithoutTextNothingIsOpened)
{
    show_with_address(bench, L"http://host.test/a/c/d.pdf");
    open_link(bench, nullptr);
    open_link(bench, nullptr, 1);
    EXPECT_TRUE(bench.host.browser.navigations.empty());
    bench.close_in_order();
}

} // namespace
} // namespace quill::test
