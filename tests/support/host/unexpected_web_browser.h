// Every method of the browser's automation object, each of them unexpected: a fake overrides what it serves.
#pragma once

#include "tests/support/host/fake_object.h"

#include <exdisp.h>

namespace quill::test {

class unexpected_web_browser : public fake_object<IWebBrowser2>
{
public:
    using fake_object::fake_object;

    STDMETHODIMP GetTypeInfoCount(UINT*) override { return unexpected("GetTypeInfoCount"); }
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return unexpected("GetTypeInfo"); }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override
    {
        return unexpected("GetIDsOfNames");
    }
    STDMETHODIMP Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*) override
    {
        return unexpected("Invoke");
    }
    STDMETHODIMP GoBack() override { return unexpected("GoBack"); }
    STDMETHODIMP GoForward() override { return unexpected("GoForward"); }
    STDMETHODIMP GoHome() override { return unexpected("GoHome"); }
    STDMETHODIMP GoSearch() override { return unexpected("GoSearch"); }
    STDMETHODIMP Navigate(BSTR, VARIANT*, VARIANT*, VARIANT*, VARIANT*) override
    {
        return unexpected("Navigate");
    }
    STDMETHODIMP Refresh() override { return unexpected("Refresh"); }
    STDMETHODIMP Refresh2(VARIANT*) override { return unexpected("Refresh2"); }
    STDMETHODIMP Stop() override { return unexpected("Stop"); }
    STDMETHODIMP get_Application(IDispatch**) override { return unexpected("get_Application"); }
    STDMETHODIMP get_Parent(IDispatch**) override { return unexpected("get_Parent"); }
    STDMETHODIMP get_Container(IDispatch**) override { return unexpected("get_Container"); }
    STDMETHODIMP get_Document(IDispatch**) override { return unexpected("get_Document"); }
    STDMETHODIMP get_TopLevelContainer(VARIANT_BOOL*) override { return unexpected("get_TopLevelContainer"); }
    STDMETHODIMP get_Type(BSTR*) override { return unexpected("get_Type"); }
    STDMETHODIMP get_Left(LONG*) override { return unexpected("get_Left"); }
    STDMETHODIMP put_Left(LONG) override { return unexpected("put_Left"); }
    STDMETHODIMP get_Top(LONG*) override { return unexpected("get_Top"); }
    STDMETHODIMP put_Top(LONG) override { return unexpected("put_Top"); }
    STDMETHODIMP get_Width(LONG*) override { return unexpected("get_Width"); }
    STDMETHODIMP put_Width(LONG) override { return unexpected("put_Width"); }
    STDMETHODIMP get_Height(LONG*) override { return unexpected("get_Height"); }
    STDMETHODIMP put_Height(LONG) override { return unexpected("put_Height"); }
    STDMETHODIMP get_LocationName(BSTR*) override { return unexpected("get_LocationName"); }
    STDMETHODIMP get_LocationURL(BSTR*) override { return unexpected("get_LocationURL"); }
    STDMETHODIMP get_Busy(VARIANT_BOOL*) override { return unexpected("get_Busy"); }
    STDMETHODIMP Quit() override { return unexpected("Quit"); }
    STDMETHODIMP ClientToWindow(int*, int*) override { return unexpected("ClientToWindow"); }
    STDMETHODIMP PutProperty(BSTR, VARIANT) override { return unexpected("PutProperty"); }
    STDMETHODIMP GetProperty(BSTR, VARIANT*) override { return unexpected("GetProperty"); }
    STDMETHODIMP get_Name(BSTR*) override { return unexpected("get_Name"); }
    STDMETHODIMP get_HWND(SHANDLE_PTR*) override { return unexpected("get_HWND"); }
    STDMETHODIMP get_FullName(BSTR*) override { return unexpected("get_FullName"); }
    STDMETHODIMP get_Path(BSTR*) override { return unexpected("get_Path"); }
    STDMETHODIMP get_Visible(VARIANT_BOOL*) override { return unexpected("get_Visible"); }
    STDMETHODIMP put_Visible(VARIANT_BOOL) override { return unexpected("put_Visible"); }
    STDMETHODIMP get_StatusBar(VARIANT_BOOL*) override { return unexpected("get_StatusBar"); }
    STDMETHODIMP put_StatusBar(VARIANT_BOOL) override { return unexpected("put_StatusBar"); }
    STDMETHODIMP get_StatusText(BSTR*) override { return unexpected("get_StatusText"); }
    STDMETHODIMP put_StatusText(BSTR) override { return unexpected("put_StatusText"); }
    STDMETHODIMP get_ToolBar(int*) override { return unexpected("get_ToolBar"); }
    STDMETHODIMP put_ToolBar(int) override { return unexpected("put_ToolBar"); }
    STDMETHODIMP get_MenuBar(VARIANT_BOOL*) override { return unexpected("get_MenuBar"); }
    STDMETHODIMP put_MenuBar(VARIANT_BOOL) override { return unexpected("put_MenuBar"); }
    STDMETHODIMP get_FullScreen(VARIANT_BOOL*) override { return unexpected("get_FullScreen"); }
    STDMETHODIMP put_FullScreen(VARIANT_BOOL) override { return unexpected("put_FullScreen"); }
    STDMETHODIMP Navigate2(VARIANT*, VARIANT*, VARIANT*, VARIANT*, VARIANT*) override
    {
        return unexpected("Navigate2");
    }
    STDMETHODIMP QueryStatusWB(OLECMDID, OLECMDF*) override { return unexpected("QueryStatusWB"); }
    STDMETHODIMP ExecWB(OLECMDID, OLECMDEXECOPT, VARIANT*, VARIANT*) override { return unexpected("ExecWB"); }
    STDMETHODIMP ShowBrowserBar(VARIANT*, VARIANT*, VARIANT*) override
    {
        return unexpected("ShowBrowserBar");
    }
    STDMETHODIMP get_ReadyState(READYSTATE*) override { return unexpected("get_ReadyState"); }
    STDMETHODIMP get_Offline(VARIANT_BOOL*) override { return unexpected("get_Offline"); }
    STDMETHODIMP put_Offline(VARIANT_BOOL) override { return unexpected("put_Offline"); }
    STDMETHODIMP get_Silent(VARIANT_BOOL*) override { return unexpected("get_Silent"); }
    STDMETHODIMP put_Silent(VARIANT_BOOL) override { return unexpected("put_Silent"); }
    STDMETHODIMP get_RegisterAsBrowser(VARIANT_BOOL*) override { return unexpected("get_RegisterAsBrowser"); }
    STDMETHODIMP put_RegisterAsBrowser(VARIANT_BOOL) override { return unexpected("put_RegisterAsBrowser"); }
    STDMETHODIMP get_RegisterAsDropTarget(VARIANT_BOOL*) override
    {
        return unexpected("get_RegisterAsDropTarget");
    }
    STDMETHODIMP put_RegisterAsDropTarget(VARIANT_BOOL) override
    {
        return unexpected("put_RegisterAsDropTarget");
    }
    STDMETHODIMP get_TheaterMode(VARIANT_BOOL*) override { return unexpected("get_TheaterMode"); }
    STDMETHODIMP put_TheaterMode(VARIANT_BOOL) override { return unexpected("put_TheaterMode"); }
    STDMETHODIMP get_AddressBar(VARIANT_BOOL*) override { return unexpected("get_AddressBar"); }
    STDMETHODIMP put_AddressBar(VARIANT_BOOL) override { return unexpected("put_AddressBar"); }
    STDMETHODIMP get_Resizable(VARIANT_BOOL*) override { return unexpected("get_Resizable"); }
    STDMETHODIMP put_Resizable(VARIANT_BOOL) override { return unexpected("put_Resizable"); }

private:
    HRESULT unexpected(const char* method) const
    {
        ADD_FAILURE() << "unexpected call: " << name() << "::" << method;
        return E_NOTIMPL;
    }
};

} // namespace quill::test
