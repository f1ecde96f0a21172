// A strict fake of an HTML document with a connection point for its events.
#pragma once

#include "tests/sharepoint/fake_connection_point.h"
#include "tests/sharepoint/fake_element.h"

namespace quill::test {

class fake_document
    : public fake_object<without_IHTMLDocument2<IHTMLDocument2>, without_IHTMLDocument3<IHTMLDocument3>,
                         without_IConnectionPointContainer<IConnectionPointContainer>>
{
public:
    // A page with an empty head.
    fake_document(fake_tab& tab, std::wstring url);

    fake_element& add_to_head(element_text text);
    fake_element& add_to_body(element_text text);
    fake_connection_point& events() { return *events_; }
    IDispatch* dispatch() { return static_cast<IHTMLDocument2*>(this); }

    // Fire onclick with the event object, and onreadystatechange after a change of the ready state.
    event_result click(IDispatch* event);
    event_result change_ready_state(std::wstring state);

    std::wstring ready_state = L"complete";
    bool is_html = true;       // has IHTMLDocument2
    bool has_document3 = true; // has IHTMLDocument3
    bool has_root = true;
    bool has_head = true;
    bool is_head_first = true; // the root's first child
    bool has_events = true;    // has IConnectionPointContainer

    HRESULT STDMETHODCALLTYPE get_URL(BSTR* out) override;
    HRESULT STDMETHODCALLTYPE get_readyState(BSTR* out) override;
    HRESULT STDMETHODCALLTYPE get_documentElement(IHTMLElement** out) override;
    HRESULT STDMETHODCALLTYPE getElementsByTagName(BSTR tag, IHTMLElementCollection** out) override;
    HRESULT STDMETHODCALLTYPE FindConnectionPoint(REFIID iid, IConnectionPoint** out) override;

    CComPtr<fake_element> head;

protected:
    IUnknown* find_interface(REFIID iid) override;

private:
    std::wstring url_;
    CComPtr<fake_element> root_;
    element_list body_;
    CComPtr<fake_connection_point> events_;
};

// The event object of onclick.
class fake_event : public fake_object<without_IHTMLEventObj<IHTMLEventObj>>
{
public:
    fake_event(fake_tab& tab, fake_element* source) : fake_object(tab), source_(source) {}

    bool is_event = true; // has IHTMLEventObj
    CComVariant return_value;
    VARIANT_BOOL cancel_bubble = VARIANT_FALSE;
    // Whether no member that blocks a click was written.
    bool is_untouched() const { return return_value.vt == VT_EMPTY && cancel_bubble == VARIANT_FALSE; }
    // Whether both calls that block a click have been made.
    bool is_blocked() const { return is_bool(return_value, false) && cancel_bubble == VARIANT_TRUE; }

    HRESULT STDMETHODCALLTYPE get_srcElement(IHTMLElement** out) override;
    HRESULT STDMETHODCALLTYPE put_returnValue(VARIANT value) override;
    HRESULT STDMETHODCALLTYPE put_cancelBubble(VARIANT_BOOL value) override;

protected:
    IUnknown* find_interface(REFIID iid) override;

private:
    CComPtr<fake_element> source_;
};

// Creates a fake; the CComPtr owns its first reference.
template <class Fake, class... Arguments>
CComPtr<Fake> make_fake(fake_tab& tab, Arguments&&... arguments)
{
    CComPtr<Fake> fake;
    fake.Attach(new Fake(tab, std::forward<Arguments>(arguments)...));
    return fake;
}

// A page with SharePoint's generator.
CComPtr<fake_document> sharepoint_page(fake_tab& tab, std::wstring url);

// A link of a SharePoint document list.
element_text list_link(const std::wstring& href);

} // namespace quill::test
