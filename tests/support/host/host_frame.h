// The browser's frame: menus, the active object, accelerators.
#pragma once

#include "tests/support/fakes/logged_object.h"

#include <exdisp.h>
#include <mshtml.h>
#include <ocidl.h>
#include <unimplemented_interfaces.h>

#include <vector>

namespace quill::test {

class host_frame final : public logged_object<without_IOleInPlaceFrame<IOleInPlaceFrame>>
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
    // Every menu passed to InsertMenus and every SetMenu call, oldest first.
    std::vector<HMENU> filled_menus;
    std::vector<menu_call> set_menus;
    // The commands passed to TranslateAccelerator.
    std::vector<WORD> commands;

    IOleInPlaceActiveObject* active_object() const { return active_object_; }
    // Releases the active object, as a closing frame does.
    void drop_active_object();

    STDMETHODIMP GetWindow(HWND* out) override;
    STDMETHODIMP SetBorderSpace(LPCBORDERWIDTHS widths) override;
    STDMETHODIMP SetActiveObject(IOleInPlaceActiveObject* object, LPCOLESTR) override;
    STDMETHODIMP InsertMenus(HMENU menu, LPOLEMENUGROUPWIDTHS widths) override;
    STDMETHODIMP SetMenu(HMENU menu, HOLEMENU descriptor, HWND active_window) override;
    STDMETHODIMP TranslateAccelerator(LPMSG message, WORD command) override;

private:
    IUnknown* find(REFIID iid) override;

    IOleInPlaceActiveObject* active_object_ = nullptr;
};

} // namespace quill::test
