// A strict control for a hosting window: with the interfaces that a test gives it, the usual activation, and
// a class that CoCreateInstance finds.
#pragma once

#include "tests/support/fakes/call_log.h"
#include "tests/support/fakes/com_object.h"
#include "tests/support/scopes.h"

#include <windows.h>

#include <exdisp.h>
#include <mshtml.h>
#include <ocidl.h>
#include <unimplemented_interfaces.h>

#include <functional>

namespace quill::test {

// {0C2B7E58-41F6-4C1D-9A35-6D8E20F7B394}
inline constexpr CLSID CLSID_hosted = {
    0x0C2B7E58, 0x41F6, 0x4C1D, {0x9A, 0x35, 0x6D, 0x8E, 0x20, 0xF7, 0xB3, 0x94}};
inline constexpr wchar_t hosted_clsid_text[] = L"{0C2B7E58-41F6-4C1D-9A35-6D8E20F7B394}";
inline constexpr wchar_t hosted_progid[] = L"QuillFrameworkTest.Hosted";

class hosted_control final
    : public test_object<without_IDispatch<IDispatch>, without_IOleObject<IOleObject>,
                         without_IOleInPlaceObject<IOleInPlaceObject>, without_IViewObject<IViewObject>,
                         without_IPersistStreamInit<IPersistStreamInit>,
                         without_IObjectWithSite<IObjectWithSite>,
                         without_IConnectionPointContainer<IConnectionPointContainer>,
                         without_IConnectionPoint<IConnectionPoint>>
{
public:
    // IOleObject
    HRESULT STDMETHODCALLTYPE SetClientSite(IOleClientSite* new_site) override;
    HRESULT STDMETHODCALLTYPE SetHostNames(LPCOLESTR, LPCOLESTR) override
    {
        return record.note("SetHostNames");
    }
    HRESULT STDMETHODCALLTYPE Close(DWORD option) override;
    HRESULT STDMETHODCALLTYPE DoVerb(LONG verb, LPMSG message, IOleClientSite* active_site, LONG index,
                                     HWND parent, LPCRECT position) override;
    HRESULT STDMETHODCALLTYPE SetExtent(DWORD aspect, SIZEL* size) override;
    HRESULT STDMETHODCALLTYPE Advise(IAdviseSink* sink, DWORD* connection) override;
    HRESULT STDMETHODCALLTYPE Unadvise(DWORD connection) override;
    HRESULT STDMETHODCALLTYPE GetMiscStatus(DWORD aspect, DWORD* status) override;

    // IOleInPlaceObject
    HRESULT STDMETHODCALLTYPE InPlaceDeactivate() override;
    HRESULT STDMETHODCALLTYPE SetObjectRects(LPCRECT position, LPCRECT clip) override;

    // IViewObject
    HRESULT STDMETHODCALLTYPE SetAdvise(DWORD aspects, DWORD flags, IAdviseSink* sink) override;

    // IPersistStreamInit
    HRESULT STDMETHODCALLTYPE Load(IStream*) override { return record.note("Load"); }
    HRESULT STDMETHODCALLTYPE InitNew() override { return record.note("InitNew"); }

    // IObjectWithSite
    HRESULT STDMETHODCALLTYPE SetSite(IUnknown* new_site) override;

    // IConnectionPointContainer
    HRESULT STDMETHODCALLTYPE FindConnectionPoint(REFIID iid, IConnectionPoint** point) override;

    // IConnectionPoint
    HRESULT STDMETHODCALLTYPE Advise(IUnknown* sink, DWORD* cookie) override;

    // True if the control holds no reference to its host and all references to the control are released.
    bool released() const;

    call_log record{unlisted_calls::allow};
    DWORD misc_status = 0;
    bool only_dispatch = false;
    bool persists = true;
    bool stays_active_when_closed = false;
    HWND window = nullptr; // while active in place
    RECT position{};       // the last one set
    IOleClientSite* site = nullptr;
    IUnknown* object_site = nullptr;
    IAdviseSink* advised = nullptr;
    IAdviseSink* view_advised = nullptr;
    IUnknown* sink = nullptr;

private:
    IUnknown* find(REFIID iid) override;
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

// Registers CLSID_hosted and hosted_progid for this process in its scope; `create` creates the objects.
class hosted_class final : public test_object<IClassFactory>
{
public:
    explicit hosted_class(std::function<HRESULT(REFIID, void**)> create);
    ~hosted_class() override;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override;
    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID iid, void** out) override;
    HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }

    bool creates_nothing = false; // succeeds without an object
    bool is_nothing = false;      // succeeds without a class object

private:
    std::function<HRESULT(REFIID, void**)> create_;
    registry_key_scope progid_key_;
    DWORD registration_ = 0;
};

} // namespace quill::test
