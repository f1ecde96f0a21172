// Page and zoom of the fragment of a URL, as the viewer gets them.
#include "tests/document/document_fixture.h"
#include "tests/document/document_messages.h"

#include <gtest/gtest.h>
#include <ole2.h>

namespace quill::test {
namespace {

struct fragment_case
{
    const wchar_t* fragment;
    lines calls; // after the file is opened
};

// How a fragment is parsed is tested with ParseUrlNumber; this tests the calls of the viewer.
const fragment_case cases[] = {
    {L"", {}},
    {L"#page=0#zoom=0", {}},
    {L"#page=1", {"4(I4 0)"}},
    {L"#zoom=100", {"9(R8 1)"}},
    {L"#zoom=150&page=3", {"4(I4 149)", "9(R8 1.5)"}},
    {L"?page=9#zoom=25", {"9(R8 0.25)"}},
};

lines calls_after_opening(document_fixture& fixture)
{
    auto calls = fixture.viewer.texts();
    while (!calls.empty() && calls.front().rfind("1(", 0) != 0)
        calls.erase(calls.begin());
    EXPECT_FALSE(calls.empty()) << "the file was not opened";
    if (!calls.empty())
        calls.erase(calls.begin());
    return calls;
}

QUILL_DOCUMENT_TEST(DocumentFragment, OfTheBrowsersLocationForALocalFile)
{
    for (const auto& one : cases) {
        SCOPED_TRACE(testing::PrintToString(one.fragment));
        fixture.viewer.forget_calls();
        fixture.host.browser.location_url = std::wstring{L"http://host.test/x.pdf"} + one.fragment;
        fixture.show_file(fixture.pdf());
        EXPECT_EQ(calls_after_opening(fixture), one.calls);
        fixture.close_in_order();
        fixture.release();
    }
}

QUILL_DOCUMENT_TEST(DocumentFragment, OfTheBrowsersLocationForAUrlWithMenu)
{
    fixture.host.browser.location_url = L"http://host.test/x.pdf#page=3#zoom=75";
    fixture.show_url(L"quilltest://host.test/x.pdf#page=9#zoom=99");
    fixture.wait_for_failed_worker();
    load_fetched_file(fixture, fixture.pdf());
    EXPECT_EQ(calls_after_opening(fixture), (lines{"4(I4 2)", "9(R8 0.75)"}));
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentFragment, OfTheUrlItselfWithoutMenu)
{
    for (const auto& one : cases) {
        SCOPED_TRACE(testing::PrintToString(one.fragment));
        fixture.viewer.forget_calls();
        fixture.host.browser.location_url = L"http://host.test/x.pdf#page=77#zoom=77";
        fixture.create();
        fixture.set_site();
        fixture.load_url(std::wstring{L"quilltest://host.test/x.pdf"} + one.fragment);
        EXPECT_EQ(fixture.do_verb(OLEIVERB_INPLACEACTIVATE), S_OK);
        fixture.wait_for_failed_worker();
        load_fetched_file(fixture, fixture.pdf());
        EXPECT_EQ(calls_after_opening(fixture), one.calls);
        fixture.close_in_order();
        fixture.release();
    }
}

QUILL_DOCUMENT_TEST(DocumentFragment, WithoutALocationThereIsNeitherPageNorZoom)
{
    for (const char* call : {"IServiceProvider::QueryService", "IWebBrowser2::get_LocationURL"}) {
        for (const call_fault kind : host_faults) {
            SCOPED_TRACE(std::string{call} + ": " + to_text(kind));
            fixture.viewer.forget_calls();
            fixture.host.browser.location_url = L"http://host.test/x.pdf#page=3";
            fixture.host.calls.make_fail(call, kind);
            fixture.show_file(fixture.pdf());
            EXPECT_EQ(calls_after_opening(fixture), lines{});
            fixture.close_in_order();
            fixture.release();
        }
        fixture.host.calls.make_fail(call, call_fault::none);
    }
}

QUILL_DOCUMENT_TEST(DocumentFragment, ABrowserLeftByAFailedQueryIsNotAsked)
{
    fixture.host.browser.location_url = L"http://host.test/x.pdf#page=3";
    fixture.host.calls.make_fail("IServiceProvider::QueryService", call_fault::error_with_value);
    fixture.show_file(fixture.pdf());
    EXPECT_EQ(calls_after_opening(fixture), lines{});
    EXPECT_EQ(fixture.host.calls.count("IWebBrowser2::get_LocationURL"), 0);
    EXPECT_EQ(fixture.host.calls.count("IShellBrowser::GetWindow"), 0);
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentFragment, MayHaveAnyLength)
{
    fixture.host.browser.location_url = L"http://host.test/x.pdf#page=12#";
    fixture.host.browser.location_url.append(200'000, L'#');
    fixture.host.browser.location_url.append(200'000, L'z');
    fixture.show_file(fixture.pdf());
    EXPECT_EQ(calls_after_opening(fixture), lines{"4(I4 11)"});
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentFragment, AcceptsHugeNumbers)
{
    for (const wchar_t* fragment : {L"#page=99999999999999999999#zoom=99999999999999999999",
                                    L"#page=-2147483648#zoom=-1", L"#page=-1"}) {
        fixture.host.browser.location_url = std::wstring{L"http://host.test/x.pdf"} + fragment;
        fixture.show_file(fixture.pdf());
        fixture.close_in_order();
        fixture.release();
    }
}

// A second load of the same window keeps page and zoom.
QUILL_DOCUMENT_TEST(DocumentFragment, AppliesToEveryLoad)
{
    fixture.host.browser.location_url = L"http://host.test/x.pdf#page=2#zoom=300";
    fixture.show_file(fixture.pdf());
    fixture.viewer.forget_calls();
    EXPECT_EQ(fixture.send(message_load_file), 0);
    EXPECT_EQ(calls_after_opening(fixture), (lines{"4(I4 1)", "9(R8 3)"}));
    fixture.close_in_order();
}

} // namespace
} // namespace quill::test
