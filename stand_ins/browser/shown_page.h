// The HTML page in a browser, and clicks on its elements.
#pragma once

#include <windows.h>

#include <atlbase.h>
#include <exdisp.h>
#include <mshtml.h>

#include <string>

namespace quill {

// The browser's page once it is loaded completely; null until then.
CComPtr<IHTMLDocument2> complete_page_of(IWebBrowser2* browser);

std::wstring title_of(IHTMLDocument2* page);

// Clicks the element with this id. False if the page has none.
bool click_on(IHTMLDocument2* page, const std::wstring& id);

} // namespace quill
