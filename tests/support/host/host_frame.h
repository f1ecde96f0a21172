// The browser's frame window object: menus, the active object, accelerators.
#pragma once

#include "tests/support/host/fake_object.h"

#include <oleidl.h>

#include <vector>

namespace quill::test {

class host_frame final : public fake_object<IOleInPlaceFrame>
{
public:
    explicit host_frame(call_log& calls);
    ~host_frame() override;

    struct menu_call
    {
        HMENU menu;
        HOLEMENU descriptor;
        HWND window;
    };

    HWND window = nullptr;
    // Every menu that InsertMenus was asked to fill and every SetMenu, oldest first.
    std::vector<HMENU> filled_menus;
    std::vector<menu_call> set_menus;
    // What TranslateAccelerator was given.
    std::vector<WORD> commands;

    IOleInPlaceActiveObject* active_object() const { return active_object_; }
    // Lets go of the active object, as a frame does that closes.
    void drop_active_object();

    STDMETHODIMP GetWindow(HWND* out) override;
    STDMETHODIMP ContextSensitiveHelp(BOOL) override;
    STDMETHODIMP GetBorder(LPRECT) override;
    STDMETHODIMP RequestBorderSpace(LPCBORDERWIDTHS) override;
    STDMETHODIMP SetBorderSpace(LPCBORDERWIDTHS widths) override;
    STDMETHODIMP SetActiveObject(IOleInPlaceActiveObject* object, LPCOLESTR) override;
    STDMETHODIMP InsertMenus(HMENU menu, LPOLEMENUGROUPWIDTHS widths) override;
    STDMETHODIMP SetMenu(HMENU menu, HOLEMENU descriptor, HWND active_window) override;
    STDMETHODIMP RemoveMenus(HMENU) override;
    STDMETHODIMP SetStatusText(LPCOLESTR) override;
    STDMETHODIMP EnableModeless(BOOL) override;
    STDMETHODIMP TranslateAccelerator(LPMSG message, WORD command) override;

private:
    IUnknown* find(REFIID iid) override;
    HRESULT unexpected(const char* method) const;

    IOleInPlaceActiveObject* active_object_ = nullptr;
};

} // namespace quill::test
