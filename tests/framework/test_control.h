// A document control with every interface that the framework's templates implement, and a view of its own.
#pragma once

#include "atl/atlctl.h"

#include <windows.h>

#include <docobj.h>
#include <urlmon.h>

#include <functional>
#include <vector>

namespace quill::test {

// {6B1F0E52-93C7-4D0A-A6D4-27E85C1B9F60}
inline constexpr CLSID CLSID_test_control = {
    0x6B1F0E52, 0x93C7, 0x4D0A, {0xA6, 0xD4, 0x27, 0xE8, 0x5C, 0x1B, 0x9F, 0x60}};

struct __declspec(uuid("{2D7A4C11-6E0B-4F3C-8B57-91D0A3E6C284}")) ITestDual : public IDispatch
{
};

} // namespace quill::test

__CRT_UUID_DECL(quill::test::ITestDual, 0x2D7A4C11, 0x6E0B, 0x4F3C, 0x8B, 0x57, 0x91, 0xD0, 0xA3, 0xE6, 0xC2,
                0x84)

namespace quill::test {

class test_control : public ATL::CComObjectRootEx<ATL::CComSingleThreadModel>,
                     public ITestDual,
                     public ATL::CComControl<test_control>,
                     public ATL::IViewObjectExImpl<test_control>,
                     public ATL::IOleInPlaceObjectWindowlessImpl<test_control>,
                     public ATL::IOleInPlaceActiveObjectImpl<test_control>,
                     public ATL::IOleControlImpl<test_control>,
                     public ATL::IOleObjectImpl<test_control>,
                     public ATL::IQuickActivateImpl<test_control>,
                     public ATL::IPersistStorageImpl<test_control>,
                     public IPersistStreamInit,
                     public ATL::IDataObjectImpl<test_control>,
                     public IOleDocument,
                     public IOleDocumentView,
                     public IPersistFile,
                     public IPersistMoniker,
                     public IOleCommandTarget
{
public:
    test_control() { m_bWindowOnly = 1; }

    static const CLSID& GetObjectCLSID() { return CLSID_test_control; }

    DECLARE_WND_CLASS(L"QuillFrameworkTestControl")
    DECLARE_VIEW_STATUS(VIEWSTATUS_OPAQUE)
    DECLARE_PROTECT_FINAL_CONSTRUCT()

    BEGIN_COM_MAP(test_control)
    COM_INTERFACE_ENTRY(ITestDual)
    COM_INTERFACE_ENTRY2(IDispatch, ITestDual)
    COM_INTERFACE_ENTRY(IViewObjectEx)
    COM_INTERFACE_ENTRY(IViewObject2)
    COM_INTERFACE_ENTRY(IViewObject)
    COM_INTERFACE_ENTRY(IOleInPlaceObjectWindowless)
    COM_INTERFACE_ENTRY(IOleInPlaceObject)
    COM_INTERFACE_ENTRY2(IOleWindow, IOleInPlaceObjectWindowless)
    COM_INTERFACE_ENTRY(IOleInPlaceActiveObject)
    COM_INTERFACE_ENTRY(IOleControl)
    COM_INTERFACE_ENTRY(IOleObject)
    COM_INTERFACE_ENTRY(IQuickActivate)
    COM_INTERFACE_ENTRY(IPersistStorage)
    COM_INTERFACE_ENTRY(IPersistStreamInit)
    COM_INTERFACE_ENTRY(IDataObject)
    COM_INTERFACE_ENTRY(IOleDocument)
    COM_INTERFACE_ENTRY(IOleDocumentView)
    COM_INTERFACE_ENTRY(IPersistFile)
    COM_INTERFACE_ENTRY(IPersistMoniker)
    COM_INTERFACE_ENTRY(IOleCommandTarget)
    END_COM_MAP()

    BEGIN_MSG_MAP(test_control)
    MESSAGE_HANDLER(WM_CREATE, OnCreate)
    MESSAGE_HANDLER(WM_APP, OnApp)
    CHAIN_MSG_MAP(ATL::CComControl<test_control>)
    END_MSG_MAP()

    // IDispatch
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*,
                                     UINT*) override
    {
        return E_NOTIMPL;
    }

    // IPersistStreamInit, IPersistStorage, IPersistFile, IPersistMoniker
    HRESULT STDMETHODCALLTYPE GetClassID(CLSID* id) override
    {
        return ATL::IPersistStorageImpl<test_control>::GetClassID(id);
    }
    HRESULT STDMETHODCALLTYPE IsDirty() override { return GetDirty() ? S_OK : S_FALSE; }
    HRESULT STDMETHODCALLTYPE Load(IStream* stream) override
    {
        ULONG read = 0;
        return stream->Read(&stored, sizeof stored, &read);
    }
    HRESULT STDMETHODCALLTYPE Save(IStream* stream, BOOL) override
    {
        return stream->Write(&stored, sizeof stored, nullptr);
    }
    HRESULT STDMETHODCALLTYPE GetSizeMax(ULARGE_INTEGER*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE InitNew() override
    {
        stored = 0;
        return S_OK;
    }
    using ATL::IPersistStorageImpl<test_control>::InitNew;
    using ATL::IPersistStorageImpl<test_control>::Load;
    using ATL::IPersistStorageImpl<test_control>::Save;
    using ATL::IPersistStorageImpl<test_control>::SaveCompleted;
    HRESULT STDMETHODCALLTYPE Load(LPCOLESTR, DWORD) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE Save(LPCOLESTR, BOOL) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE SaveCompleted(LPCOLESTR) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE GetCurFile(LPOLESTR*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Load(BOOL, IMoniker*, LPBC, DWORD) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE Save(IMoniker*, LPBC, BOOL) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE SaveCompleted(IMoniker*, LPBC) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE GetCurMoniker(IMoniker**) override { return E_NOTIMPL; }

    // IOleDocument
    HRESULT STDMETHODCALLTYPE CreateView(IOleInPlaceSite* site, IStream*, DWORD,
                                         IOleDocumentView** view) override
    {
        m_spInPlaceSite = site;
        *view = this;
        AddRef();
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetDocMiscStatus(DWORD* status) override
    {
        *status = DOCMISC_NOFILESUPPORT;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE EnumViews(IEnumOleDocumentViews**, IOleDocumentView**) override
    {
        return E_NOTIMPL;
    }

    // IOleDocumentView
    HRESULT STDMETHODCALLTYPE SetInPlaceSite(IOleInPlaceSite* site) override
    {
        m_spInPlaceSite = site;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetInPlaceSite(IOleInPlaceSite** site) override
    {
        return m_spInPlaceSite.CopyTo(site);
    }
    HRESULT STDMETHODCALLTYPE GetDocument(IUnknown**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetRect(LPRECT rect) override { return SetObjectRects(rect, rect); }
    HRESULT STDMETHODCALLTYPE GetRect(LPRECT rect) override
    {
        *rect = m_rcPos;
        return S_OK;
    }
    using ATL::IViewObjectExImpl<test_control>::GetRect;
    HRESULT STDMETHODCALLTYPE SetRectComplex(LPRECT, LPRECT, LPRECT, LPRECT) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE Show(BOOL show) override
    {
        return show ? InPlaceActivate(OLEIVERB_INPLACEACTIVATE) : S_OK;
    }
    HRESULT STDMETHODCALLTYPE UIActivate(BOOL activate) override
    {
        return activate ? InPlaceActivate(OLEIVERB_UIACTIVATE) : UIDeactivate();
    }
    HRESULT STDMETHODCALLTYPE Open() override { return S_OK; }
    HRESULT STDMETHODCALLTYPE CloseView(DWORD) override { return InPlaceDeactivate(); }
    HRESULT STDMETHODCALLTYPE SaveViewState(LPSTREAM) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE ApplyViewState(LPSTREAM) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE Clone(IOleInPlaceSite*, IOleDocumentView**) override { return E_NOTIMPL; }

    // IOleCommandTarget
    HRESULT STDMETHODCALLTYPE QueryStatus(const GUID*, ULONG, OLECMD*, OLECMDTEXT*) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE Exec(const GUID*, DWORD, DWORD, VARIANT*, VARIANT*) override
    {
        return OLECMDERR_E_NOTSUPPORTED;
    }

    HRESULT OnDraw(ATL::ATL_DRAWINFO& di) override
    {
        drawn.push_back(*di.prcBounds);
        return S_OK;
    }
    void FinalRelease() noexcept
    {
        if (m_hWnd)
            DestroyWindow();
        if (on_end)
            on_end();
    }

    std::function<void()> on_app;
    std::function<void()> on_end;
    int stored = 0;
    bool refuse_window = false;
    std::vector<RECTL> drawn;
    std::vector<RECT> created; // position of each window in WM_CREATE

private:
    LRESULT OnCreate(UINT, WPARAM, LPARAM lParam, BOOL&)
    {
        const auto& creation = *reinterpret_cast<const CREATESTRUCTW*>(lParam);
        created.push_back({creation.x, creation.y, creation.x + creation.cx, creation.y + creation.cy});
        return refuse_window ? -1 : 0;
    }
    LRESULT OnApp(UINT, WPARAM, LPARAM, BOOL&)
    {
        on_app();
        // The object is used once more: it must exist until its handler returns.
        return stored + 1;
    }
};

} // namespace quill::test
