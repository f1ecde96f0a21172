#include "tests/soak/trivial_document.h"

#include "tests/support/adopt.h"
#include "tests/support/fakes/com_object.h"

#include <windows.h>

#include <docobj.h>
#include <gtest/gtest.h>
#include <ole2.h>
#include <urlmon.h>
#include <wrl/client.h>

#include <utility>

namespace quill::soak {
namespace {

using Microsoft::WRL::ComPtr;

constexpr CLSID class_id = {0x3f0c5d11, 0x8e42, 0x4c7b, {0x9a, 0x60, 0x5b, 0x1d, 0xe7, 0x24, 0xc8, 0x0f}};
constexpr wchar_t class_text[] = L"{3F0C5D11-8E42-4C7B-9A60-5B1DE724C80F}";
constexpr wchar_t type_key[] =
    L"SOFTWARE\\Classes\\MIME\\Database\\Content Type\\application/x-quill-trivial";

long live_documents = 0;
std::size_t shown_documents = 0;
std::wstring last_shown_address;
trivial_documents::work work_of_each;

class document final
    : public test::heap_object<IPersistMoniker, IOleObject, IOleDocument, IOleDocumentView, IOleInPlaceObject>
{
public:
    document() { ++live_documents; }
    ~document() override
    {
        hide();
        --live_documents;
    }

    STDMETHODIMP Load(BOOL, IMoniker* moniker, IBindCtx* context, DWORD) override
    {
        wchar_t* name = nullptr;
        if (SUCCEEDED(moniker->GetDisplayName(context, nullptr, &name)) && name)
            address_ = name;
        CoTaskMemFree(name);
        return S_OK;
    }
    STDMETHODIMP GetClassID(CLSID* id) override
    {
        *id = class_id;
        return S_OK;
    }

    STDMETHODIMP SetClientSite(IOleClientSite* site) override
    {
        client_site_ = site;
        return S_OK;
    }
    STDMETHODIMP GetClientSite(IOleClientSite** site) override { return client_site_.CopyTo(site); }
    STDMETHODIMP GetUserClassID(CLSID* id) override { return GetClassID(id); }
    STDMETHODIMP Close(DWORD) override { return S_OK; }
    STDMETHODIMP DoVerb(LONG, LPMSG, IOleClientSite*, LONG, HWND, LPCRECT) override
    {
        ComPtr<IOleDocumentSite> site;
        if (!client_site_ || FAILED(client_site_.As(&site)))
            return E_FAIL;
        return site->ActivateMe(nullptr);
    }

    STDMETHODIMP CreateView(IOleInPlaceSite* site, IStream*, DWORD, IOleDocumentView** view) override
    {
        SetInPlaceSite(site);
        *view = this;
        AddRef();
        return S_OK;
    }
    STDMETHODIMP GetDocMiscStatus(DWORD* status) override
    {
        *status = 0;
        return S_OK;
    }

    STDMETHODIMP SetInPlaceSite(IOleInPlaceSite* site) override
    {
        in_place_site_ = site;
        return S_OK;
    }
    STDMETHODIMP GetInPlaceSite(IOleInPlaceSite** site) override { return in_place_site_.CopyTo(site); }
    STDMETHODIMP SetRect(LPRECT) override { return S_OK; }
    STDMETHODIMP UIActivate(BOOL) override { return S_OK; }
    STDMETHODIMP Show(BOOL show) override
    {
        HWND parent = nullptr;
        if (!show)
            hide();
        else if (!window_ && in_place_site_ && SUCCEEDED(in_place_site_->GetWindow(&parent))) {
            window_ = CreateWindowExW(0, L"STATIC", L"", WS_CHILD | WS_VISIBLE, 0, 0, 100, 100, parent,
                                      nullptr, nullptr, nullptr);
            if (work_of_each)
                work_ = work_of_each(address_);
            ++shown_documents;
            last_shown_address = address_;
        }
        return S_OK;
    }
    STDMETHODIMP CloseView(DWORD) override
    {
        hide();
        in_place_site_.Reset();
        return S_OK;
    }

    STDMETHODIMP GetWindow(HWND* window) override
    {
        *window = window_;
        return window_ ? S_OK : E_FAIL;
    }
    STDMETHODIMP InPlaceDeactivate() override
    {
        hide();
        return S_OK;
    }
    STDMETHODIMP UIDeactivate() override { return S_OK; }

    // Methods that the engine does not need.
    STDMETHODIMP IsDirty() override { return S_FALSE; }
    STDMETHODIMP Save(IMoniker*, IBindCtx*, BOOL) override { return E_NOTIMPL; }
    STDMETHODIMP SaveCompleted(IMoniker*, IBindCtx*) override { return E_NOTIMPL; }
    STDMETHODIMP GetCurMoniker(IMoniker**) override { return E_NOTIMPL; }
    STDMETHODIMP SetHostNames(LPCOLESTR, LPCOLESTR) override { return E_NOTIMPL; }
    STDMETHODIMP SetMoniker(DWORD, IMoniker*) override { return E_NOTIMPL; }
    STDMETHODIMP GetMoniker(DWORD, DWORD, IMoniker**) override { return E_NOTIMPL; }
    STDMETHODIMP InitFromData(IDataObject*, BOOL, DWORD) override { return E_NOTIMPL; }
    STDMETHODIMP GetClipboardData(DWORD, IDataObject**) override { return E_NOTIMPL; }
    STDMETHODIMP EnumVerbs(IEnumOLEVERB**) override { return E_NOTIMPL; }
    STDMETHODIMP Update() override { return E_NOTIMPL; }
    STDMETHODIMP IsUpToDate() override { return E_NOTIMPL; }
    STDMETHODIMP GetUserType(DWORD, LPOLESTR*) override { return E_NOTIMPL; }
    STDMETHODIMP SetExtent(DWORD, SIZEL*) override { return E_NOTIMPL; }
    STDMETHODIMP GetExtent(DWORD, SIZEL*) override { return E_NOTIMPL; }
    STDMETHODIMP Advise(IAdviseSink*, DWORD*) override { return E_NOTIMPL; }
    STDMETHODIMP Unadvise(DWORD) override { return E_NOTIMPL; }
    STDMETHODIMP EnumAdvise(IEnumSTATDATA**) override { return E_NOTIMPL; }
    STDMETHODIMP GetMiscStatus(DWORD, DWORD*) override { return E_NOTIMPL; }
    STDMETHODIMP SetColorScheme(LOGPALETTE*) override { return E_NOTIMPL; }
    STDMETHODIMP EnumViews(IEnumOleDocumentViews**, IOleDocumentView**) override { return E_NOTIMPL; }
    STDMETHODIMP GetDocument(IUnknown**) override { return E_NOTIMPL; }
    STDMETHODIMP GetRect(LPRECT) override { return E_NOTIMPL; }
    STDMETHODIMP SetRectComplex(LPRECT, LPRECT, LPRECT, LPRECT) override { return E_NOTIMPL; }
    STDMETHODIMP Open() override { return E_NOTIMPL; }
    STDMETHODIMP SaveViewState(IStream*) override { return E_NOTIMPL; }
    STDMETHODIMP ApplyViewState(IStream*) override { return E_NOTIMPL; }
    STDMETHODIMP Clone(IOleInPlaceSite*, IOleDocumentView**) override { return E_NOTIMPL; }
    STDMETHODIMP ContextSensitiveHelp(BOOL) override { return E_NOTIMPL; }
    STDMETHODIMP SetObjectRects(LPCRECT, LPCRECT) override { return S_OK; }
    STDMETHODIMP ReactivateAndUndo() override { return E_NOTIMPL; }

private:
    IUnknown* find(REFIID iid) override
    {
        if (iid == IID_IPersist)
            return unknown();
        return iid == IID_IOleWindow ? static_cast<IOleInPlaceObject*>(this) : heap_object::find(iid);
    }

    void hide()
    {
        work_.reset();
        if (const HWND window = std::exchange(window_, nullptr); window && IsWindow(window))
            DestroyWindow(window);
    }

    ComPtr<IOleClientSite> client_site_;
    ComPtr<IOleInPlaceSite> in_place_site_;
    HWND window_ = nullptr;
    std::wstring address_;
    std::shared_ptr<void> work_;
};

class document_class final : public test::heap_object<IClassFactory>
{
public:
    STDMETHODIMP CreateInstance(IUnknown*, REFIID iid, void** out) override
    {
        return test::adopt<IPersistMoniker>(new document)->QueryInterface(iid, out);
    }
    STDMETHODIMP LockServer(BOOL) override { return S_OK; }
};

} // namespace

trivial_documents::trivial_documents()
{
    EXPECT_EQ(RegSetKeyValueW(HKEY_LOCAL_MACHINE, type_key, L"CLSID", REG_SZ, class_text, sizeof class_text),
              ERROR_SUCCESS);
    const auto factory = test::adopt<IClassFactory>(new document_class);
    EXPECT_EQ(
        CoRegisterClassObject(class_id, factory.Get(), CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE, &cookie_),
        S_OK);
}

trivial_documents::~trivial_documents()
{
    work_of_each = nullptr;
    CoRevokeClassObject(cookie_);
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, type_key);
}

void trivial_documents::give_work(work each)
{
    work_of_each = std::move(each);
}

std::size_t trivial_documents::shown() const
{
    return shown_documents;
}

const std::wstring& trivial_documents::last_shown() const
{
    return last_shown_address;
}

long trivial_documents::living() const
{
    return live_documents;
}

} // namespace quill::soak
