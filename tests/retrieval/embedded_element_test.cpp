// The search for the PDF element of a page that one document stands for.
#include "retrieval/page/embedded_element.h"
#include "tests/retrieval/fake_page.h"
#include "tests/support/balance.h"
#include "tests/support/fault_points.h"
#include "tests/support/log_capture.h"
#include "tests/support/task_memory.h"

#include <windows.h>

#include <gmock/gmock.h>
#include <psapi.h>

#include <algorithm>

namespace quill::test {
namespace {

using testing::ElementsAre;

const void* const document_address = reinterpret_cast<const void*>(0xABCD);
const char* const log_of_reference = "debug: ACTIVEDOC 0xabcd ProcessHTMLBodyElement URL";

struct EmbeddedElement : testing::Test
{
    fake_page page;
    log_capture log;
    std::int32_t page_number = 77;
    std::int32_t zoom = 88;
    std::wstring url = L"left over";

    int resolve(std::uint32_t index)
    {
        embedded_request request{page.site(), index, document_address, page_number, zoom};
        const long memory = outstanding_task_memory();
        const int result = ResolveEmbeddedElement(request, url);
        EXPECT_EQ(page.live(), 0);
        EXPECT_EQ(outstanding_task_memory(), memory) << "a string of the page is not freed";
        return result;
    }
    // The references of the page's PDF elements in their order.
    std::vector<std::wstring> all()
    {
        std::vector<std::wstring> found;
        while (resolve(static_cast<std::uint32_t>(found.size())) != 0)
            found.push_back(url);
        EXPECT_EQ(url, L"");
        return found;
    }
};

TEST_F(EmbeddedElement, FindsTheElementOfEachDocument)
{
    page.add_embedded(L"EMBED", L"application/pdf", L"first");
    page.add_embedded(L"EMBED", L"application/pdf", L"second");
    EXPECT_EQ(resolve(0), 1);
    EXPECT_EQ(url, L"first");
    EXPECT_THAT(log.lines(), ElementsAre(log_of_reference));
    log.clear();
    EXPECT_EQ(resolve(1), 1);
    EXPECT_EQ(url, L"second");
    EXPECT_THAT(log.lines(), ElementsAre(log_of_reference, log_of_reference));
    EXPECT_EQ(resolve(2), 0);
    EXPECT_EQ(url, L"");
}

TEST_F(EmbeddedElement, MakesOnlyTheCallsThatItNeeds)
{
    page.add_embedded(L"EMBED", L"application/pdf", L"a");
    EXPECT_EQ(resolve(0), 1);
    EXPECT_THAT(page.calls.calls(),
                ElementsAre("GetContainer", "QueryInterface", "body", "URL", "children", "QueryInterface",
                            "length", "item", "QueryInterface", "tagName", "TYPE", "reference"));
}

TEST_F(EmbeddedElement, AcceptsBothKindsInAnyCase)
{
    page.add_embedded(L"EMBED", L"application/pdf", L"a");
    page.add_embedded(L"OBJECT", L"application/pdf", L"b");
    page.add_embedded(L"Embed", L"APPLICATION/PDF", L"c");
    page.add_embedded(L"IFRAME", L"application/pdf", L"d.pdf");
    page.add_embedded(L"Object", L"Application/Pdf", L"e");
    EXPECT_THAT(all(), ElementsAre(L"a", L"b", L"c", L"e"));
}

TEST_F(EmbeddedElement, CountsUntypedElementsByTheirNames)
{
    page.add_embedded(L"OBJECT", nullptr, L"a.PDF");
    page.add_embedded(L"OBJECT", nullptr, L"b.pdfx");
    page.add_embedded(L"EMBED", nullptr, L"c.pdf");
    page.add_embedded(L"EMBED", L"text/html", L"d.pDf");
    page.add_embedded(L"EMBED", nullptr, L".pdf");
    page.add_embedded(L"EMBED", nullptr, nullptr);
    page.add_embedded(L"EMBED", nullptr, L"");
    EXPECT_THAT(all(), ElementsAre(L"a.PDF", L"c.pdf", L"d.pDf"));
}

TEST_F(EmbeddedElement, ReadsTheSourceWhenTheAttributeIsNull)
{
    const auto add = [&](const wchar_t* reference, const wchar_t* html, const page_element::attribute& type) {
        page_element element;
        element.tag = L"EMBED";
        element.outer_html = html;
        element.attributes[L"TYPE"] = type;
        element.attributes[L"SRC"].text = reference;
        page.add(element);
    };
    add(L"a", L"<EMBED type=application/pdf>", {});
    add(L"b", L"<EMBED type=\"application/pdf\">", {});
    add(L"c", L"<EMBED type='application/pdf'>", {});
    add(L"d", L"<EMBED type=application/pdf>", {.text = {}, .other_type = VT_EMPTY});
    add(L"not 1", L"<EMBED type=application/PDF>", {});
    add(L"not 2", L"<EMBED type=application/pdf>", {.text = L"text/html"});
    add(L"not 3", L"<EMBED type=application/pdf>", {.text = L""});
    add(L"not 4", L"<EMBED type=application/pdf>", {.text = {}, .other_type = VT_I4});
    EXPECT_THAT(all(), ElementsAre(L"a", L"b", L"c", L"d"));
}

TEST_F(EmbeddedElement, FindsTypedElementsWithoutAReference)
{
    page.add_embedded(L"EMBED", L"application/pdf", nullptr);
    page_element element;
    element.tag = L"OBJECT";
    element.attributes[L"TYPE"].text = L"application/pdf";
    element.attributes[L"DATA"].other_type = VT_I4;
    page.add(element);
    page.add_embedded(L"EMBED", L"application/pdf", L"c");
    EXPECT_THAT(all(), ElementsAre(L"", L"", L"c"));
}

TEST_F(EmbeddedElement, EscapesTheReference)
{
    page.add_embedded(L"EMBED", L"application/pdf", L"caf\u00E9 1.pdf");
    EXPECT_EQ(resolve(0), 1);
    EXPECT_EQ(url, L"caf%C3%A9+1.pdf");
}

// Elements are numbered in source order: an element before its children, its children before its siblings.
TEST_F(EmbeddedElement, NumbersDepthFirst)
{
    const std::size_t first = page.add_plain(L"DIV");
    page.add_embedded(L"EMBED", L"application/pdf", L"5 last of the body");
    const std::size_t second = page.add_plain(L"P", first);
    page.add_embedded(L"EMBED", L"application/pdf", L"3 behind the paragraph", first);
    page.add_embedded(L"EMBED", L"application/pdf", L"1 deepest", second);
    page.add_embedded(L"OBJECT", L"application/pdf", L"2 deepest", second);
    const std::size_t flash = page.add_embedded(L"OBJECT", L"application/x-flash", L"x.swf", first);
    page.add_embedded(L"EMBED", nullptr, L"4-inside-another.pdf", flash);
    EXPECT_THAT(all(), ElementsAre(L"1+deepest", L"2+deepest", L"3+behind+the+paragraph",
                                   L"4-inside-another.pdf", L"5+last+of+the+body"));
}

// The children are for browsers that cannot show the element.
TEST_F(EmbeddedElement, SkipsTheChildrenOfAPdfElement)
{
    const std::size_t pdf = page.add_embedded(L"OBJECT", L"application/pdf", L"a");
    page.add_embedded(L"EMBED", L"application/pdf", L"inside", pdf);
    page.add_embedded(L"EMBED", L"application/pdf", L"b");
    EXPECT_THAT(all(), ElementsAre(L"a", L"b"));
}

TEST_F(EmbeddedElement, FindsAmongHundreds)
{
    for (int number = 0; number < 500; ++number) {
        page.add_plain(L"P");
        page.add_embedded(number % 2 ? L"EMBED" : L"OBJECT", L"application/pdf",
                          std::to_wstring(number).c_str());
    }
    for (const std::uint32_t index : {0u, 1u, 250u, 499u}) {
        EXPECT_EQ(resolve(index), 1);
        EXPECT_EQ(url, std::to_wstring(index));
    }
    EXPECT_EQ(resolve(500), 0);
    EXPECT_EQ(resolve(0xFFFFFFFF), 0);
}

// A recursive search would need more stack than a thread has.
TEST_F(EmbeddedElement, FindsBelowAHundredThousandLevels)
{
    std::size_t parent = 0;
    for (int depth = 0; depth < 100'000; ++depth)
        parent = page.add_plain(L"DIV", parent);
    page.add_embedded(L"EMBED", L"application/pdf", L"deep", parent);
    page.add_embedded(L"EMBED", L"application/pdf", L"after");
    EXPECT_EQ(resolve(0), 1);
    EXPECT_EQ(url, L"deep");
    EXPECT_EQ(resolve(1), 1);
    EXPECT_EQ(url, L"after");
}

TEST_F(EmbeddedElement, ReadsPageAndZoomFromTheUrlOfThePage)
{
    page.url = L"http://h/page.html#page=5#zoom=150";
    EXPECT_EQ(resolve(0), 0) << "also without an element";
    EXPECT_EQ(page_number, 5);
    EXPECT_EQ(zoom, 150);
    page.url = L"http://h/page.html#zoom=150";
    resolve(0);
    EXPECT_EQ(page_number, 0);
    EXPECT_EQ(zoom, 150);
    page.url = L"http://h/page.html";
    resolve(0);
    EXPECT_EQ(page_number, 0);
    EXPECT_EQ(zoom, 0);
}

TEST_F(EmbeddedElement, FindsNothingWithoutAPage)
{
    page.add_embedded(L"EMBED", L"application/pdf", L"a");
    const auto expect_nothing = [&] {
        url = L"left over";
        EXPECT_EQ(resolve(0), 0);
        EXPECT_EQ(url, L"");
        EXPECT_EQ(page_number, 77);
        EXPECT_EQ(zoom, 88);
    };
    page.has_container = false;
    expect_nothing();
    page.has_container = true;
    page.is_html = false;
    expect_nothing();
    page.is_html = true;
    page.has_body = false;
    expect_nothing();
    embedded_request request{nullptr, 0, document_address, page_number, zoom};
    EXPECT_EQ(ResolveEmbeddedElement(request, url), 0);
}

TEST_F(EmbeddedElement, HandlesANegativeLength)
{
    page.length = -1;
    EXPECT_EQ(resolve(0), 0);
}

TEST_F(EmbeddedElement, SearchesBelowAnyElement)
{
    std::uint32_t counter = 3;
    const embedded_request request{page.site(), 3, document_address, page_number, zoom};
    EXPECT_EQ(ProcessHTMLBodyElement(request, nullptr, url, counter), 0);
    EXPECT_EQ(url, L"");
    EXPECT_EQ(counter, 3u);
}

// Each call that fails ends the search without a result and without a leak. Only the URL of the page may be
// missing.
TEST_F(EmbeddedElement, StopsAtEachCallThatFails)
{
    const std::size_t other = page.add_embedded(L"OBJECT", nullptr, L"x.swf");
    page.add_embedded(L"EMBED", L"application/pdf", L"first", other);
    page.add_embedded(L"OBJECT", L"application/pdf", L"second");
    page.url = L"http://h/page.html#page=5#zoom=150";
    ASSERT_EQ(resolve(1), 1);
    ASSERT_EQ(url, L"second");
    const std::vector<std::string> calls = page.calls.calls();
    const auto first_type = static_cast<std::size_t>(std::ranges::find(calls, "TYPE") - calls.begin()) + 1;
    for (const call_fault fault :
         {call_fault::error, call_fault::error_with_value, call_fault::null_result, call_fault::untouched}) {
        for (std::size_t number = 1; number <= calls.size(); ++number) {
            const std::string& call = calls[number - 1];
            page.calls.fail_call_number(static_cast<int>(number), fault);
            SCOPED_TRACE(call + ", call " + std::to_string(number) + ": " + to_text(fault));
            // An element without source has no type, and the first one has none anyway; a null reference is
            // an empty one.
            const bool is_harmless =
                call == "URL" ||
                (!is_error(fault) && (call == "outerHTML" || call == "reference" || number == first_type));
            expect_balance_in_loop([&] {
                page.calls.forget_calls();
                page_number = 77;
                zoom = 88;
                url = L"left over";
                EXPECT_EQ(resolve(1), is_harmless ? 1 : 0);
                const bool is_its_reference = number == calls.size();
                EXPECT_EQ(url, is_harmless && !is_its_reference ? L"second" : L"");
                if (call == "URL") {
                    EXPECT_EQ(page_number, 0);
                    EXPECT_EQ(zoom, 0);
                } else if (is_error(fault)) {
                    EXPECT_EQ(page.calls.calls().size(), number) << "no call is made after a failure";
                }
            });
        }
        report_fault_points("resolving an embedded element", calls.size());
    }
    page.calls.fail_call_number(0, call_fault::none);
    EXPECT_EQ(resolve(1), 1);
    EXPECT_EQ(url, L"second");
}

} // namespace
} // namespace quill::test
