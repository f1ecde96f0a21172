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

TEST_F(EmbeddedElement, GivesEachDocumentItsOwn)
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

TEST_F(EmbeddedElement, AsksThePageForWhatItNeedsOnly)
{
    page.add_embedded(L"EMBED", L"application/pdf", L"a");
    EXPECT_EQ(resolve(0), 1);
    EXPECT_THAT(page.calls(),
                ElementsAre("GetContainer", "QueryInterface", "body", "URL", "children", "QueryInterface",
                            "length", "item", "QueryInterface", "tagName", "TYPE", "reference"));
}

TEST_F(EmbeddedElement, TakesBothKindsInAnyCase)
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

TEST_F(EmbeddedElement, LooksAtTheSourceWhereTheAttributeIsNull)
{
    const auto add = [&](const wchar_t* reference, const wchar_t* html, const fake_element::attribute& type) {
        fake_element element;
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
    fake_element element;
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

// Numbers go by the order in the source: an element before its children, children before what follows.
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

// What stands inside is for browsers that cannot show the element.
TEST_F(EmbeddedElement, LeavesTheChildrenOfAPdfElementOut)
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

// A search that calls itself for every level would need more stack than a thread has.
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

TEST_F(EmbeddedElement, ReadsPageAndZoomFromThePagesAddress)
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

TEST_F(EmbeddedElement, AnswersNothingWithoutAPage)
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

TEST_F(EmbeddedElement, TakesAPageThatMiscounts)
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

// Wherever the page fails to answer, the search ends without a result and holds nothing. Only the page's
// own address may be missing.
TEST_F(EmbeddedElement, GivesUpAtWhateverCallFails)
{
    const std::size_t other = page.add_embedded(L"OBJECT", nullptr, L"x.swf");
    page.add_embedded(L"EMBED", L"application/pdf", L"first", other);
    page.add_embedded(L"OBJECT", L"application/pdf", L"second");
    page.url = L"http://h/page.html#page=5#zoom=150";
    ASSERT_EQ(resolve(1), 1);
    ASSERT_EQ(url, L"second");
    const std::vector<std::string> calls = page.calls();
    const auto first_type = static_cast<std::size_t>(std::ranges::find(calls, "TYPE") - calls.begin()) + 1;
    for (const fault how : {fault::error, fault::error_leaving_value, fault::null_result, fault::untouched}) {
        page.how = how;
        const bool is_error = how == fault::error || how == fault::error_leaving_value;
        for (page.faulty_call = 1; page.faulty_call <= calls.size(); ++page.faulty_call) {
            const std::string& call = calls[page.faulty_call - 1];
            SCOPED_TRACE(call + (is_error ? " fails as call " : " gives nothing as call ") +
                         std::to_string(page.faulty_call));
            // An element that says nothing of its source has no type, as the first one has none anyway; a
            // reference that is nothing is an empty one.
            const bool is_harmless =
                call == "URL" ||
                (!is_error && (call == "outerHTML" || call == "reference" || page.faulty_call == first_type));
            expect_balance_in_loop([&] {
                page.forget_calls();
                page_number = 77;
                zoom = 88;
                url = L"left over";
                EXPECT_EQ(resolve(1), is_harmless ? 1 : 0);
                const bool is_its_reference = page.faulty_call == calls.size();
                EXPECT_EQ(url, is_harmless && !is_its_reference ? L"second" : L"");
                if (call == "URL") {
                    EXPECT_EQ(page_number, 0);
                    EXPECT_EQ(zoom, 0);
                } else if (is_error) {
                    EXPECT_EQ(page.calls().size(), page.faulty_call) << "nothing is asked after a failure";
                }
            });
        }
        report_fault_points("resolving an embedded element", calls.size());
    }
    page.faulty_call = 0;
    EXPECT_EQ(resolve(1), 1);
    EXPECT_EQ(url, L"second");
}

} // namespace
} // namespace quill::test
