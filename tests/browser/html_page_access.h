// The page that a browser shows, as scripts and helper objects reach it.
#pragma once

#include "tests/browser/engine.h"

#include <windows.h>

#include <atlbase.h>
#include <mshtml.h>

#include <string>
#include <vector>

namespace quill::test {

// The browser's document when it is an HTML page that has been read to its end; null until then.
CComPtr<IHTMLDocument2> complete_page(engine& browser);
// Goes to the address and waits for the page.
CComPtr<IHTMLDocument2> open_page(engine& browser, const std::wstring& address);

// Elements in the page's order; item must answer for every index below the length.
std::vector<CComPtr<IHTMLElement>> elements_of(IHTMLElementCollection* collection);
std::vector<CComPtr<IHTMLElement>> elements_by_tag(IHTMLDocument2* page, const wchar_t* tag);
CComPtr<IHTMLElement> element_by_id(IHTMLDocument2* page, const wchar_t* id);

std::wstring tag_of(IHTMLElement* element);
std::wstring id_of(IHTMLElement* element);
std::wstring outer_html_of(IHTMLElement* element);
std::vector<std::wstring> ids_of(const std::vector<CComPtr<IHTMLElement>>& elements);

// All windows of a class below the browser's, in the order of their creation.
std::vector<HWND> windows_of_class(engine& browser, const std::wstring& window_class);

} // namespace quill::test
