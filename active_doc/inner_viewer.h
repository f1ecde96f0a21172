// The suite's viewer control as the document uses it: automation calls by number.
#pragma once

#include <windows.h>

#include <atlbase.h>

#include <cstdint>

namespace quill {

// Owns a reference to the viewer's interface from attach() to release(). Every call is safe without a
// viewer and whatever the viewer answers. User-interface thread only.
class inner_viewer
{
public:
    // The control's viewer interface; null when it has none.
    static ATL::CComPtr<IDispatch> query(IUnknown* control);
    void attach(IDispatch* viewer) { viewer_ = viewer; }
    void release();
    explicit operator bool() const { return viewer_ != nullptr; }

    // Opens a local file. Returns the viewer's result, empty and zero when the call failed;
    // VT_BOOL VARIANT_TRUE alone means that the file is shown.
    ATL::CComVariant open(const wchar_t* path) const;
    // page_index counts from 0.
    void go_to_page(std::int32_t page_index) const;
    // 1.0 is 100 %.
    void set_zoom(double factor) const;
    void print() const;
    // Asks the viewer to send its requests to a window: links as one message, Save As as another.
    void set_link_target(HWND window, UINT message) const;
    void set_save_target(HWND window, UINT message) const;
    // The two calls that the viewer expects once after its targets are set, in this order.
    void first_setup() const;
    void second_setup() const;
    // The viewer's own window; null when it reports none.
    HWND window() const;

private:
    // rgvarg order: the last argument first. The result is only for a caller that wants it.
    HRESULT invoke(DISPID method, VARIANT* reversed_arguments, UINT count, VARIANT* result) const;
    ATL::CComVariant result_of(DISPID method, VARIANT* reversed_arguments, UINT count) const;

    ATL::CComPtr<IDispatch> viewer_;
};

} // namespace quill
