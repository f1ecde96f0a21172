#include "tests/bench/sharepoint_pages.h"

#include "stand_ins/html_engine/identifiers.h"
#include "tests/bench/page/engine_page.h"
#include "tests/bench/page/tab.h"
#include "tests/bench/support/report.h"
#include "tests/support/text.h"

#include <mshtml.h>

#include <algorithm>
#include <limits>
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

// The page in the stand-in for the HTML engine, each link in a row of a list.
engine_page list_page(const loaded_library& engine, int links, const link_kind& kind)
{
    std::wstring html = L"<html><head><script src=\"/scripts/library.js\"></script>"
                        L"<meta name=\"GENERATOR\" content=\"Microsoft SharePoint\"></head><body><table>";
    for (int index = 0; index < links; ++index)
        html += L"<tr><td>" + link_text(index, kind).outer_html + L"</td></tr>";
    return engine_page(engine, test::to_utf8(html + L"</table></body></html>"));
}

element_list bare_links(int links, const link_kind& kind)
{
    element_list made;
    for (int index = 0; index < links; ++index)
        made.push_back(make<element>(link_text(index, kind)));
    return made;
}

// The page made of objects that return without work of their own. The links are the same in every page.
CComPtr<IDispatch> bare_page(const element_list& links)
{
    const CComPtr<page> made = ordinary_page();
    made->head().below[L"meta"].push_back(
        make<element>(element_text{.name = L"GENERATOR", .content = L"Microsoft SharePoint"}));
    made->links() = links;
    return CComPtr<IDispatch>(made->dispatch());
}

// Compared with the minimum of the task: the URL of each link, and the markup of each link to a PDF if there
// are any; or with the URLs only.
struct measure_of
{
    sink_task task;
    const char* name;
};
constexpr int links_in_a_run = 1'000;
constexpr measure_of addresses{sink_task::read_links, "reading each href"};
constexpr measure_of addresses_and_pdfs{sink_task::read_links_and_pdfs, "reading each href and PDF link"};
constexpr measure_of all_reading{sink_task::record_page, "reading head and links, advising"};

double compare(const loaded_library& module, const page_maker& new_page, int links, const std::string& name,
               const measure_of& least, std::optional<target> aim)
{
    const int pages = std::clamp(links_in_a_run / links, 1, 20); // few links are soon read
    const comparison measured = compare_shortest_runs(
        complete_new_pages([&] { return our_helper(module); }, new_page, pages),
        complete_new_pages([&] { return plain(least.task); }, new_page, pages),
        aim && !aim->is_known_missed ? aim->most : std::numeric_limits<double>::infinity());
    report(name + " : " + least.name, measured, aim);
    return measured.ours;
}

std::string page_name(int links, const link_kind& kind, const char* made_of)
{
    return std::string("SharePoint page") + made_of + ", " + std::to_string(links) + " links, " + kind.name;
}

void compare_in_engine(const loaded_library& module, const loaded_library& engine, int links,
                       const link_kind& kind, const measure_of& least, const target& aim)
{
    const engine_page shown = list_page(engine, links, kind);
    compare(module, [&] { return shown.read(); }, links, page_name(links, kind, ""), least, aim);
}

constexpr double most_for_reading = 1.3;

// Before the first link the head of a new page is read and its events are connected, which takes as long as
// ten links: with ten links the target is missed unless the baseline does that too.
void in_the_engine(const loaded_library& module, const loaded_library& engine, const link_kind& kind,
                   const measure_of& least)
{
    const bool has_head = least.task == all_reading.task;
    compare_in_engine(module, engine, 10, kind, least,
                      has_head ? target(most_for_reading) : target::known_missed(most_for_reading));
    for (const int links : {1'000, 10'000})
        compare_in_engine(module, engine, links, kind, least, most_for_reading);
}

// Returns the time for one link.
double in_no_engine(const loaded_library& module, int links, const link_kind& kind)
{
    const element_list all = bare_links(links, kind);
    const double taken = compare(
        module, [&] { return bare_page(all); }, links, page_name(links, kind, " of bare objects"), addresses,
        std::nullopt);
    if ((all[0]->rewritten() != 0) != kind.has_handler)
        throw std::runtime_error("the helper object does not treat the page's links as it should");
    return taken / links;
}

// Work that is not linear would take ten times as long. Texts of many links do not fit into the processor's
// caches, which makes a link up to twice as slow.
constexpr double most_growth = 3.0;

// Without an engine, whose work may not be linear.
void growth(const loaded_library& module, const link_kind& kind)
{
    const double at_thousand = in_no_engine(module, 1'000, kind);
    const double at_most = in_no_engine(module, 10'000, kind);
    report(std::string("SharePoint page of bare objects, ") + kind.name + ", a link of 10000 : of 1000",
           {at_most, at_thousand, at_most / at_thousand}, most_growth);
}

} // namespace

void sharepoint_page_benchmarks(const loaded_library& module)
{
    {
        const loaded_library engine(L"QuillPages.dll");
        in_the_engine(module, engine, no_pdf, addresses);
        in_the_engine(module, engine, some_pdfs, addresses_and_pdfs);
        in_the_engine(module, engine, all_pdfs, addresses_and_pdfs);
        for (const link_kind& kind : {no_pdf, some_pdfs, all_pdfs})
            in_the_engine(module, engine, kind, all_reading);
        // The markup of a link to a PDF must be read to know whether it has a handler to remove.
        for (const link_kind& kind : {some_pdfs, all_pdfs})
            compare_in_engine(module, engine, 1'000, kind, addresses, target::known_missed(most_for_reading));
    }
    for (const link_kind& kind : {no_pdf, some_pdfs, all_pdfs, all_handled})
        growth(module, kind);
}

} // namespace quill::bench
