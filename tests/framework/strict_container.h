// A host for one control: client site, in-place site, control site, ambient properties, frame and document
// window, all recorded, with counts of their own.
#pragma once

#include "tests/framework/call_record.h"

#include <windows.h>

#include <ocidl.h>
#include <ole2.h>
#include <oleidl.h>

#include <optional>

namespace quill::test {

// Frame or document window: IOleInPlaceFrame has everything of IOleInPlaceUIWindow.
class strict_frame final : public IOleInPlaceFrame
{
public:
    strict_frame(call_record& record, std::string name) : record_(record), name_(std::move(name)) {}

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override;
    ULONG STDMETHODCALLTYPE AddRef() override { return references.add(); }
    ULONG STDMETHODCALLTYPE Release() override { return references.drop(); }

    HRESULT STDMETHODCALLTYPE GetWindow(HWND* window) override;
    HRESULT STDMETHODCALLTYPE ContextSensitiveHelp(BOOL) override
    {
        return unexpected("ContextSensitiveHelp");
    }
    HRESULT STDMETHODCALLTYPE GetBorder(LPRECT) override { return unexpected("GetBorder"); }
    HRESULT STDMETHODCALLTYPE RequestBorderSpace(LPCBORDERWIDTHS) override
    {
        return unexpected("RequestBorderSpace");
    }
    HRESULT STDMETHODCALLTYPE SetBorderSpace(LPCBORDERWIDTHS widths) override;
    HRESULT STDMETHODCALLTYPE SetActiveObject(IOleInPlaceActiveObject* object, LPCOLESTR name) override;
    HRESULT STDMETHODCALLTYPE InsertMenus(HMENU, LPOLEMENUGROUPWIDTHS) override
    {
        return unexpected("InsertMenus");
    }
    HRESULT STDMETHODCALLTYPE SetMenu(HMENU, HOLEMENU, HWND) override { return unexpected("SetMenu"); }
    HRESULT STDMETHODCALLTYPE RemoveMenus(HMENU) override { return unexpected("RemoveMenus"); }
    HRESULT STDMETHODCALLTYPE SetStatusText(LPCOLESTR) override { return unexpected("SetStatusText"); }
    HRESULT STDMETHODCALLTYPE EnableModeless(BOOL) override { return unexpected("EnableModeless"); }
    HRESULT STDMETHODCALLTYPE TranslateAccelerator(LPMSG, WORD) override
    {
        return unexpected("TranslateAccelerator");
    }

    counted references;
    IOleInPlaceActiveObject* active = nullptr; // compared only, not held

private:
    HRESULT unexpected(const char* method);

    call_record& record_;
    std::string name_;
};

class strict_container final : public IOleClientSite,
                               public IOleInPlaceSite,
                               public IOleControlSite,
                               public IDispatch
{
public:
    strict_container();
    ~strict_container();
    strict_container(const strict_container&) = delete;
    strict_container& operator=(const strict_container&) = delete;

    // True when every reference but the test's own has been given back.
    bool released() const;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override;
    ULONG STDMETHODCALLTYPE AddRef() override { return references.add(); }
    ULONG STDMETHODCALLTYPE Release() override { return references.drop(); }

    // IOleClientSite
    HRESULT STDMETHODCALLTYPE SaveObject() override { return record.note("SaveObject"); }
    HRESULT STDMETHODCALLTYPE GetMoniker(DWORD, DWORD, IMoniker**) override
    {
        return unexpected("GetMoniker");
    }
    HRESULT STDMETHODCALLTYPE GetContainer(IOleContainer**) override { return unexpected("GetContainer"); }
    HRESULT STDMETHODCALLTYPE ShowObject() override { return record.note("ShowObject"); }
    HRESULT STDMETHODCALLTYPE OnShowWindow(BOOL show) override
    {
        return record.note(show ? "OnShowWindow(TRUE)" : "OnShowWindow(FALSE)");
    }
    HRESULT STDMETHODCALLTYPE RequestNewObjectLayout() override
    {
        return unexpected("RequestNewObjectLayout");
    }

    // IOleInPlaceSite
    HRESULT STDMETHODCALLTYPE GetWindow(HWND* window) override;
    HRESULT STDMETHODCALLTYPE ContextSensitiveHelp(BOOL) override
    {
        return unexpected("ContextSensitiveHelp");
    }
    HRESULT STDMETHODCALLTYPE CanInPlaceActivate() override { return record.note("CanInPlaceActivate"); }
    HRESULT STDMETHODCALLTYPE OnInPlaceActivate() override;
    HRESULT STDMETHODCALLTYPE OnUIActivate() override;
    HRESULT STDMETHODCALLTYPE GetWindowContext(IOleInPlaceFrame** frame_out,
                                               IOleInPlaceUIWindow** document_out, LPRECT position,
                                               LPRECT clip, LPOLEINPLACEFRAMEINFO info) override;
    HRESULT STDMETHODCALLTYPE Scroll(SIZE) override { return unexpected("Scroll"); }
    HRESULT STDMETHODCALLTYPE OnUIDeactivate(BOOL undoable) override;
    HRESULT STDMETHODCALLTYPE OnInPlaceDeactivate() override;
    HRESULT STDMETHODCALLTYPE DiscardUndoState() override { return unexpected("DiscardUndoState"); }
    HRESULT STDMETHODCALLTYPE DeactivateAndUndo() override { return unexpected("DeactivateAndUndo"); }
    HRESULT STDMETHODCALLTYPE OnPosRectChange(LPCRECT) override { return unexpected("OnPosRectChange"); }

    // IOleControlSite
    HRESULT STDMETHODCALLTYPE OnControlInfoChanged() override { return unexpected("OnControlInfoChanged"); }
    HRESULT STDMETHODCALLTYPE LockInPlaceActive(BOOL) override { return unexpected("LockInPlaceActive"); }
    HRESULT STDMETHODCALLTYPE GetExtendedControl(IDispatch**) override
    {
        return unexpected("GetExtendedControl");
    }
    HRESULT STDMETHODCALLTYPE TransformCoords(POINTL*, POINTF*, DWORD) override
    {
        return unexpected("TransformCoords");
    }
    HRESULT STDMETHODCALLTYPE TranslateAccelerator(MSG* message, DWORD modifiers) override;
    HRESULT STDMETHODCALLTYPE OnFocus(BOOL got) override
    {
        return record.note(got ? "OnFocus(TRUE)" : "OnFocus(FALSE)");
    }
    HRESULT STDMETHODCALLTYPE ShowPropertyFrame() override { return unexpected("ShowPropertyFrame"); }

    // IDispatch
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT*) override { return unexpected("GetTypeInfoCount"); }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override
    {
        return unexpected("GetTypeInfo");
    }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override
    {
        return unexpected("GetIDsOfNames");
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID iid, LCID, WORD flags, DISPPARAMS* parameters,
                                     VARIANT* result, EXCEPINFO*, UINT*) override;

    call_record record;
    counted references;
    strict_frame frame{record, "frame"};
    strict_frame document{record, "document"};
    HWND window = nullptr; // parent for the control, hidden
    RECT position{5, 6, 205, 156};
    RECT clip{0, 0, 400, 300};

    // How the host differs from a well-behaved one.
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
    HRESULT unexpected(const char* method);
};

} // namespace quill::test
