#include "tests/bench/page/engine_page.h"

#include "stand_ins/html_engine/identifiers.h"
#include "tests/support/wait.h"

#include <mshtml.h>
#include <urlmon.h>

#include <stdexcept>
#include <string_view>

namespace quill::bench {
namespace {

bool is_complete(IHTMLDocument2* page)
{
    CComBSTR state;
    return page->get_readyState(&state) == S_OK && state && std::wstring_view(state) == L"complete";
}

} // namespace

engine_page::engine_page(const loaded_library& engine, const std::string& html) : engine_(engine)
{
    if (!test::write_file(path_, html))
        throw std::runtime_error("a page cannot be written");
}

CComPtr<IDispatch> engine_page::read() const
{
    CComPtr<IMoniker> moniker;
    CComPtr<IBindCtx> context;
    CComPtr<IUnknown> created;
    created.Attach(engine_.create(CLSID_html_page));
    const CComQIPtr<IPersistMoniker> loading(created);
    const CComQIPtr<IHTMLDocument2> page(created);
    const bool is_read = loading && page &&
                         SUCCEEDED(CreateURLMoniker(nullptr, (L"file:///" + path_).c_str(), &moniker)) &&
                         SUCCEEDED(CreateBindCtx(0, &context)) &&
                         SUCCEEDED(loading->Load(TRUE, moniker, context, STGM_READ)) &&
                         test::wait_until([&] { return is_complete(page); });
    if (!is_read)
        throw std::runtime_error("the engine does not read a page");
    return CComPtr<IDispatch>(page);
}

} // namespace quill::bench
