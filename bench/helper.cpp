// The helper object in a browser: attaching, ordinary pages, SharePoint pages.
#include "bench/page/engine_objects.h"
#include "bench/page/plain_helper.h"
#include "bench/support/loaded_library.h"
#include "bench/support/report.h"

#include <ole2.h>

#include <stdexcept>
#include <string>

namespace quill::bench {
namespace {

// The objects here count on a module object, as any of the framework's do.
class bench_module : public CAtlModuleT<bench_module>
{
};
bench_module module_object;

const std::wstring page_url = L"http://server.test/sites/a/page.aspx";

// A browser with a helper object of either kind.
struct tab
{
    explicit tab(CComPtr<IObjectWithSite> attached) : helper(std::move(attached))
    {
        view->shown = make<page>();
        helper->SetSite(view->unknown());
    }
    ~tab() { helper->SetSite(nullptr); }
    tab(const tab&) = delete;
    tab& operator=(const tab&) = delete;

    CComPtr<browser> view = make<browser>();
    CComPtr<IObjectWithSite> helper;
};

CComPtr<IObjectWithSite> our_helper(const loaded_library& module)
{
    CComPtr<IUnknown> created;
    created.Attach(module.create(helper_class));
    return CComPtr<IObjectWithSite>(CComQIPtr<IObjectWithSite>(created));
}

CComPtr<IObjectWithSite> plain(sink_task task)
{
    return CComPtr<IObjectWithSite>(make<plain_helper>(task).p);
}

// The usual head of a page: what has to be looked through before a page counts as ordinary.
void fill_head(page& shown, bool is_sharepoint)
{
    for (int index = 0; index < 8; ++index)
        shown.head().below[L"script"].push_back(
            make<element>(element_text{.source = L"/scripts/library" + std::to_wstring(index) + L".js"}));
    for (const wchar_t* name : {L"viewport", L"description", L"keywords", L"robots"})
        shown.head().below[L"meta"].push_back(
            make<element>(element_text{.name = name, .content = L"width=device-width, initial-scale=1"}));
    if (is_sharepoint)
        shown.head().below[L"meta"].push_back(
            make<element>(element_text{.name = L"GENERATOR", .content = L"Microsoft SharePoint"}));
}

repeated attach_and_detach(const CComPtr<IObjectWithSite>& helper, const CComPtr<browser>& view)
{
    return [=](std::size_t times) {
        for (std::size_t i = 0; i < times; ++i) {
            helper->SetSite(view->unknown());
            helper->SetSite(nullptr);
        }
    };
}

repeated navigate(const tab& in, const std::wstring& url)
{
    return [view = in.view, url](std::size_t times) {
        for (std::size_t i = 0; i < times; ++i)
            keep(view->before_navigate(url));
    };
}

repeated complete(const tab& in)
{
    return [view = in.view](std::size_t times) {
        for (std::size_t i = 0; i < times; ++i)
            view->document_complete(page_url);
    };
}

void ordinary_page(const loaded_library& module)
{
    const CComPtr<browser> empty = make<browser>();
    empty->shown = make<page>();
    report("SetSite and back : advising a sink and back",
           compare_shortest(attach_and_detach(our_helper(module), empty),
                            attach_and_detach(plain(sink_task::nothing), empty)));

    tab ours(our_helper(module)), other(plain(sink_task::nothing));
    for (tab* each : {&ours, &other})
        fill_head(*each->view->shown, false);
    report("BeforeNavigate2 on an ordinary page, to a page : a sink that does nothing",
           compare_shortest(navigate(ours, L"http://server.test/next.aspx"),
                            navigate(other, L"http://server.test/next.aspx")));
    report("BeforeNavigate2 on an ordinary page, to a PDF : a sink that does nothing",
           compare_shortest(navigate(ours, L"http://server.test/next.pdf"),
                            navigate(other, L"http://server.test/next.pdf")));
    report("DocumentComplete of an ordinary page : a sink that does nothing",
           compare_shortest(complete(ours), complete(other)));
}

struct link_kind
{
    const char* name;
    int every; // every how many-th link is a PDF; 0 for none
    bool has_handler;
    bool is_judged;
};

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

// Returns what a link costs.
double sharepoint_page(const loaded_library& module, int links, const link_kind& kind)
{
    tab ours(our_helper(module)), other(plain(sink_task::read_links));
    for (tab* each : {&ours, &other}) {
        fill_head(*each->view->shown, true);
        for (int index = 0; index < links; ++index)
            each->view->shown->links().push_back(make<element>(link_text(index, kind)));
    }
    complete(ours)(1);
    const bool is_rewritten = ours.view->shown->links()[0]->rewritten() == 1;
    if (is_rewritten != kind.has_handler)
        throw std::runtime_error("the helper object does not treat the page's links as it should");
    const comparison measured = compare_shortest(complete(ours), complete(other));
    report("SharePoint page, " + std::to_string(links) + " links, " + kind.name + " : reading each href",
           measured, kind.is_judged ? std::optional<double>(1.3) : std::nullopt);
    return measured.ours / links;
}

void sharepoint_pages(const loaded_library& module)
{
    constexpr link_kind kinds[] = {
        {"no PDF", 0, false, true},
        {"every tenth a PDF", 10, false, true},
        {"each a PDF", 1, false, false},
        {"each to be rewritten", 1, true, false},
    };
    for (const link_kind& kind : kinds) {
        sharepoint_page(module, 10, kind);
        const double at_thousand = sharepoint_page(module, 1'000, kind);
        const double at_most = sharepoint_page(module, 10'000, kind);
        if (kind.is_judged)
            report(std::string("SharePoint page, ") + kind.name + ", a link of 10000 : of 1000",
                   {at_most, at_thousand, at_most / at_thousand}, 1.2);
    }
}

void benchmarks()
{
    if (FAILED(OleInitialize(nullptr)))
        throw std::runtime_error("OLE does not start");
    {
        const loaded_library module(module_name);
        ordinary_page(module);
        sharepoint_pages(module);
        if (!module.can_unload())
            throw std::runtime_error("the helper object is still there");
    }
    OleUninitialize();
}

} // namespace
} // namespace quill::bench

int wmain(int argc, wchar_t** argv)
{
    return quill::bench::run(argc, argv, quill::bench::benchmarks);
}
