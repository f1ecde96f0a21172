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

// Measured against the least that the task can be done with: the address of each link, and the markup of each
// link to a PDF where there are such; or against the addresses alone.
struct measure_of
{
    sink_task task;
    const char* name;
};
constexpr measure_of addresses{sink_task::read_links, "reading each href"};
constexpr measure_of addresses_and_pdfs{sink_task::read_links_and_pdfs, "reading each href and PDF link"};

double compare(const loaded_library& module, IDispatch* shown, const std::string& page,
               const measure_of& least, std::optional<double> target)
{
    const tab ours(our_helper(module), shown), other(plain(least.task), shown);
    const comparison measured = compare_shortest(complete(ours), complete(other));
    report(page + " : " + least.name, measured, target);
    return measured.ours;
}

std::string page_name(int links, const link_kind& kind, const char* made_of)
{
    return std::string("SharePoint page") + made_of + ", " + std::to_string(links) + " links, " + kind.name;
}

constexpr double most_for_reading = 1.3;

void in_the_engine(const loaded_library& module, const loaded_library& engine, const link_kind& kind,
                   const measure_of& least)
{
    for (const int links : {10, 1'000, 10'000})
        compare(module, engine_page(engine, links, kind), page_name(links, kind, ""), least,
                most_for_reading);
}

// Returns what a link costs.
double in_no_engine(const loaded_library& module, int links, const link_kind& kind)
{
    const CComPtr<page> shown = bare_page(links, kind);
    const double taken = compare(module, shown->dispatch(), page_name(links, kind, " of bare objects"),
                                 addresses, std::nullopt);
    if ((shown->links()[0]->rewritten() != 0) != kind.has_handler)
        throw std::runtime_error("the helper object does not treat the page's links as it should");
    return taken / links;
}

// Without an engine, which may have a growth of its own.
void growth(const loaded_library& module, const link_kind& kind)
{
    const double at_thousand = in_no_engine(module, 1'000, kind);
    const double at_most = in_no_engine(module, 10'000, kind);
    report(std::string("SharePoint page of bare objects, ") + kind.name + ", a link of 10000 : of 1000",
           {at_most, at_thousand, at_most / at_thousand}, 1.25);
}

} // namespace

void sharepoint_page_benchmarks(const loaded_library& module)
{
    {
        const loaded_library engine(L"QuillPages.dll");
        in_the_engine(module, engine, no_pdf, addresses);
        in_the_engine(module, engine, some_pdfs, addresses_and_pdfs);
        in_the_engine(module, engine, all_pdfs, addresses_and_pdfs);
        for (const link_kind& kind : {some_pdfs, all_pdfs})
            compare(module, engine_page(engine, 1'000, kind), page_name(1'000, kind, ""), addresses,
                    std::nullopt);
    }
    for (const link_kind& kind : {no_pdf, some_pdfs, all_pdfs, all_handled})
        growth(module, kind);
}

} // namespace quill::bench
