// The page's document interfaces: IHTMLDocument2 and IHTMLDocument3.
#pragma once

#include "stand_ins/html_engine/html_interfaces.h"
#include "stand_ins/html_engine/page_model.h"

#include <memory>

namespace quill {

class ATL_NO_VTABLE html_document2 : public html_document2_interface
{
public:
    STDMETHODIMP get_all(IHTMLElementCollection** elements) override;
    STDMETHODIMP get_body(IHTMLElement** element) override;
    STDMETHODIMP get_images(IHTMLElementCollection** elements) override;
    STDMETHODIMP get_applets(IHTMLElementCollection** elements) override;
    STDMETHODIMP get_links(IHTMLElementCollection** elements) override;
    STDMETHODIMP get_forms(IHTMLElementCollection** elements) override;
    STDMETHODIMP get_anchors(IHTMLElementCollection** elements) override;
    STDMETHODIMP get_scripts(IHTMLElementCollection** elements) override;
    STDMETHODIMP get_embeds(IHTMLElementCollection** elements) override;
    STDMETHODIMP get_plugins(IHTMLElementCollection** elements) override { return get_embeds(elements); }
    STDMETHODIMP get_title(BSTR* title) override;
    STDMETHODIMP get_readyState(BSTR* state) override;
    STDMETHODIMP get_URL(BSTR* url) override;

protected:
    virtual const std::shared_ptr<page_model>& page() const = 0;
};

class ATL_NO_VTABLE html_document3 : public html_document3_interface
{
public:
    STDMETHODIMP get_documentElement(IHTMLElement** element) override;
    STDMETHODIMP getElementsByName(BSTR name, IHTMLElementCollection** elements) override;
    STDMETHODIMP getElementById(BSTR id, IHTMLElement** element) override;
    STDMETHODIMP getElementsByTagName(BSTR name, IHTMLElementCollection** elements) override;

protected:
    virtual const std::shared_ptr<page_model>& page() const = 0;
};

} // namespace quill
