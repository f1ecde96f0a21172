#include "stand_ins/browser/browser_events.h"

#include <exdispid.h>
#include <ocidl.h>

namespace quill {
namespace {

// Follows VT_BYREF | VT_VARIANT to the value itself.
const VARIANT& resolved(const VARIANT& value)
{
    const VARIANT* at = &value;
    while (at->vt == (VT_BYREF | VT_VARIANT) && at->pvarVal != nullptr)
        at = at->pvarVal;
    return *at;
}

// Argument `index` in call order; null if the event has fewer arguments.
const VARIANT* argument(const DISPPARAMS& parameters, UINT index)
{
    return index < parameters.cArgs ? &resolved(parameters.rgvarg[parameters.cArgs - 1 - index]) : nullptr;
}

std::wstring text_argument(const DISPPARAMS& parameters, UINT index)
{
    const VARIANT* value = argument(parameters, index);
    if (value == nullptr || value->vt != VT_BSTR || value->bstrVal == nullptr)
        return {};
    return value->bstrVal;
}

long number_argument(const DISPPARAMS& parameters, UINT index)
{
    const VARIANT* value = argument(parameters, index);
    return value != nullptr && value->vt == VT_I4 ? value->lVal : 0;
}

} // namespace

HRESULT browser_events::advise(IUnknown* browser, browser_events_owner& owner)
{
    CComPtr<IConnectionPointContainer> container;
    HRESULT hr = browser->QueryInterface(IID_PPV_ARGS(&container));
    if (FAILED(hr))
        return hr;
    CComPtr<IConnectionPoint> point;
    hr = container->FindConnectionPoint(DIID_DWebBrowserEvents2, &point);
    if (FAILED(hr))
        return hr;
    hr = point->Advise(static_cast<IDispatch*>(this), &cookie_);
    if (SUCCEEDED(hr)) {
        point_ = point;
        owner_ = &owner;
    }
    return hr;
}

void browser_events::unadvise()
{
    owner_ = nullptr;
    const CComPtr<IConnectionPoint> point = point_;
    point_.Release();
    if (point)
        point->Unadvise(cookie_);
}

STDMETHODIMP browser_events::GetTypeInfoCount(UINT* count)
{
    if (count == nullptr)
        return E_POINTER;
    *count = 0;
    return S_OK;
}

STDMETHODIMP browser_events::GetTypeInfo(UINT, LCID, ITypeInfo** info)
{
    if (info == nullptr)
        return E_POINTER;
    *info = nullptr;
    return E_NOTIMPL;
}

STDMETHODIMP browser_events::GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*)
{
    return E_NOTIMPL;
}

STDMETHODIMP browser_events::Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS* parameters, VARIANT*,
                                    EXCEPINFO*, UINT*)
{
    if (parameters == nullptr)
        return E_POINTER;
    try {
        if (owner_ != nullptr)
            dispatch(id, *parameters);
    } catch (...) {
        return E_OUTOFMEMORY;
    }
    return S_OK;
}

void browser_events::dispatch(DISPID id, const DISPPARAMS& parameters)
{
    switch (id) {
    case DISPID_BEFORENAVIGATE2:
        owner_->on_navigate(text_argument(parameters, 1));
        break;
    case DISPID_TITLECHANGE:
        owner_->on_title(text_argument(parameters, 0));
        break;
    case DISPID_STATUSTEXTCHANGE:
        owner_->on_status(text_argument(parameters, 0));
        break;
    case DISPID_COMMANDSTATECHANGE: {
        const VARIANT* enabled = argument(parameters, 1);
        const long command = number_argument(parameters, 0);
        if (enabled != nullptr && enabled->vt == VT_BOOL &&
            (command == CSC_NAVIGATEBACK || command == CSC_NAVIGATEFORWARD))
            owner_->on_command_state(command == CSC_NAVIGATEBACK, enabled->boolVal != VARIANT_FALSE);
        break;
    }
    case DISPID_NAVIGATEERROR:
        owner_->on_failure(text_argument(parameters, 1), number_argument(parameters, 3));
        break;
    case DISPID_NEWWINDOW3: {
        const std::wstring address = text_argument(parameters, 4);
        const VARIANT* cancel = argument(parameters, 1);
        if (cancel != nullptr && cancel->vt == (VT_BYREF | VT_BOOL) && cancel->pboolVal != nullptr)
            *cancel->pboolVal = VARIANT_TRUE;
        owner_->on_new_window(address);
        break;
    }
    default:
        break;
    }
}

} // namespace quill
