#include "bench/page/tab.h"

#include <utility>

namespace quill::bench {

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

repeated complete(const tab& in)
{
    return [view = in.view](std::size_t times) {
        for (std::size_t i = 0; i < times; ++i)
            view->document_complete(L"http://server.test/sites/a/page.aspx");
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
