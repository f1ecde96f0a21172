// The helper object in a browser: attaching, ordinary pages, SharePoint pages.
#include "tests/bench/page/tab.h"
#include "tests/bench/sharepoint_pages.h"
#include "tests/bench/support/loaded_library.h"
#include "tests/bench/support/report.h"

#include <ole2.h>

#include <stdexcept>
#include <string>

namespace quill::bench {
namespace {

// The objects here count on a module object, as all objects of the framework do.
class bench_module : public CAtlModuleT<bench_module>
{
};
bench_module module_object;

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

void on_an_ordinary_page(const loaded_library& module)
{
    const CComPtr<browser> empty = make<browser>();
    empty->shown = make<page>()->dispatch();
    report("SetSite and back : reading a setting, advising a sink and back",
           compare_shortest(attach_and_detach(our_helper(module), empty),
                            attach_and_detach(plain(sink_task::read_setting), empty)),
           1.3);
    report("SetSite and back : advising a sink and back",
           compare_shortest(attach_and_detach(our_helper(module), empty),
                            attach_and_detach(plain(sink_task::nothing), empty)));

    const CComPtr<page> shown = ordinary_page();
    const tab ours(our_helper(module), shown->dispatch());
    const tab other(plain(sink_task::nothing), shown->dispatch());
    report("BeforeNavigate2 on an ordinary page, to a page : a sink that does nothing",
           compare_shortest(navigate(ours, L"http://server.test/next.aspx"),
                            navigate(other, L"http://server.test/next.aspx")));
    report("BeforeNavigate2 on an ordinary page, to a PDF : a sink that does nothing",
           compare_shortest(navigate(ours, L"http://server.test/next.pdf"),
                            navigate(other, L"http://server.test/next.pdf")));
    const auto new_page = [] { return CComPtr<IDispatch>(ordinary_page()->dispatch()); };
    report("DocumentComplete of an ordinary page : a sink that does nothing",
           compare_shortest_runs(complete_new_pages([&] { return our_helper(module); }, new_page, 50),
                                 complete_new_pages([] { return plain(sink_task::nothing); }, new_page, 50)));
    report("DocumentComplete of an ordinary page, again : a sink that does nothing",
           compare_shortest(complete_again(ours), complete_again(other)));
}

void benchmarks()
{
    if (FAILED(OleInitialize(nullptr)))
        throw std::runtime_error("OLE does not start");
    {
        const loaded_library module(module_name);
        on_an_ordinary_page(module);
        sharepoint_page_benchmarks(module);
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
