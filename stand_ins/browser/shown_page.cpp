#include "stand_ins/browser/shown_page.h"

namespace quill {

CComPtr<IHTMLDocument2> complete_page_of(IWebBrowser2* browser)
{
    READYSTATE loading = READYSTATE_UNINITIALIZED;
    CComPtr<IDispatch> document;
    if (browser == nullptr || FAILED(browser->get_ReadyState(&loading)) || loading != READYSTATE_COMPLETE ||
        FAILED(browser->get_Document(&document)))
        return nullptr;
    const CComQIPtr<IHTMLDocument2> page(document);
    CComBSTR state;
    if (!page || FAILED(page->get_readyState(&state)) || state != L"complete")
        return nullptr;
    return page;
}

std::wstring title_of(IHTMLDocument2* page)
{
    CComBSTR title;
    return SUCCEEDED(page->get_title(&title)) && title ? std::wstring(title, title.Length()) : std::wstring();
}

bool click_on(IHTMLDocument2* page, const std::wstring& id)
{
    const CComQIPtr<IHTMLDocument3> elements(page);
    CComPtr<IHTMLElement> element;
    return elements && SUCCEEDED(elements->getElementById(CComBSTR(id.c_str()), &element)) && element &&
           SUCCEEDED(element->click());
}

} // namespace quill
