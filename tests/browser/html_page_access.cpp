#include "tests/browser/html_page_access.h"

#include "tests/support/wait.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>

namespace quill::test {
namespace {

std::wstring text_of(IHTMLElement* element, HRESULT (STDMETHODCALLTYPE IHTMLElement::*get)(BSTR*))
{
    CComBSTR text;
    EXPECT_EQ((element->*get)(&text), S_OK);
    return text ? std::wstring(text, text.Length()) : std::wstring();
}

struct window_search
{
    std::wstring window_class;
    std::vector<HWND> found;
};

BOOL CALLBACK take_window(HWND window, LPARAM parameter)
{
    auto& search = *reinterpret_cast<window_search*>(parameter);
    std::array<wchar_t, 128> name{};
    GetClassNameW(window, name.data(), static_cast<int>(name.size()));
    if (search.window_class == name.data())
        search.found.push_back(window);
    return TRUE;
}

} // namespace

CComPtr<IHTMLDocument2> complete_page(engine& browser)
{
    CComPtr<IDispatch> document;
    if (browser.control().browser()->get_Document(&document) != S_OK)
        return nullptr;
    const CComQIPtr<IHTMLDocument2> page(document);
    CComBSTR state;
    if (!page || page->get_readyState(&state) != S_OK || state != L"complete")
        return nullptr;
    return page;
}

CComPtr<IHTMLDocument2> open_page(engine& browser, const std::wstring& address)
{
    CComPtr<IHTMLDocument2> page;
    browser.open(address);
    EXPECT_TRUE(wait_until([&] {
        page = complete_page(browser);
        CComBSTR url;
        return page && page->get_URL(&url) == S_OK && url == address.c_str();
    }));
    return page;
}

std::vector<CComPtr<IHTMLElement>> elements_of(IHTMLElementCollection* collection)
{
    std::vector<CComPtr<IHTMLElement>> elements;
    long length = 0;
    EXPECT_EQ(collection->get_length(&length), S_OK);
    for (long i = 0; i < length; ++i) {
        CComPtr<IDispatch> item;
        EXPECT_EQ(collection->item(CComVariant(i), CComVariant(i), &item), S_OK);
        elements.emplace_back(CComQIPtr<IHTMLElement>(item));
        EXPECT_TRUE(elements.back());
    }
    return elements;
}

std::vector<CComPtr<IHTMLElement>> elements_by_tag(IHTMLDocument2* page, const wchar_t* tag)
{
    const CComQIPtr<IHTMLDocument3> page3(page);
    CComPtr<IHTMLElementCollection> elements;
    EXPECT_EQ(page3->getElementsByTagName(CComBSTR(tag), &elements), S_OK);
    return elements_of(elements);
}

CComPtr<IHTMLElement> element_by_id(IHTMLDocument2* page, const wchar_t* id)
{
    const CComQIPtr<IHTMLDocument3> page3(page);
    CComPtr<IHTMLElement> element;
    EXPECT_EQ(page3->getElementById(CComBSTR(id), &element), S_OK);
    return element;
}

std::wstring tag_of(IHTMLElement* element)
{
    return text_of(element, &IHTMLElement::get_tagName);
}

std::wstring id_of(IHTMLElement* element)
{
    return text_of(element, &IHTMLElement::get_id);
}

std::wstring outer_html_of(IHTMLElement* element)
{
    return text_of(element, &IHTMLElement::get_outerHTML);
}

std::vector<std::wstring> ids_of(const std::vector<CComPtr<IHTMLElement>>& elements)
{
    std::vector<std::wstring> ids;
    for (const auto& element : elements)
        ids.push_back(id_of(element));
    return ids;
}

std::vector<HWND> windows_of_class(engine& browser, const std::wstring& window_class)
{
    window_search search{window_class, {}};
    EnumChildWindows(browser.window(), take_window, reinterpret_cast<LPARAM>(&search));
    // New children are on top, where an enumeration begins.
    std::reverse(search.found.begin(), search.found.end());
    return search.found;
}

} // namespace quill::test
