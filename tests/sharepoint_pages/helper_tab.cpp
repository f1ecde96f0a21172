#include "tests/sharepoint_pages/helper_tab.h"

#include "sharepoint/identifiers.h"
#include "tests/browser/html_page_access.h"
#include "tests/support/text.h"
#include "tests/support/wait.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace quill::test {

CComPtr<IObjectWithSite> create_helper()
{
    CComPtr<IObjectWithSite> helper;
    EXPECT_EQ(CoCreateInstance(CLSID_SharepointBrowserHelperObject, nullptr, CLSCTX_INPROC_SERVER,
                               IID_PPV_ARGS(&helper)),
              S_OK);
    return helper;
}

double longest_delay(const helper_tab& tab)
{
    const auto& before = tab.before.entries();
    const auto& after = tab.after.entries();
    EXPECT_EQ(before.size(), after.size());
    double longest = 0;
    for (std::size_t i = 0; i < std::min(before.size(), after.size()); ++i)
        longest = std::max(longest, after[i].at - before[i].at);
    return longest;
}

helper_tab::helper_tab(with_helper helper)
{
    CComObject<tab_browser>* created = nullptr;
    EXPECT_EQ(CComObject<tab_browser>::CreateInstance(&created), S_OK);
    tab_ = created;
    EXPECT_EQ(tab_->open(browser_.control().browser()), S_OK);
    before.advise(object());
    if (helper == with_helper::yes) {
        helper_ = create_helper();
        EXPECT_EQ(helper_->SetSite(object()), S_OK);
    }
    after.advise(object());
}

void helper_tab::show(const std::wstring& url, const std::wstring& arrives_at)
{
    const std::size_t completed = after.count(DISPID_DOCUMENTCOMPLETE, arrives_at);
    go_to(url);
    EXPECT_TRUE(wait_until([&] {
        return page() && after.count(DISPID_DOCUMENTCOMPLETE, arrives_at) > completed;
    })) << to_utf8(url)
        << "; events: " << testing::PrintToString(after.lines());
}

void helper_tab::post_to(const std::wstring& url, std::string_view form)
{
    CComVariant data;
    data.vt = VT_ARRAY | VT_UI1;
    data.parray = SafeArrayCreateVector(VT_UI1, 0, static_cast<ULONG>(form.size()));
    std::copy(form.begin(), form.end(), static_cast<char*>(data.parray->pvData));
    CComVariant target(url.c_str());
    CComVariant headers(L"Content-Type: application/x-www-form-urlencoded\r\n");
    CComVariant none;
    EXPECT_EQ(tab_->Navigate2(&target, &none, &none, &data, &headers), S_OK);
}

CComPtr<IHTMLDocument2> helper_tab::page()
{
    return complete_page(browser_);
}

bool helper_tab::is_showing(const std::wstring& expected)
{
    const auto shown = page();
    CComBSTR url;
    return shown && shown->get_URL(&url) == S_OK && url == expected.c_str();
}

CComPtr<IHTMLElement> helper_tab::element(const wchar_t* id)
{
    const auto shown = page();
    const CComPtr<IHTMLElement> found = shown ? element_by_id(shown, id) : nullptr;
    EXPECT_TRUE(found) << to_utf8(id);
    return found;
}

void helper_tab::click(const wchar_t* id)
{
    if (const auto found = element(id))
        EXPECT_EQ(found->click(), S_OK);
}

std::wstring helper_tab::markup()
{
    const CComQIPtr<IHTMLDocument3> shown(page());
    CComPtr<IHTMLElement> root;
    if (!shown || shown->get_documentElement(&root) != S_OK || !root)
        return {};
    return outer_html_of(root);
}

void helper_tab::close()
{
    if (!tab_)
        return;
    tab_->quit();
    if (helper_)
        EXPECT_EQ(helper_->SetSite(nullptr), S_OK);
    helper_.Release();
    before.unadvise();
    after.unadvise();
    EXPECT_EQ(references_to_tab(), 0u);
    tab_->close();
    tab_.Release();
    browser_.close();
}

ULONG helper_tab::references_to_tab()
{
    tab_.p->AddRef();
    return tab_.p->Release() - 1;
}

} // namespace quill::test
