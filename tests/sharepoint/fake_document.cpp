#include "tests/sharepoint/fake_document.h"

#include "sharepoint/events/event_identifiers.h"

#include <gtest/gtest.h>
#include <mshtmdid.h>

#include <string_view>

namespace quill::test {

fake_document::fake_document(fake_tab& tab, std::wstring url)
    : fake_object(tab), head(make_fake<fake_element>(tab, element_text{.tag = L"HEAD"})),
      url_(std::move(url)), root_(make_fake<fake_element>(tab, element_text{.tag = L"HTML"})),
      events_(make_fake<fake_connection_point>(tab, IID_html_document_events))
{
}

fake_element& fake_document::add_to_head(element_text text)
{
    return *head->children().emplace_back(make_fake<fake_element>(tab(), std::move(text)));
}

fake_element& fake_document::add_to_body(element_text text)
{
    return *body_.emplace_back(make_fake<fake_element>(tab(), std::move(text)));
}

event_result fake_document::click(IDispatch* event)
{
    VARIANT argument{};
    argument.vt = VT_DISPATCH;
    argument.pdispVal = event;
    auto results = events_->fire(DISPID_HTMLDOCUMENTEVENTS2_ONCLICK, {argument});
    EXPECT_EQ(results.size(), 1u);
    return results.empty() ? event_result{E_UNEXPECTED, {}} : results.front();
}

event_result fake_document::change_ready_state(std::wstring state)
{
    ready_state = std::move(state);
    const auto event = make_fake<fake_event>(tab(), nullptr);
    VARIANT argument{};
    argument.vt = VT_DISPATCH;
    argument.pdispVal = event;
    auto results = events_->fire(DISPID_HTMLDOCUMENTEVENTS2_ONREADYSTATECHANGE, {argument});
    EXPECT_EQ(results.size(), 1u);
    return results.empty() ? event_result{E_UNEXPECTED, {}} : results.front();
}

HRESULT fake_document::get_URL(BSTR* out)
{
    if (const auto result = tab().enter("IHTMLDocument2::get_URL", out))
        return *result;
    return hand_out(url_, out);
}

HRESULT fake_document::get_readyState(BSTR* out)
{
    if (const auto result = tab().enter("IHTMLDocument2::get_readyState", out))
        return *result;
    return hand_out(ready_state, out);
}

HRESULT fake_document::get_documentElement(IHTMLElement** out)
{
    if (const auto result = tab().enter("IHTMLDocument3::get_documentElement", out))
        return *result;
    // Older engines list comments as elements.
    root_->children().clear();
    if (!is_head_first)
        root_->children().push_back(make_fake<fake_element>(tab(), element_text{.tag = L"!"}));
    if (has_head)
        root_->children().push_back(head);
    root_->children().push_back(make_fake<fake_element>(tab(), element_text{.tag = L"BODY"}));
    return has_root ? hand_out(root_.p, out) : S_OK;
}

HRESULT fake_document::getElementsByTagName(BSTR tag, IHTMLElementCollection** out)
{
    if (const auto result = tab().enter("IHTMLDocument3::getElementsByTagName", out))
        return *result;
    const bool is_head = std::wstring_view(tag) == L"head";
    EXPECT_TRUE(is_head || std::wstring_view(tag) == L"a") << "unexpected search of the whole document";
    if (!is_head)
        return hand_out_tagged(tab(), body_, tag, out);
    return hand_out_tagged(tab(), has_head ? element_list{head} : element_list{}, tag, out);
}

HRESULT fake_document::FindConnectionPoint(REFIID iid, IConnectionPoint** out)
{
    if (const auto result = tab().enter("IConnectionPointContainer::FindConnectionPoint", out))
        return *result;
    EXPECT_EQ(iid, IID_html_document_events);
    return hand_out(events_.p, out);
}

IUnknown* fake_document::find_interface(REFIID iid)
{
    if (iid == IID_IUnknown || iid == IID_IDispatch || (is_html && iid == IID_IHTMLDocument2))
        return static_cast<IHTMLDocument2*>(this);
    if (has_document3 && iid == IID_IHTMLDocument3)
        return static_cast<IHTMLDocument3*>(this);
    if (has_events && iid == IID_IConnectionPointContainer)
        return static_cast<IConnectionPointContainer*>(this);
    return nullptr;
}

HRESULT fake_event::get_srcElement(IHTMLElement** out)
{
    if (const auto result = tab().enter("IHTMLEventObj::get_srcElement", out))
        return *result;
    return hand_out(source_.p, out);
}

HRESULT fake_event::put_returnValue(VARIANT value)
{
    if (const auto result = tab().enter("IHTMLEventObj::put_returnValue"))
        return *result;
    return_value = value;
    return S_OK;
}

HRESULT fake_event::put_cancelBubble(VARIANT_BOOL value)
{
    if (const auto result = tab().enter("IHTMLEventObj::put_cancelBubble"))
        return *result;
    cancel_bubble = value;
    return S_OK;
}

IUnknown* fake_event::find_interface(REFIID iid)
{
    if (iid == IID_IUnknown || iid == IID_IDispatch || (is_event && iid == IID_IHTMLEventObj))
        return this;
    return nullptr;
}

CComPtr<fake_document> sharepoint_page(fake_tab& tab, std::wstring url)
{
    auto page = make_fake<fake_document>(tab, std::move(url));
    page->add_to_head({.tag = L"META", .name = L"GENERATOR", .content = L"Microsoft SharePoint"});
    return page;
}

element_text list_link(const std::wstring& href)
{
    return {
        .tag = L"A",
        .outer_html =
            L"<a class=\"ms-listlink ms-draggable\" onclick=\"return DispEx(this,event,'TRUE')\" href=\"" +
            href + L"\">x</a>",
        .href = href};
}

} // namespace quill::test
