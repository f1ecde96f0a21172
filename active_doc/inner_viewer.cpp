#include "active_doc/inner_viewer.h"

#include "active_doc/identifiers.h"

namespace quill {
namespace {

// The viewer has no method names.
enum viewer_method : DISPID
{
    method_open = 1,
    method_go_to_page = 4,
    method_set_zoom = 9,
    method_print = 12,
    method_setup_first = 15,
    method_setup_second = 16,
    method_window = 19,
    method_set_link_target = 23,
    method_set_save_target = 24,
};

VARIANT handle_variant(HWND window)
{
    VARIANT value{};
    value.vt = VT_UI8;
    value.ullVal = reinterpret_cast<ULONG_PTR>(window);
    return value;
}

VARIANT number_variant(UINT number)
{
    VARIANT value{};
    value.vt = VT_UI4;
    value.ulVal = number;
    return value;
}

} // namespace

ATL::CComPtr<IDispatch> inner_viewer::query(IUnknown* control)
{
    ATL::CComPtr<IDispatch> result;
    void* viewer = nullptr;
    if (control && SUCCEEDED(control->QueryInterface(IID_inner_viewer, &viewer)))
        result.Attach(static_cast<IDispatch*>(viewer));
    return result;
}

void inner_viewer::release()
{
    // The last Release may re-enter the document, so the member is cleared first.
    ATL::CComPtr<IDispatch> viewer;
    viewer.Attach(viewer_.Detach());
}

HRESULT inner_viewer::invoke(DISPID method, VARIANT* reversed_arguments, UINT count, VARIANT* result) const
{
    // The call may pump messages; destroying the window inside it releases the member.
    const ATL::CComPtr<IDispatch> viewer = viewer_;
    if (!viewer)
        return E_UNEXPECTED;
    DISPPARAMS parameters{};
    parameters.rgvarg = reversed_arguments;
    parameters.cArgs = count;
    return viewer->Invoke(method, IID_NULL, LOCALE_SYSTEM_DEFAULT, DISPATCH_METHOD, &parameters, result,
                          nullptr, nullptr);
}

ATL::CComVariant inner_viewer::result_of(DISPID method, VARIANT* reversed_arguments, UINT count) const
{
    VARIANT returned{};
    const HRESULT call = invoke(method, reversed_arguments, count, &returned);
    ATL::CComVariant result;
    // After a failure the out parameter is neither used nor freed.
    static_cast<VARIANT&>(result) = SUCCEEDED(call) ? returned : VARIANT{};
    return result;
}

ATL::CComVariant inner_viewer::open(const wchar_t* path) const
{
    ATL::CComVariant argument(path);
    return result_of(method_open, &argument, 1);
}

void inner_viewer::go_to_page(std::int32_t page_index) const
{
    VARIANT argument{};
    argument.vt = VT_I4;
    argument.lVal = page_index;
    invoke(method_go_to_page, &argument, 1, nullptr);
}

void inner_viewer::set_zoom(double factor) const
{
    VARIANT argument{};
    argument.vt = VT_R8;
    argument.dblVal = factor;
    invoke(method_set_zoom, &argument, 1, nullptr);
}

void inner_viewer::print() const
{
    invoke(method_print, nullptr, 0, nullptr);
}

void inner_viewer::set_link_target(HWND window, UINT message) const
{
    VARIANT arguments[] = {number_variant(message), handle_variant(window)};
    invoke(method_set_link_target, arguments, 2, nullptr);
}

void inner_viewer::set_save_target(HWND window, UINT message) const
{
    VARIANT arguments[] = {number_variant(message), handle_variant(window)};
    invoke(method_set_save_target, arguments, 2, nullptr);
}

void inner_viewer::first_setup() const
{
    invoke(method_setup_first, nullptr, 0, nullptr);
}

void inner_viewer::second_setup() const
{
    invoke(method_setup_second, nullptr, 0, nullptr);
}

HWND inner_viewer::window() const
{
    const ATL::CComVariant result = result_of(method_window, nullptr, 0);
    if (result.vt != VT_UI8)
        return nullptr;
    return reinterpret_cast<HWND>(static_cast<ULONG_PTR>(result.ullVal));
}

} // namespace quill
