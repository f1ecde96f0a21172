// The page that a browser shows, accessed as scripts and helper objects do.
#pragma once

#include "tests/browser/engine.h"

#include <windows.h>

#include <atlbase.h>
#include <mshtml.h>

#include <string>
#include <vector>

namespace quill::test {

// The browser's document if it is an HTML page that is loaded completely; nullptr until then.
CComPtr<IHTMLDocument2> complete_page(engine& browser);
// Navigates to the URL and waits for the page.
CComPtr<IHTMLDocument2> open_page(engine& browser, const std::wstring& address);

// Elements in the order of the page; item must succeed for every index below the length.
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
