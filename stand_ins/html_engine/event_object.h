// IHTMLEventObj: the parameters of an event and the sinks' return value.
#pragma once

#include "stand_ins/html_engine/counted_object.h"
#include "stand_ins/html_engine/html_interfaces.h"
#include "stand_ins/html_engine/page_model.h"

#include <memory>
#include <string>

namespace quill {

class ATL_NO_VTABLE event_object : public counted_object<&live_objects::events>, public html_event_interface
{
public:
    BEGIN_COM_MAP(event_object)
    COM_INTERFACE_ENTRY(IHTMLEventObj)
    COM_INTERFACE_ENTRY(IDispatch)
    END_COM_MAP()

    // Null source: an event of the document.
    void attach(std::shared_ptr<page_model> page, dom_node::pointer source, std::wstring type);
    // False if a sink has set the return value to false.
    bool default_allowed() const;

    STDMETHODIMP get_srcElement(IHTMLElement** element) override;
    STDMETHODIMP get_altKey(VARIANT_BOOL* down) override;
    STDMETHODIMP get_ctrlKey(VARIANT_BOOL* down) override;
    STDMETHODIMP get_shiftKey(VARIANT_BOOL* down) override;
    STDMETHODIMP put_returnValue(VARIANT value) override;
    STDMETHODIMP get_returnValue(VARIANT* value) override;
    STDMETHODIMP put_cancelBubble(VARIANT_BOOL value) override;
    STDMETHODIMP get_cancelBubble(VARIANT_BOOL* value) override;
    STDMETHODIMP get_type(BSTR* type) override;

private:
    std::shared_ptr<page_model> page_;
    dom_node::pointer source_;
    std::wstring type_;
    CComVariant return_value_;
    VARIANT_BOOL cancel_bubble_ = VARIANT_FALSE;
};

} // namespace quill
