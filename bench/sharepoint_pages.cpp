#include "bench/sharepoint_pages.h"

#include "bench/page/engine_page.h"
#include "bench/page/tab.h"
#include "bench/support/report.h"
#include "suite/pages/identifiers.h"
#include "tests/support/text.h"

#include <mshtml.h>

#include <optional>
#include <stdexcept>
#include <string>

namespace quill::bench {
namespace {

struct link_kind
{
    const char* name;
    int every; // every how many-th link is a PDF; 0 for none
    bool has_handler;
};

constexpr link_kind no_pdf{"no PDF", 0, false};
constexpr link_kind some_pdfs{"every tenth a PDF", 10, false};
constexpr link_kind all_pdfs{"each a PDF", 1, false};
constexpr link_kind all_handled{"each to be rewritten", 1, true};

element_text link_text(int index, const link_kind& kind)
{
    const std::wstring number = std::to_wstring(index);
    const bool is_pdf = kind.every != 0 && index % kind.every == 0;
    element_text text;
    text.href = L"/sites/a/Shared Documents/document " + number + (is_pdf ? L".pdf" : L".docx");
    text.outer_html =
        L"<a class=\"ms-listlink\" " +
        std::wstring(is_pdf && kind.has_handler ? L"onclick=\"return PdfFile.OpenDocuments(this,event);\" "
                                                : L"onmousedown=\"return VerifyHref(this,event);\" ") +
        L"href=\"" + text.href + L"\">document " + number + L"</a>";
    return text;
}

// The page as the HTML engine's stand-in has it, each link in a row of a list.
CComPtr<IDispatch> engine_page(const loaded_library& engine, int links, const link_kind& kind)
{
    std::wstring html = L"<html><head><script src=\"/scripts/library.js\"></script>"
                        L"<meta name=\"GENERATOR\" content=\"Microsoft SharePoint\"></head><body><table>";
    for (int index = 0; index < links; ++index)
        html += L"<tr><td>" + link_text(index, kind).outer_html + L"</td></tr>";
    return read_page(engine, test::to_utf8(html + L"</table></body></html>"));
}

// The page as objects that answer without any work of their own.
CComPtr<page> bare_page(int links, const link_kind& kind)
{
    const CComPtr<page> made = ordinary_page();
    made->head().below[L"meta"].push_back(
        make<element>(element_text{.name = L"GENERATOR", .content = L"Microsoft SharePoint"}));
    for (int index = 0; index < links; ++index)
        made->links().push_back(make<element>(link_text(index, kind)));
    return made;
}

comparison compare_on(const loaded_library& module, IDispatch* shown)
{
    const tab ours(our_helper(module), shown), other(plain(sink_task::read_links), shown);
    return compare_shortest(complete(ours), complete(other));
}

std::string line_name(int links, const link_kind& kind, const char* where)
{
    return std::string("SharePoint page") + where + ", " + std::to_string(links) + " links, " + kind.name +
           " : reading each href";
}

constexpr double most_for_reading = 1.3;

void in_the_engine(const loaded_library& module, const loaded_library& engine, const link_kind& kind,
                   std::optional<double> target)
{
    double at_thousand = 0;
    for (const int links : {10, 1'000, 10'000}) {
        const comparison measured = compare_on(module, engine_page(engine, links, kind));
        report(line_name(links, kind, ""), measured, target);
        if (links == 1'000)
            at_thousand = measured.ours / links;
        if (links == 10'000)
            report(std::string("SharePoint page, ") + kind.name + ", a link of 10000 : of 1000",
                   {measured.ours / links, at_thousand, measured.ours / links / at_thousand}, 1.25);
    }
}

void in_no_engine(const loaded_library& module, const link_kind& kind)
{
    constexpr int links = 1'000;
    const CComPtr<page> shown = bare_page(links, kind);
    report(line_name(links, kind, " (bare objects)"), compare_on(module, shown->dispatch()));
    if ((shown->links()[0]->rewritten() != 0) != kind.has_handler)
        throw std::runtime_error("the helper object does not treat the page's links as it should");
}

} // namespace

void sharepoint_page_benchmarks(const loaded_library& module)
{
    {
        const loaded_library engine(L"QuillPages.dll");
        in_the_engine(module, engine, no_pdf, most_for_reading);
        in_the_engine(module, engine, some_pdfs, most_for_reading);
        in_the_engine(module, engine, all_pdfs, std::nullopt);
    }
    for (const link_kind& kind : {no_pdf, some_pdfs, all_pdfs, all_handled})
        in_no_engine(module, kind);
}

} // namespace quill::bench
