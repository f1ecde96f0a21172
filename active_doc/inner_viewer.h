// The suite's viewer control, as the document uses it: calls of IDispatch::Invoke by DISPID.
#pragma once

#include <windows.h>

#include <atlbase.h>

#include <cstdint>

namespace quill {

// Owns a reference to the viewer from attach() to release(). Every call is permitted without a viewer and
// tolerates its failure. UI thread only.
class inner_viewer
{
public:
    // The viewer interface of a control; null if it has none.
    static ATL::CComPtr<IDispatch> query(IUnknown* control);
    void attach(IDispatch* viewer) { viewer_ = viewer; }
    void release();
    explicit operator bool() const { return viewer_ != nullptr; }

    // Opens a local file. Returns the viewer's result, VT_EMPTY after a failure. The file is shown only if
    // the result is VT_BOOL with VARIANT_TRUE.
    ATL::CComVariant open(const wchar_t* path) const;
    // page_index counts from 0.
    void go_to_page(std::int32_t page_index) const;
    // 1.0 is 100 per cent.
    void set_zoom(double factor) const;
    void print() const;
    // Sets the window and the messages by which the viewer requests to open a link and to save a copy.
    void set_link_target(HWND window, UINT message) const;
    void set_save_target(HWND window, UINT message) const;
    // Two calls that the viewer requires once, in this order, after its targets are set.
    void first_setup() const;
    void second_setup() const;
    // The viewer's window; null if it returns none.
    HWND window() const;

private:
    // As in DISPPARAMS, the arguments are in reverse order. result may be null.
    HRESULT invoke(DISPID method, VARIANT* reversed_arguments, UINT count, VARIANT* result) const;
    ATL::CComVariant result_of(DISPID method, VARIANT* reversed_arguments, UINT count) const;

    ATL::CComPtr<IDispatch> viewer_;
};

} // namespace quill
