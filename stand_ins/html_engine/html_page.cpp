#include "stand_ins/html_engine/html_page.h"

#include "stand_ins/html_engine/com_results.h"
#include "stand_ins/html_engine/dom/html_reader.h"
#include "stand_ins/html_engine/link_navigation.h"

#include <ole2.h>
#include <olectl.h>

#include <utility>

html_page::html_page() : page_(std::make_shared<quill::page_model>())
{
    m_bWindowOnly = TRUE;
    page_->owner = this;
}

HRESULT html_page::FinalConstruct()
{
    return events_.create(this);
}

void html_page::FinalRelease()
{
    stop_download();
    page_->owner = nullptr;
    if (m_hWnd != nullptr)
        DestroyWindow();
    events_.close();
}

STDMETHODIMP html_page::Invoke(DISPID id, REFIID reserved, LCID locale, WORD flags, DISPPARAMS* parameters,
                               VARIANT* result, EXCEPINFO* exception, UINT* bad_argument)
{
    if (id != DISPID_READYSTATE || (flags & DISPATCH_PROPERTYGET) == 0)
        return html_document2::Invoke(id, reserved, locale, flags, parameters, result, exception,
                                      bad_argument);
    if (result == nullptr)
        return E_POINTER;
    *result = VARIANT{};
    result->vt = VT_I4;
    result->lVal = static_cast<LONG>(page_->state);
    return S_OK;
}

// A document host is asked once to create a view; a second request would replace it. Any other host activates
// the page as a control.
STDMETHODIMP html_page::DoVerb(LONG verb, LPMSG message, IOleClientSite* site, LONG index, HWND parent,
                               LPCRECT place)
{
    const CComQIPtr<IOleDocumentSite> document_site(m_spClientSite);
    const bool shows = verb == OLEIVERB_SHOW || verb == OLEIVERB_OPEN || verb == OLEIVERB_UIACTIVATE ||
                       verb == OLEIVERB_INPLACEACTIVATE;
    if (document_site && shows && !m_bInPlaceActive)
        return document_site->ActivateMe(nullptr);
    return IOleObjectImpl<html_page>::DoVerb(verb, message, site, index, parent, place);
}

STDMETHODIMP html_page::Close(DWORD save)
{
    const CComPtr<IUnknown> keep_alive(GetUnknown());
    stop_download();
    return IOleObjectImpl<html_page>::Close(save);
}

STDMETHODIMP html_page::GetMiscStatus(DWORD, DWORD* status)
{
    if (status == nullptr)
        return E_POINTER;
    *status =
        OLEMISC_RECOMPOSEONRESIZE | OLEMISC_CANTLINKINSIDE | OLEMISC_INSIDEOUT | OLEMISC_ACTIVATEWHENVISIBLE;
    return S_OK;
}

STDMETHODIMP html_page::ParseDisplayName(IBindCtx*, LPOLESTR, ULONG* eaten, IMoniker** moniker)
{
    if (eaten == nullptr || moniker == nullptr)
        return E_POINTER;
    *eaten = 0;
    *moniker = nullptr;
    return E_NOTIMPL;
}

STDMETHODIMP html_page::EnumObjects(DWORD, IEnumUnknown** objects)
{
    if (objects == nullptr)
        return E_POINTER;
    *objects = nullptr;
    return E_NOTIMPL;
}

STDMETHODIMP html_page::GetClassID(CLSID* class_id)
{
    if (class_id == nullptr)
        return E_POINTER;
    *class_id = quill::CLSID_html_page;
    return S_OK;
}

STDMETHODIMP html_page::EnumConnectionPoints(IEnumConnectionPoints** points)
{
    if (points == nullptr)
        return E_POINTER;
    *points = nullptr;
    return E_NOTIMPL;
}

STDMETHODIMP html_page::FindConnectionPoint(REFIID interface_id, IConnectionPoint** point)
{
    return events_.find(interface_id, point);
}

STDMETHODIMP html_page::Load(BOOL, IMoniker* moniker, IBindCtx* context, DWORD)
{
    const CComPtr<IUnknown> keep_alive(GetUnknown());
    return quill::guarded([&] {
        if (moniker == nullptr)
            return E_INVALIDARG;
        stop_download();
        moniker_ = moniker;
        const HRESULT named = quill::get_display_name(moniker, context, page_->url);
        if (FAILED(named))
            return named;
        set_state(quill::page_state::loading);
        const HRESULT hr = quill::create_object(download_);
        // The download may finish inside this call, which releases download_.
        const auto download = download_;
        return FAILED(hr) ? hr : download->start(moniker, context, *this);
    });
}

void html_page::stop_download()
{
    const auto download = std::move(download_);
    if (download)
        download->cancel();
}

// A partially received page is displayed, as browsers do.
void html_page::downloaded(HRESULT, const std::string& bytes)
{
    const CComPtr<IUnknown> keep_alive(GetUnknown());
    download_.Release();
    page_->set_root(quill::read_page(quill::decode_page(bytes)));
    set_state(quill::page_state::interactive);
    set_state(quill::page_state::complete);
    tree_changed();
}

void html_page::set_state(quill::page_state state)
{
    page_->state = state;
    events_.fire_ready_state(page_);
}

// The sinks may change or close the page, so the link target and the site are read before the event.
void html_page::click(const quill::dom_node::pointer& element)
{
    const CComPtr<IUnknown> keep_alive(GetUnknown());
    const auto target = quill::target_of(*page_, *element);
    const CComPtr<IOleClientSite> site = m_spClientSite;
    if (events_.fire_click(page_, element) && !target.url.empty() && site)
        quill::follow(site, target);
}
