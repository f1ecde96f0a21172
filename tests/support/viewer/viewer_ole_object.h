// The OLE control half of the recording viewer: the interfaces of a full control besides automation.
#pragma once

#include <windows.h>

#include <oleidl.h>

namespace quill::test {

// Part of the viewer's identity: IUnknown is that of the owner. Its window is a child of the window of the
// site, from in-place activation to Close or the loss of the site.
class viewer_ole_object final : public IOleObject, public IOleInPlaceObject
{
public:
    explicit viewer_ole_object(IUnknown& owner) : owner_(owner) {}
    viewer_ole_object(const viewer_ole_object&) = delete;
    viewer_ole_object& operator=(const viewer_ole_object&) = delete;
    ~viewer_ole_object();

    HWND window() const { return window_; }
    IUnknown* find(REFIID iid);

    STDMETHODIMP QueryInterface(REFIID iid, void** out) override { return owner_.QueryInterface(iid, out); }
    STDMETHODIMP_(ULONG) AddRef() override { return owner_.AddRef(); }
    STDMETHODIMP_(ULONG) Release() override { return owner_.Release(); }

    // IOleObject
    STDMETHODIMP SetClientSite(IOleClientSite* site) override;
    STDMETHODIMP GetClientSite(IOleClientSite** out) override;
    STDMETHODIMP SetHostNames(LPCOLESTR, LPCOLESTR) override { return S_OK; }
    STDMETHODIMP Close(DWORD) override;
    STDMETHODIMP SetMoniker(DWORD, IMoniker*) override { return E_NOTIMPL; }
    STDMETHODIMP GetMoniker(DWORD, DWORD, IMoniker** out) override;
    STDMETHODIMP InitFromData(IDataObject*, BOOL, DWORD) override { return E_NOTIMPL; }
    STDMETHODIMP GetClipboardData(DWORD, IDataObject** out) override;
    STDMETHODIMP DoVerb(LONG verb, LPMSG, IOleClientSite*, LONG, HWND parent, LPCRECT position) override;
    STDMETHODIMP EnumVerbs(IEnumOLEVERB** out) override;
    STDMETHODIMP Update() override { return S_OK; }
    STDMETHODIMP IsUpToDate() override { return S_OK; }
    STDMETHODIMP GetUserClassID(CLSID* out) override;
    STDMETHODIMP GetUserType(DWORD, LPOLESTR* out) override;
    STDMETHODIMP SetExtent(DWORD, SIZEL* size) override;
    STDMETHODIMP GetExtent(DWORD, SIZEL* size) override;
    STDMETHODIMP Advise(IAdviseSink*, DWORD* connection) override;
    STDMETHODIMP Unadvise(DWORD) override { return S_OK; }
    STDMETHODIMP EnumAdvise(IEnumSTATDATA** out) override;
    STDMETHODIMP GetMiscStatus(DWORD, DWORD* status) override;
    STDMETHODIMP SetColorScheme(LOGPALETTE*) override { return E_NOTIMPL; }

    // IOleInPlaceObject
    STDMETHODIMP GetWindow(HWND* out) override;
    STDMETHODIMP ContextSensitiveHelp(BOOL) override { return E_NOTIMPL; }
    STDMETHODIMP InPlaceDeactivate() override;
    STDMETHODIMP UIDeactivate() override { return S_OK; }
    STDMETHODIMP SetObjectRects(LPCRECT position, LPCRECT clip) override;
    STDMETHODIMP ReactivateAndUndo() override { return E_NOTIMPL; }

private:
    HRESULT activate(const RECT& position);

    IUnknown& owner_;
    IOleClientSite* site_ = nullptr;
    IOleInPlaceSite* in_place_site_ = nullptr;
    HWND window_ = nullptr;
    SIZEL extent_{2540, 2540};
};

} // namespace quill::test
