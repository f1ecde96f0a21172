// A strict host for one control: client site, in-place site, control site, ambient properties, frame and
// document window. Their calls go to one call log; each has its own reference count.
#pragma once

#include "tests/support/fakes/call_log.h"
#include "tests/support/fakes/com_object.h"

#include <windows.h>

#include <exdisp.h>
#include <mshtml.h>
#include <ocidl.h>
#include <unimplemented_interfaces.h>

#include <optional>

namespace quill::test {

// Frame or document window: IOleInPlaceFrame has everything of IOleInPlaceUIWindow.
class strict_frame final : public test_object<without_IOleInPlaceFrame<IOleInPlaceFrame>>
{
public:
    strict_frame(call_log& record, std::string name) : record_(record), name_(std::move(name)) {}

    HRESULT STDMETHODCALLTYPE SetBorderSpace(LPCBORDERWIDTHS widths) override;
    HRESULT STDMETHODCALLTYPE SetActiveObject(IOleInPlaceActiveObject* object, LPCOLESTR name) override;

    IOleInPlaceActiveObject* active = nullptr; // compared only, not held

private:
    IUnknown* find(REFIID iid) override;

    call_log& record_;
    std::string name_;
};

class strict_container final
    : public test_object<without_IOleClientSite<IOleClientSite>, without_IOleInPlaceSite<IOleInPlaceSite>,
                         without_IOleControlSite<IOleControlSite>, without_IDispatch<IDispatch>>
{
public:
    strict_container();
    ~strict_container() override;

    // Whether all references to the site, the frame and the document window are released.
    bool released() const;

    // IOleClientSite
    HRESULT STDMETHODCALLTYPE SaveObject() override { return record.note("SaveObject"); }
    HRESULT STDMETHODCALLTYPE ShowObject() override { return record.note("ShowObject"); }
    HRESULT STDMETHODCALLTYPE OnShowWindow(BOOL show) override
    {
        return record.note(show ? "OnShowWindow(TRUE)" : "OnShowWindow(FALSE)");
    }

    // IOleInPlaceSite
    HRESULT STDMETHODCALLTYPE GetWindow(HWND* window) override;
    HRESULT STDMETHODCALLTYPE CanInPlaceActivate() override { return record.note("CanInPlaceActivate"); }
    HRESULT STDMETHODCALLTYPE OnInPlaceActivate() override;
    HRESULT STDMETHODCALLTYPE OnUIActivate() override;
    HRESULT STDMETHODCALLTYPE GetWindowContext(IOleInPlaceFrame** frame_out,
                                               IOleInPlaceUIWindow** document_out, LPRECT position,
                                               LPRECT clip, LPOLEINPLACEFRAMEINFO info) override;
    HRESULT STDMETHODCALLTYPE OnUIDeactivate(BOOL undoable) override;
    HRESULT STDMETHODCALLTYPE OnInPlaceDeactivate() override;

    // IOleControlSite
    HRESULT STDMETHODCALLTYPE TranslateAccelerator(MSG* message, DWORD modifiers) override;
    HRESULT STDMETHODCALLTYPE OnFocus(BOOL got) override
    {
        return record.note(got ? "OnFocus(TRUE)" : "OnFocus(FALSE)");
    }

    // IDispatch
    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID iid, LCID, WORD flags, DISPPARAMS* parameters,
                                     VARIANT* result, EXCEPINFO*, UINT*) override;

    call_log record{unlisted_calls::allow};
    strict_frame frame{record, "frame"};
    strict_frame document{record, "document"};
    HWND window = nullptr; // parent for the control, hidden
    RECT position{5, 6, 205, 156};
    RECT clip{0, 0, 400, 300};

    // The differences to a well-behaved host.
    bool has_in_place_site = true;
    bool gives_window = true;
    bool gives_frame = true;
    bool gives_document = true;
    bool touches_context = true;         // GetWindowContext writes something
    bool failure_leaves_windows = false; // a GetWindowContext that fails writes them, without references
    std::optional<bool> user_mode;

    int in_place_balance = 0; // activations without deactivation
    int ui_balance = 0;

private:
    IUnknown* find(REFIID iid) override;
};

} // namespace quill::test
