#include "tests/support/host/host_frame.h"

#include "tests/support/host/host_browser.h"

#include <utility>

namespace quill::test {

host_frame::host_frame(call_log& calls) : fake_object(calls, "frame")
{
    for (const char* method :
         {"GetWindow", "SetBorderSpace", "SetActiveObject", "InsertMenus", "SetMenu", "TranslateAccelerator"})
        calls.allow(std::string{"IOleInPlaceFrame::"} + method);
}

host_frame::~host_frame()
{
    EXPECT_EQ(active_object_, nullptr) << "the frame still has an active object";
    drop_active_object();
}

void host_frame::drop_active_object()
{
    if (IOleInPlaceActiveObject* const old = std::exchange(active_object_, nullptr))
        old->Release();
}

IUnknown* host_frame::find(REFIID iid)
{
    if (IsEqualIID(iid, IID_IOleInPlaceFrame) || IsEqualIID(iid, IID_IOleInPlaceUIWindow) ||
        IsEqualIID(iid, IID_IOleWindow))
        return this;
    return nullptr;
}

HRESULT host_frame::unexpected(const char* method) const
{
    ADD_FAILURE() << "unexpected call: IOleInPlaceFrame::" << method;
    return E_NOTIMPL;
}

STDMETHODIMP host_frame::GetWindow(HWND* out)
{
    return answer_window(arrive("IOleInPlaceFrame::GetWindow"), out, window);
}

STDMETHODIMP host_frame::ContextSensitiveHelp(BOOL)
{
    return unexpected("ContextSensitiveHelp");
}

STDMETHODIMP host_frame::GetBorder(LPRECT)
{
    return unexpected("GetBorder");
}

STDMETHODIMP host_frame::RequestBorderSpace(LPCBORDERWIDTHS)
{
    return unexpected("RequestBorderSpace");
}

STDMETHODIMP host_frame::SetBorderSpace(LPCBORDERWIDTHS widths)
{
    EXPECT_EQ(widths, nullptr) << "the document asks for border space";
    return answer_plain(arrive("IOleInPlaceFrame::SetBorderSpace"));
}

STDMETHODIMP host_frame::SetActiveObject(IOleInPlaceActiveObject* object, LPCOLESTR)
{
    const bad_answer kind = arrive("IOleInPlaceFrame::SetActiveObject", object ? "object" : "null");
    if (kind != bad_answer::none)
        return answer_plain(kind);
    if (object)
        object->AddRef();
    if (IOleInPlaceActiveObject* const old = std::exchange(active_object_, object))
        old->Release();
    return S_OK;
}

STDMETHODIMP host_frame::InsertMenus(HMENU menu, LPOLEMENUGROUPWIDTHS widths)
{
    EXPECT_TRUE(IsMenu(menu));
    EXPECT_EQ(GetMenuItemCount(menu), 0) << "the shared menu was not empty";
    EXPECT_NE(widths, nullptr);
    filled_menus.push_back(menu);
    const bad_answer kind = arrive("IOleInPlaceFrame::InsertMenus");
    if (kind == bad_answer::failure || kind == bad_answer::failure_untouched)
        return answer_plain(kind);
    // The container's groups are File (0), Container (2) and Window (4); the others stay the object's.
    const wchar_t* const titles[] = {L"&File", L"&View", L"&Window"};
    for (UINT index = 0; index < 3; ++index)
        AppendMenuW(menu, MF_STRING, 100 + index, titles[index]);
    if (widths) {
        for (int group : {0, 2, 4})
            widths->width[group] = 1;
    }
    return S_OK;
}

STDMETHODIMP host_frame::SetMenu(HMENU menu, HOLEMENU descriptor, HWND active_window)
{
    set_menus.push_back({menu, descriptor, active_window});
    return answer_plain(arrive("IOleInPlaceFrame::SetMenu", menu || descriptor ? "menu" : "null"));
}

STDMETHODIMP host_frame::RemoveMenus(HMENU)
{
    return unexpected("RemoveMenus");
}

STDMETHODIMP host_frame::SetStatusText(LPCOLESTR)
{
    return unexpected("SetStatusText");
}

STDMETHODIMP host_frame::EnableModeless(BOOL)
{
    return unexpected("EnableModeless");
}

STDMETHODIMP host_frame::TranslateAccelerator(LPMSG message, WORD command)
{
    EXPECT_NE(message, nullptr);
    commands.push_back(command);
    return answer_plain(arrive("IOleInPlaceFrame::TranslateAccelerator"));
}

} // namespace quill::test
