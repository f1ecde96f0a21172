#include "bench/page/engine_page.h"

#include "suite/pages/identifiers.h"
#include "tests/support/scopes.h"
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

CComPtr<IDispatch> read_page(const loaded_library& engine, const std::string& html)
{
    const test::scratch_directory folder;
    const std::wstring path = folder / L"page.html";
    CComPtr<IMoniker> moniker;
    CComPtr<IBindCtx> context;
    CComPtr<IUnknown> created;
    created.Attach(engine.create(CLSID_html_page));
    const CComQIPtr<IPersistMoniker> loading(created);
    const CComQIPtr<IHTMLDocument2> page(created);
    const bool is_read = test::write_file(path, html) && loading && page &&
                         SUCCEEDED(CreateURLMoniker(nullptr, (L"file:///" + path).c_str(), &moniker)) &&
                         SUCCEEDED(CreateBindCtx(0, &context)) &&
                         SUCCEEDED(loading->Load(TRUE, moniker, context, STGM_READ)) &&
                         test::wait_until([&] { return is_complete(page); });
    if (!is_read)
        throw std::runtime_error("the engine does not read a page");
    return CComPtr<IDispatch>(page);
}

} // namespace quill::bench
