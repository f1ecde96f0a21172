#include "stand_ins/viewer/viewer_control.h"

#include <climits>
#include <cstdint>

using quill::viewer_method;

namespace {

// Argument `index` in call order, converted to the parameter's type.
HRESULT take_argument(DISPPARAMS& parameters, UINT index, VARTYPE type, CComVariant& value)
{
    VARIANT& given = parameters.rgvarg[parameters.cArgs - 1 - index];
    return FAILED(VariantChangeType(&value, &given, 0, type)) ? DISP_E_TYPEMISMATCH : S_OK;
}

UINT argument_count(viewer_method method)
{
    switch (method) {
    case viewer_method::open:
    case viewer_method::go_to_page:
    case viewer_method::set_zoom:
        return 1;
    case viewer_method::set_link_target:
    case viewer_method::set_save_target:
        return 2;
    case viewer_method::print:
    case viewer_method::finish_setup:
    case viewer_method::start:
    case viewer_method::get_window:
        return 0;
    }
    return UINT_MAX;
}

} // namespace

STDMETHODIMP viewer_control::GetTypeInfoCount(UINT* count)
{
    if (count == nullptr)
        return E_POINTER;
    *count = 0;
    return S_OK;
}

STDMETHODIMP viewer_control::GetTypeInfo(UINT, LCID, ITypeInfo** info)
{
    if (info == nullptr)
        return E_POINTER;
    *info = nullptr;
    return E_NOTIMPL;
}

STDMETHODIMP viewer_control::GetIDsOfNames(REFIID, LPOLESTR*, UINT count, LCID, DISPID* ids)
{
    if (ids == nullptr)
        return E_POINTER;
    for (UINT i = 0; i < count; ++i)
        ids[i] = DISPID_UNKNOWN;
    return DISP_E_UNKNOWNNAME;
}

STDMETHODIMP viewer_control::Invoke(DISPID id, REFIID, LCID, WORD flags, DISPPARAMS* parameters,
                                    VARIANT* result, EXCEPINFO*, UINT*)
{
    if (result != nullptr)
        VariantInit(result);
    if (parameters == nullptr)
        return E_POINTER;
    const auto method = static_cast<viewer_method>(id);
    const UINT count = argument_count(method);
    if (count == UINT_MAX || (flags & DISPATCH_METHOD) == 0)
        return DISP_E_MEMBERNOTFOUND;
    if (parameters->cNamedArgs != 0)
        return DISP_E_NONAMEDARGS;
    if (parameters->cArgs != count)
        return DISP_E_BADPARAMCOUNT;
    try {
        CComVariant answer;
        const HRESULT hr = call(method, *parameters, answer);
        return FAILED(hr) || result == nullptr ? hr : answer.Detach(result);
    } catch (...) {
        return E_OUTOFMEMORY;
    }
}

HRESULT viewer_control::call(viewer_method method, DISPPARAMS& parameters, VARIANT& result)
{
    CComVariant value;
    HRESULT hr = S_OK;
    switch (method) {
    case viewer_method::open:
        hr = take_argument(parameters, 0, VT_BSTR, value);
        if (SUCCEEDED(hr)) {
            const bool opened =
                viewer_ != nullptr && value.bstrVal != nullptr && viewer_->open(value.bstrVal);
            result.vt = VT_BOOL;
            result.boolVal = opened ? VARIANT_TRUE : VARIANT_FALSE;
        }
        return hr;
    case viewer_method::go_to_page:
        hr = take_argument(parameters, 0, VT_I4, value);
        if (SUCCEEDED(hr) && viewer_ != nullptr)
            viewer_->go_to_page(value.lVal > 0 ? static_cast<std::size_t>(value.lVal) : 0);
        return hr;
    case viewer_method::set_zoom:
        hr = take_argument(parameters, 0, VT_R8, value);
        if (SUCCEEDED(hr) && viewer_ != nullptr)
            viewer_->set_zoom(value.dblVal);
        return hr;
    case viewer_method::print:
        if (viewer_ != nullptr)
            viewer_->print();
        return S_OK;
    case viewer_method::finish_setup:
    case viewer_method::start:
        return S_OK;
    case viewer_method::get_window:
        result.vt = VT_UI8;
        result.ullVal = viewer_ != nullptr ? reinterpret_cast<std::uintptr_t>(viewer_->m_hWnd) : 0;
        return S_OK;
    case viewer_method::set_link_target:
        return set_target(parameters, &quill::host_requests::set_link_target);
    case viewer_method::set_save_target:
        return set_target(parameters, &quill::host_requests::set_save_target);
    }
    return DISP_E_MEMBERNOTFOUND;
}

HRESULT viewer_control::set_target(DISPPARAMS& parameters, void (quill::host_requests::*set)(HWND, UINT))
{
    CComVariant window;
    CComVariant message;
    HRESULT hr = take_argument(parameters, 0, VT_UI8, window);
    if (SUCCEEDED(hr))
        hr = take_argument(parameters, 1, VT_UI4, message);
    if (FAILED(hr))
        return hr;
    (host_.*set)(reinterpret_cast<HWND>(static_cast<std::uintptr_t>(window.ullVal)), message.ulVal);
    if (viewer_ != nullptr)
        viewer_->set_host(host_);
    return S_OK;
}

STDMETHODIMP viewer_control::GetClassID(CLSID* class_id)
{
    if (class_id == nullptr)
        return E_POINTER;
    *class_id = quill::CLSID_viewer_control;
    return S_OK;
}

STDMETHODIMP viewer_control::GetSizeMax(ULARGE_INTEGER* size)
{
    if (size == nullptr)
        return E_POINTER;
    size->QuadPart = 0;
    return S_OK;
}

LRESULT viewer_control::OnCreate(UINT, WPARAM, LPARAM, BOOL&)
{
    RECT client = {};
    GetClientRect(&client);
    viewer_ = quill::viewer_window::create(m_hWnd, client);
    if (viewer_ == nullptr)
        return -1;
    viewer_->set_host(host_);
    return 0;
}

LRESULT viewer_control::OnDestroy(UINT, WPARAM, LPARAM, BOOL& handled)
{
    // The child window and its object are destroyed right after this handler.
    viewer_ = nullptr;
    handled = FALSE;
    return 0;
}

LRESULT viewer_control::OnSize(UINT, WPARAM, LPARAM lparam, BOOL&)
{
    if (viewer_ != nullptr)
        viewer_->MoveWindow(0, 0, LOWORD(lparam), HIWORD(lparam));
    return 0;
}

LRESULT viewer_control::OnEraseBackground(UINT, WPARAM, LPARAM, BOOL&)
{
    return 1; // the child window covers the client area
}
