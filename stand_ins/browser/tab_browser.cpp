#include "stand_ins/browser/tab_browser.h"

#include <exdispid.h>
#include <olectl.h>

#include <utility>

namespace quill {
namespace {

template <class Object>
HRESULT create(CComPtr<Object>& object)
{
    CComObject<Object>* created = nullptr;
    const HRESULT hr = CComObject<Object>::CreateInstance(&created);
    object = created;
    return hr;
}

// Initialises the out parameter and checks that the control is open.
template <class Value>
HRESULT prepare(IWebBrowser2* control, Value* value)
{
    if (value == nullptr)
        return E_POINTER;
    *value = {};
    return control != nullptr ? S_OK : E_UNEXPECTED;
}

} // namespace

HRESULT tab_browser::open(IWebBrowser2* control)
{
    HRESULT hr = create(relay_);
    if (SUCCEEDED(hr))
        hr = create(control_sink_);
    if (FAILED(hr))
        return hr;
    control_ = control;
    relay_->attach(this);
    return control_sink_->advise(control, static_cast<IWebBrowser2*>(this), relay_);
}

HRESULT tab_browser::add_frame(IWebBrowser2* frame)
{
    if (!relay_)
        return E_UNEXPECTED;
    CComPtr<forwarding_sink> sink;
    HRESULT hr = create(sink);
    if (SUCCEEDED(hr))
        hr = sink->advise(frame, frame, relay_);
    if (SUCCEEDED(hr))
        frames_.push_back(sink);
    return hr;
}

void tab_browser::quit()
{
    const CComPtr<event_relay> relay = relay_;
    if (!relay || std::exchange(has_quit_, true))
        return;
    DISPPARAMS none = {};
    relay->fire(DISPID_ONQUIT, &none);
}

void tab_browser::close()
{
    const CComPtr<IUnknown> keep_alive(GetUnknown());
    quit();
    const auto frames = std::exchange(frames_, {});
    for (const auto& frame : frames)
        frame->close();
    if (control_sink_)
        control_sink_->close();
    if (relay_)
        relay_->close();
    control_sink_.Release();
    relay_.Release();
    control_.Release();
}

STDMETHODIMP tab_browser::get_TopLevelContainer(VARIANT_BOOL* value)
{
    const HRESULT hr = prepare(control_, value);
    if (SUCCEEDED(hr))
        *value = VARIANT_TRUE;
    return hr;
}

STDMETHODIMP tab_browser::get_Document(IDispatch** document)
{
    const HRESULT hr = prepare(control_, document);
    return SUCCEEDED(hr) ? control_->get_Document(document) : hr;
}

STDMETHODIMP tab_browser::get_LocationURL(BSTR* address)
{
    const HRESULT hr = prepare(control_, address);
    return SUCCEEDED(hr) ? control_->get_LocationURL(address) : hr;
}

STDMETHODIMP tab_browser::get_Busy(VARIANT_BOOL* value)
{
    const HRESULT hr = prepare(control_, value);
    return SUCCEEDED(hr) ? control_->get_Busy(value) : hr;
}

STDMETHODIMP tab_browser::get_ReadyState(READYSTATE* state)
{
    const HRESULT hr = prepare(control_, state);
    return SUCCEEDED(hr) ? control_->get_ReadyState(state) : hr;
}

STDMETHODIMP tab_browser::Navigate2(VARIANT* address, VARIANT* flags, VARIANT* frame, VARIANT* post_data,
                                    VARIANT* headers)
{
    return control_ ? control_->Navigate2(address, flags, frame, post_data, headers) : E_UNEXPECTED;
}

STDMETHODIMP tab_browser::Stop()
{
    return control_ ? control_->Stop() : E_UNEXPECTED;
}

STDMETHODIMP tab_browser::EnumConnectionPoints(IEnumConnectionPoints** points)
{
    if (points == nullptr)
        return E_POINTER;
    *points = nullptr;
    return E_NOTIMPL;
}

STDMETHODIMP tab_browser::FindConnectionPoint(REFIID events, IConnectionPoint** point)
{
    if (point == nullptr)
        return E_POINTER;
    *point = nullptr;
    if (events != DIID_DWebBrowserEvents2)
        return CONNECT_E_NOCONNECTION;
    if (!relay_)
        return E_UNEXPECTED;
    relay_->AddRef();
    *point = relay_;
    return S_OK;
}

} // namespace quill
