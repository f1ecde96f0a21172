// The HTML page that a browser shows, and a click in it.
#pragma once

#include <windows.h>

#include <atlbase.h>
#include <exdisp.h>
#include <mshtml.h>

#include <string>

namespace quill {

// The page, when the browser shows one and has read it to its end; null until then.
CComPtr<IHTMLDocument2> complete_page_of(IWebBrowser2* browser);

std::wstring title_of(IHTMLDocument2* page);

// Clicks on the element of that identifier. False when the page has none.
bool click_on(IHTMLDocument2* page, const std::wstring& id);

} // namespace quill
