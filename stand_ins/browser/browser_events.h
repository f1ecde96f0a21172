// The sink for the WebBrowser control's events, which calls a plain C++ interface.
#pragma once

#include <windows.h>

#include <atlbase.h>
#include <atlcom.h>
#include <exdisp.h>

#include <string>

namespace quill {

// Receives the events. Called on the control's thread, inside the control's calls.
class browser_events_owner
{
public:
    virtual void on_title(const std::wstring& title) = 0;
    virtual void on_status(const std::wstring& text) = 0;
    virtual void on_navigate(const std::wstring& address) = 0;
    virtual void on_failure(const std::wstring& address, long status) = 0;
    // A link requests a new window.
    virtual void on_new_window(const std::wstring& address) = 0;
    // Whether the command "back" (otherwise "forward") is enabled.
    virtual void on_command_state(bool back, bool enabled) = 0;

protected:
    ~browser_events_owner() = default;
};

class ATL_NO_VTABLE browser_events : public CComObjectRootEx<CComSingleThreadModel>, public IDispatch
{
public:
    BEGIN_COM_MAP(browser_events)
    COM_INTERFACE_ENTRY(IDispatch)
    COM_INTERFACE_ENTRY_IID(DIID_DWebBrowserEvents2, IDispatch)
    END_COM_MAP()

    ~browser_events() { unadvise(); }

    HRESULT advise(IUnknown* browser, browser_events_owner& owner);
    void unadvise();

    // IDispatch
    STDMETHOD(GetTypeInfoCount)(UINT* count) override;
    STDMETHOD(GetTypeInfo)(UINT index, LCID locale, ITypeInfo** info) override;
    STDMETHOD(GetIDsOfNames)(REFIID reserved, LPOLESTR* names, UINT count, LCID locale, DISPID* ids) override;
    STDMETHOD(Invoke)(DISPID id, REFIID reserved, LCID locale, WORD flags, DISPPARAMS* parameters,
                      VARIANT* result, EXCEPINFO* exception, UINT* bad_argument) override;

private:
    void dispatch(DISPID id, const DISPPARAMS& parameters);

    browser_events_owner* owner_ = nullptr;
    CComPtr<IConnectionPoint> point_;
    DWORD cookie_ = 0;
};

} // namespace quill
