// A control for a hosting window, strict about what it is called for: as many interfaces as a test gives it,
// its activation as a control does it, and a class that CoCreateInstance finds.
#pragma once

#include "tests/framework/call_record.h"
#include "tests/support/scopes.h"

#include <windows.h>

#include <ocidl.h>
#include <ole2.h>
#include <oleidl.h>

#include <functional>

namespace quill::test {

// {0C2B7E58-41F6-4C1D-9A35-6D8E20F7B394}
inline constexpr CLSID CLSID_hosted = {
    0x0C2B7E58, 0x41F6, 0x4C1D, {0x9A, 0x35, 0x6D, 0x8E, 0x20, 0xF7, 0xB3, 0x94}};
inline constexpr wchar_t hosted_clsid_text[] = L"{0C2B7E58-41F6-4C1D-9A35-6D8E20F7B394}";
inline constexpr wchar_t hosted_progid[] = L"QuillFrameworkTest.Hosted";

class hosted_control final : public IOleObject,
                             public IOleInPlaceObject,
                             public IViewObject,
                             public IPersistStreamInit,
                             public IObjectWithSite,
                             public IConnectionPointContainer,
                             public IConnectionPoint,
                             public IDispatch
{
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override;
    ULONG STDMETHODCALLTYPE AddRef() override { return references.add(); }
    ULONG STDMETHODCALLTYPE Release() override { return references.drop(); }

    // IOleObject
    HRESULT STDMETHODCALLTYPE SetClientSite(IOleClientSite* new_site) override;
    HRESULT STDMETHODCALLTYPE GetClientSite(IOleClientSite**) override { return unexpected("GetClientSite"); }
    HRESULT STDMETHODCALLTYPE SetHostNames(LPCOLESTR, LPCOLESTR) override
    {
        return record.note("SetHostNames");
    }
    HRESULT STDMETHODCALLTYPE Close(DWORD option) override;
    HRESULT STDMETHODCALLTYPE SetMoniker(DWORD, IMoniker*) override { return unexpected("SetMoniker"); }
    HRESULT STDMETHODCALLTYPE GetMoniker(DWORD, DWORD, IMoniker**) override
    {
        return unexpected("GetMoniker");
    }
    HRESULT STDMETHODCALLTYPE InitFromData(IDataObject*, BOOL, DWORD) override
    {
        return unexpected("InitFromData");
    }
    HRESULT STDMETHODCALLTYPE GetClipboardData(DWORD, IDataObject**) override
    {
        return unexpected("GetClipboardData");
    }
    HRESULT STDMETHODCALLTYPE DoVerb(LONG verb, LPMSG message, IOleClientSite* active_site, LONG index,
                                     HWND parent, LPCRECT position) override;
    HRESULT STDMETHODCALLTYPE EnumVerbs(IEnumOLEVERB**) override { return unexpected("EnumVerbs"); }
    HRESULT STDMETHODCALLTYPE Update() override { return unexpected("Update"); }
    HRESULT STDMETHODCALLTYPE IsUpToDate() override { return unexpected("IsUpToDate"); }
    HRESULT STDMETHODCALLTYPE GetUserClassID(CLSID*) override { return unexpected("GetUserClassID"); }
    HRESULT STDMETHODCALLTYPE GetUserType(DWORD, LPOLESTR*) override { return unexpected("GetUserType"); }
    HRESULT STDMETHODCALLTYPE SetExtent(DWORD aspect, SIZEL* size) override;
    HRESULT STDMETHODCALLTYPE GetExtent(DWORD, SIZEL*) override { return unexpected("GetExtent"); }
    HRESULT STDMETHODCALLTYPE Advise(IAdviseSink* sink, DWORD* connection) override;
    HRESULT STDMETHODCALLTYPE Unadvise(DWORD connection) override;
    HRESULT STDMETHODCALLTYPE EnumAdvise(IEnumSTATDATA**) override { return unexpected("EnumAdvise"); }
    HRESULT STDMETHODCALLTYPE GetMiscStatus(DWORD aspect, DWORD* status) override;
    HRESULT STDMETHODCALLTYPE SetColorScheme(LOGPALETTE*) override { return unexpected("SetColorScheme"); }

    // IOleInPlaceObject
    HRESULT STDMETHODCALLTYPE GetWindow(HWND*) override { return unexpected("GetWindow"); }
    HRESULT STDMETHODCALLTYPE ContextSensitiveHelp(BOOL) override
    {
        return unexpected("ContextSensitiveHelp");
    }
    HRESULT STDMETHODCALLTYPE InPlaceDeactivate() override;
    HRESULT STDMETHODCALLTYPE UIDeactivate() override { return unexpected("UIDeactivate"); }
    HRESULT STDMETHODCALLTYPE SetObjectRects(LPCRECT position, LPCRECT clip) override;
    HRESULT STDMETHODCALLTYPE ReactivateAndUndo() override { return unexpected("ReactivateAndUndo"); }

    // IViewObject
    HRESULT STDMETHODCALLTYPE Draw(DWORD, LONG, void*, DVTARGETDEVICE*, HDC, HDC, LPCRECTL, LPCRECTL,
                                   BOOL(__stdcall*)(ULONG_PTR), ULONG_PTR) override
    {
        return unexpected("Draw");
    }
    HRESULT STDMETHODCALLTYPE GetColorSet(DWORD, LONG, void*, DVTARGETDEVICE*, HDC, LOGPALETTE**) override
    {
        return unexpected("GetColorSet");
    }
    HRESULT STDMETHODCALLTYPE Freeze(DWORD, LONG, void*, DWORD*) override { return unexpected("Freeze"); }
    HRESULT STDMETHODCALLTYPE Unfreeze(DWORD) override { return unexpected("Unfreeze"); }
    HRESULT STDMETHODCALLTYPE SetAdvise(DWORD aspects, DWORD flags, IAdviseSink* sink) override;
    HRESULT STDMETHODCALLTYPE GetAdvise(DWORD*, DWORD*, IAdviseSink**) override
    {
        return unexpected("GetAdvise");
    }

    // IPersistStreamInit
    HRESULT STDMETHODCALLTYPE GetClassID(CLSID*) override { return unexpected("GetClassID"); }
    HRESULT STDMETHODCALLTYPE IsDirty() override { return unexpected("IsDirty"); }
    HRESULT STDMETHODCALLTYPE Load(IStream*) override { return record.note("Load"); }
    HRESULT STDMETHODCALLTYPE Save(IStream*, BOOL) override { return unexpected("Save"); }
    HRESULT STDMETHODCALLTYPE GetSizeMax(ULARGE_INTEGER*) override { return unexpected("GetSizeMax"); }
    HRESULT STDMETHODCALLTYPE InitNew() override { return record.note("InitNew"); }

    // IObjectWithSite
    HRESULT STDMETHODCALLTYPE SetSite(IUnknown* new_site) override;
    HRESULT STDMETHODCALLTYPE GetSite(REFIID, void**) override { return unexpected("GetSite"); }

    // IConnectionPointContainer
    HRESULT STDMETHODCALLTYPE EnumConnectionPoints(IEnumConnectionPoints**) override
    {
        return unexpected("EnumConnectionPoints");
    }
    HRESULT STDMETHODCALLTYPE FindConnectionPoint(REFIID iid, IConnectionPoint** point) override;

    // IConnectionPoint
    HRESULT STDMETHODCALLTYPE GetConnectionInterface(IID*) override
    {
        return unexpected("GetConnectionInterface");
    }
    HRESULT STDMETHODCALLTYPE GetConnectionPointContainer(IConnectionPointContainer**) override
    {
        return unexpected("GetConnectionPointContainer");
    }
    HRESULT STDMETHODCALLTYPE Advise(IUnknown* sink, DWORD* cookie) override;
    HRESULT STDMETHODCALLTYPE EnumConnections(IEnumConnections**) override
    {
        return unexpected("EnumConnections");
    }

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
    HRESULT STDMETHODCALLTYPE Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*,
                                     UINT*) override
    {
        return unexpected("Invoke");
    }

    // True when the control holds nothing of its host and nobody holds the control.
    bool released() const;

    call_record record;
    counted references;
    DWORD misc_status = 0;
    bool only_dispatch = false;
    bool persists = true;
    bool stays_active_when_closed = false;
    HWND window = nullptr; // while active in place
    RECT position{};       // last one told
    IOleClientSite* site = nullptr;
    IUnknown* object_site = nullptr;
    IAdviseSink* advised = nullptr;
    IAdviseSink* view_advised = nullptr;
    IUnknown* sink = nullptr;

private:
    static HRESULT unexpected(const char* method);
    HRESULT activate(IOleClientSite* active_site, const RECT& place);

    template <class T>
    static void replace(T*& member, T* value)
    {
        if (value)
            value->AddRef();
        if (T* const old = std::exchange(member, value))
            old->Release();
    }
};

// Makes CLSID_hosted and hosted_progid known to this process for its lifetime; `create` makes the objects.
class hosted_class final : public IClassFactory
{
public:
    explicit hosted_class(std::function<HRESULT(REFIID, void**)> create);
    ~hosted_class();
    hosted_class(const hosted_class&) = delete;
    hosted_class& operator=(const hosted_class&) = delete;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override;
    ULONG STDMETHODCALLTYPE AddRef() override { return references_.add(); }
    ULONG STDMETHODCALLTYPE Release() override { return references_.drop(); }
    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID iid, void** out) override;
    HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }

    bool creates_nothing = false; // succeeds without an object
    bool is_nothing = false;      // succeeds without a class object

private:
    std::function<HRESULT(REFIID, void**)> create_;
    counted references_;
    registry_key_scope progid_key_;
    DWORD registration_ = 0;
};

} // namespace quill::test
