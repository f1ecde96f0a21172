#include "tests/framework/strict_container.h"

#include <gtest/gtest.h>
#include <olectl.h>

namespace quill::test {

IUnknown* strict_frame::find(REFIID iid)
{
    return iid == IID_IOleWindow || iid == IID_IOleInPlaceUIWindow ? this : test_object::find(iid);
}

HRESULT strict_frame::SetBorderSpace(LPCBORDERWIDTHS widths)
{
    return record_.note(name_ + (widths ? ".SetBorderSpace" : ".SetBorderSpace(NULL)"));
}

HRESULT strict_frame::SetActiveObject(IOleInPlaceActiveObject* object, LPCOLESTR)
{
    active = object;
    return record_.note(name_ + (object ? ".SetActiveObject" : ".SetActiveObject(NULL)"));
}

strict_container::strict_container()
    : window(CreateWindowExW(0, L"STATIC", L"", WS_POPUP, 0, 0, 400, 300, nullptr, nullptr, nullptr, nullptr))
{
}

strict_container::~strict_container()
{
    DestroyWindow(window);
}

bool strict_container::released() const
{
    return references() == 0 && frame.references() == 0 && document.references() == 0;
}

IUnknown* strict_container::find(REFIID iid)
{
    if (iid == IID_IOleWindow || iid == IID_IOleInPlaceSite)
        return has_in_place_site ? static_cast<IOleInPlaceSite*>(this) : nullptr;
    return test_object::find(iid);
}

HRESULT strict_container::GetWindow(HWND* out)
{
    const HRESULT hr = record.note("GetWindow");
    if (SUCCEEDED(hr) && gives_window)
        *out = window;
    return hr;
}

HRESULT strict_container::OnInPlaceActivate()
{
    ++in_place_balance;
    const HRESULT hr = record.note("OnInPlaceActivate");
    if (FAILED(hr))
        --in_place_balance;
    return hr;
}

HRESULT strict_container::OnInPlaceDeactivate()
{
    --in_place_balance;
    return record.note("OnInPlaceDeactivate");
}

HRESULT strict_container::OnUIActivate()
{
    ++ui_balance;
    const HRESULT hr = record.note("OnUIActivate");
    if (FAILED(hr))
        --ui_balance;
    return hr;
}

HRESULT strict_container::OnUIDeactivate(BOOL undoable)
{
    EXPECT_FALSE(undoable);
    --ui_balance;
    return record.note("OnUIDeactivate");
}

HRESULT strict_container::GetWindowContext(IOleInPlaceFrame** frame_out, IOleInPlaceUIWindow** document_out,
                                           LPRECT position_out, LPRECT clip_out, LPOLEINPLACEFRAMEINFO info)
{
    EXPECT_EQ(info->cb, sizeof *info);
    EXPECT_EQ(*frame_out, nullptr) << "the out parameter is not initialised: a host may leave it untouched";
    EXPECT_EQ(*document_out, nullptr);
    const HRESULT hr = record.note("GetWindowContext");
    if (FAILED(hr) && failure_leaves_windows) {
        *frame_out = &frame;
        *document_out = &document;
    }
    if (FAILED(hr) || !touches_context)
        return hr;
    if (gives_frame) {
        *frame_out = &frame;
        frame.AddRef();
    }
    if (gives_document) {
        *document_out = &document;
        document.AddRef();
    }
    *position_out = position;
    *clip_out = clip;
    info->hwndFrame = window;
    return hr;
}

HRESULT strict_container::TranslateAccelerator(MSG* message, DWORD modifiers)
{
    return record.note("TranslateAccelerator(" + std::to_string(message->wParam) + ", " +
                       std::to_string(modifiers) + ")");
}

HRESULT strict_container::Invoke(DISPID id, REFIID iid, LCID, WORD flags, DISPPARAMS* parameters,
                                 VARIANT* result, EXCEPINFO*, UINT*)
{
    EXPECT_EQ(iid, IID_NULL);
    EXPECT_EQ(flags, DISPATCH_PROPERTYGET);
    EXPECT_EQ(parameters->cArgs, 0u);
    EXPECT_EQ(id, DISPID_AMBIENT_USERMODE);
    if (!user_mode)
        return DISP_E_MEMBERNOTFOUND;
    result->vt = VT_BOOL;
    result->boolVal = *user_mode ? VARIANT_TRUE : VARIANT_FALSE;
    return S_OK;
}

} // namespace quill::test
