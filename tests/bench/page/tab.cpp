#include "tests/bench/page/tab.h"

#include <deque>
#include <utility>

namespace quill::bench {
namespace {

const std::wstring page_address = L"http://server.test/sites/a/page.aspx";

} // namespace

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

tab::tab(CComPtr<IObjectWithSite> attached, IDispatch* shown) : helper(std::move(attached))
{
    view->shown = shown;
    helper->SetSite(view->unknown());
}

timed_run complete_new_pages(const helper_maker& helper, const page_maker& make_page, int pages)
{
    return [=] {
        std::deque<tab> tabs;
        for (int index = 0; index < pages; ++index)
            tabs.emplace_back(helper(), make_page());
        const double start = now();
        for (const tab& each : tabs)
            each.view->document_complete(page_address);
        return (now() - start) / pages;
    };
}

repeated complete_again(const tab& in)
{
    return [view = in.view](std::size_t times) {
        for (std::size_t i = 0; i < times; ++i)
            view->document_complete(page_address);
    };
}

CComPtr<page> ordinary_page()
{
    const CComPtr<page> made = make<page>();
    for (int index = 0; index < 8; ++index)
        made->head().below[L"script"].push_back(
            make<element>(element_text{.source = L"/scripts/library" + std::to_wstring(index) + L".js"}));
    for (const wchar_t* name : {L"viewport", L"description", L"keywords", L"robots"})
        made->head().below[L"meta"].push_back(
            make<element>(element_text{.name = name, .content = L"width=device-width, initial-scale=1"}));
    return made;
}

} // namespace quill::bench
