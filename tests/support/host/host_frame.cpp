#include "tests/support/host/host_frame.h"

#include "tests/support/host/host_browser.h"

#include <utility>

namespace quill::test {

host_frame::host_frame(call_log& calls) : logged_object(calls, "frame")
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
    const bool is_base = IsEqualIID(iid, IID_IOleInPlaceUIWindow) || IsEqualIID(iid, IID_IOleWindow);
    return is_base ? this : logged_object::find(iid);
}

STDMETHODIMP host_frame::GetWindow(HWND* out)
{
    return answer_window(arrive("IOleInPlaceFrame::GetWindow"), out, window);
}

STDMETHODIMP host_frame::SetBorderSpace(LPCBORDERWIDTHS widths)
{
    EXPECT_EQ(widths, nullptr) << "the document requests border space";
    return answer_plain(arrive("IOleInPlaceFrame::SetBorderSpace"));
}

STDMETHODIMP host_frame::SetActiveObject(IOleInPlaceActiveObject* object, LPCOLESTR)
{
    const call_fault fault = arrive("IOleInPlaceFrame::SetActiveObject", object ? "object" : "null");
    if (fault != call_fault::none)
        return answer_plain(fault);
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
    const call_fault fault = arrive("IOleInPlaceFrame::InsertMenus");
    if (is_error(fault))
        return answer_plain(fault);
    // The container's groups are File (0), Container (2) and Window (4); the others belong to the object.
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

STDMETHODIMP host_frame::TranslateAccelerator(LPMSG message, WORD command)
{
    EXPECT_NE(message, nullptr);
    commands.push_back(command);
    return answer_plain(arrive("IOleInPlaceFrame::TranslateAccelerator"));
}

} // namespace quill::test
