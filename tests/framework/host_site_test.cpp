// What a hosting window returns to its control, called directly and by a real control.
#include "atl/detail/ax_ambient.h"
#include "tests/framework/host_fixture.h"
#include "tests/framework/test_control.h"

#include <olectl.h>

namespace quill::test {
namespace {

class FrameworkHostSite : public host_fixture
{
protected:
    // The host of the window, queried for an interface.
    template <class T>
    CComQIPtr<T> site()
    {
        if (!IsWindow(host_window))
            make_window();
        return CComQIPtr<T>(host_of(host_window));
    }
};

TEST_F(FrameworkHostSite, AmbientProperties)
{
    const CComQIPtr<IDispatch> ambient = site<IDispatch>();
    ASSERT_TRUE(ambient);
    DISPPARAMS none{};
    const auto ask = [&](DISPID id, VARIANT& value) {
        return ambient->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_PROPERTYGET, &none, &value,
                               nullptr, nullptr);
    };
    VARIANT value{};
    EXPECT_EQ(ask(DISPID_AMBIENT_USERMODE, value), S_OK);
    EXPECT_EQ(value.vt, VT_BOOL);
    EXPECT_EQ(value.boolVal, VARIANT_TRUE);
    EXPECT_EQ(ask(DISPID_AMBIENT_UIDEAD, value), S_OK);
    EXPECT_EQ(value.boolVal, VARIANT_FALSE);
    EXPECT_EQ(ask(DISPID_AMBIENT_LOCALEID, value), S_OK);
    EXPECT_EQ(value.lVal, static_cast<LONG>(GetUserDefaultLCID()));
    EXPECT_EQ(ask(DISPID_AMBIENT_BACKCOLOR, value), S_OK);
    EXPECT_EQ(value.vt, VT_I4);
    EXPECT_EQ(ask(DISPID_AMBIENT_PALETTE, value), DISP_E_MEMBERNOTFOUND);
    EXPECT_EQ(value.vt, VT_EMPTY);
    EXPECT_EQ(ambient->Invoke(DISPID_AMBIENT_USERMODE, IID_NULL, 0, DISPATCH_METHOD, &none, &value, nullptr,
                              nullptr),
              DISP_E_MEMBERNOTFOUND);
    EXPECT_EQ(ambient->Invoke(DISPID_AMBIENT_USERMODE, IID_IDispatch, 0, DISPATCH_PROPERTYGET, &none, &value,
                              nullptr, nullptr),
              DISP_E_UNKNOWNINTERFACE);
    EXPECT_EQ(ambient->Invoke(DISPID_AMBIENT_USERMODE, IID_NULL, 0, DISPATCH_PROPERTYGET, &none, nullptr,
                              nullptr, nullptr),
              E_POINTER);
}

TEST_F(FrameworkHostSite, WindowContext)
{
    const CComQIPtr<IOleInPlaceSite> in_place = site<IOleInPlaceSite>();
    HWND window = nullptr;
    EXPECT_EQ(in_place->GetWindow(&window), S_OK);
    EXPECT_EQ(window, host_window);
    EXPECT_EQ(in_place->GetWindow(nullptr), E_POINTER);

    CComPtr<IOleInPlaceFrame> frame;
    CComPtr<IOleInPlaceUIWindow> document;
    RECT position{};
    RECT clip{};
    OLEINPLACEFRAMEINFO info{};
    info.cb = sizeof info;
    EXPECT_EQ(in_place->GetWindowContext(&frame, &document, &position, &clip, &info), S_OK);
    ASSERT_TRUE(frame);
    EXPECT_FALSE(document);
    const RECT whole{0, 0, 200, 100};
    EXPECT_TRUE(EqualRect(&position, &whole));
    EXPECT_TRUE(EqualRect(&clip, &whole));
    EXPECT_EQ(info.hwndFrame, parent());
    EXPECT_EQ(info.cAccelEntries, 0u);
    EXPECT_EQ(frame->GetWindow(&window), S_OK);
    EXPECT_EQ(window, parent());
    EXPECT_EQ(frame->SetActiveObject(nullptr, nullptr), S_OK);
    EXPECT_EQ(frame->SetBorderSpace(nullptr), S_OK);
    const BORDERWIDTHS wish{1, 1, 1, 1};
    EXPECT_EQ(frame->RequestBorderSpace(&wish), INPLACE_E_NOTOOLSPACE);
    EXPECT_EQ(frame->SetBorderSpace(&wish), OLE_E_INVALIDRECT);
    MSG message{};
    EXPECT_EQ(OleTranslateAccelerator(frame, &info, &message), S_FALSE);

    CComPtr<IOleInPlaceFrame> none;
    EXPECT_EQ(in_place->GetWindowContext(&none, nullptr, &position, &clip, &info), E_POINTER);
    EXPECT_FALSE(none);
    EXPECT_EQ(in_place->OnInPlaceActivate(), E_UNEXPECTED) << "there is no control";
    EXPECT_EQ(in_place->OnPosRectChange(&whole), E_UNEXPECTED);
}

TEST_F(FrameworkHostSite, ContainerAndMoniker)
{
    const CComQIPtr<IOleClientSite> client = site<IOleClientSite>();
    CComPtr<IOleContainer> container;
    EXPECT_EQ(client->GetContainer(&container), S_OK);
    EXPECT_TRUE(container.IsEqualObject(client));
    EXPECT_EQ(client->GetContainer(nullptr), E_POINTER);
    IMoniker* moniker = reinterpret_cast<IMoniker*>(1);
    EXPECT_EQ(client->GetMoniker(1, 1, &moniker), E_NOTIMPL);
    EXPECT_EQ(moniker, nullptr);
    EXPECT_EQ(client->GetMoniker(1, 1, nullptr), E_POINTER);
    IEnumUnknown* objects = reinterpret_cast<IEnumUnknown*>(1);
    EXPECT_EQ(container->EnumObjects(0, &objects), E_NOTIMPL);
    EXPECT_EQ(objects, nullptr);
    EXPECT_EQ(container->LockContainer(TRUE), S_OK);
    IDispatch* extended = reinterpret_cast<IDispatch*>(1);
    EXPECT_EQ(site<IOleControlSite>()->GetExtendedControl(&extended), E_NOTIMPL);
    EXPECT_EQ(extended, nullptr);
}

// A site of the host itself, which offers one service.
class service_site final : public test_object<IServiceProvider>
{
public:
    HRESULT STDMETHODCALLTYPE QueryService(REFGUID service, REFIID iid, void** out) override
    {
        *out = nullptr;
        return service == CLSID_hosted ? QueryInterface(iid, out) : E_NOINTERFACE;
    }
};

TEST_F(FrameworkHostSite, ServicesAreThoseOfTheSiteOfTheHost)
{
    const CComQIPtr<IServiceProvider> services = site<IServiceProvider>();
    CComPtr<IUnknown> found;
    EXPECT_EQ(services->QueryService(CLSID_hosted, IID_IUnknown, reinterpret_cast<void**>(&found)),
              E_NOINTERFACE);
    service_site own;
    const CComQIPtr<IObjectWithSite> with_site(services);
    EXPECT_EQ(with_site->SetSite(&own), S_OK);
    EXPECT_EQ(services->QueryService(CLSID_hosted, IID_IUnknown, reinterpret_cast<void**>(&found)), S_OK);
    EXPECT_EQ(found.p, &own);
    found.Release();
    EXPECT_EQ(services->QueryService(IID_IUnknown, IID_IUnknown, reinterpret_cast<void**>(&found)),
              E_NOINTERFACE);
    EXPECT_EQ(services->QueryService(CLSID_hosted, IID_IUnknown, nullptr), E_POINTER);
    EXPECT_EQ(with_site->SetSite(nullptr), S_OK);
    EXPECT_EQ(own.references(), 0);
}

TEST_F(FrameworkHostSite, RealControlIsHostedInTheWindow)
{
    using control_object = ATL::CComObject<test_control>;
    control_object* made = nullptr;
    ASSERT_EQ(control_object::CreateInstance(&made), S_OK);
    CComPtr<IOleObject> control(made);
    make_window();
    ASSERT_EQ(ATL::AtlAxAttachControl(control, host_window, nullptr), S_OK);
    EXPECT_TRUE(made->m_bInPlaceActive);
    EXPECT_FALSE(made->m_bUIActive);
    EXPECT_EQ(GetParent(made->m_hWnd), host_window);

    SetWindowPos(host_window, nullptr, 0, 0, 90, 60, SWP_NOZORDER);
    RECT area{};
    GetClientRect(made->m_hWnd, &area);
    EXPECT_EQ(area.right, 90);
    EXPECT_EQ(area.bottom, 60);
    SetFocus(host_window);
    EXPECT_TRUE(made->m_bUIActive);
    EXPECT_EQ(GetFocus(), made->m_hWnd);

    DestroyWindow(host_window);
    EXPECT_FALSE(made->m_bInPlaceActive);
    EXPECT_FALSE(made->m_bUIActive);
    EXPECT_EQ(made->m_hWnd, nullptr);
    EXPECT_EQ(made->m_spClientSite.p, nullptr);
    EXPECT_EQ(ATL::_pAtlModule->GetLockCount(), 1) << "only the test's reference to the control is left";
}

TEST_F(FrameworkHostSite, RealControlReleasedInsideItsHostIsDestroyed)
{
    using control_object = ATL::CComObject<test_control>;
    control_object* made = nullptr;
    ASSERT_EQ(control_object::CreateInstance(&made), S_OK);
    CComPtr<IOleObject> control(made);
    make_window();
    ASSERT_EQ(ATL::AtlAxAttachControl(control, host_window, nullptr), S_OK);
    control.Release(); // the host's is the last reference
    made->on_app = [this] { DestroyWindow(host_window); };
    made->stored = 1;
    EXPECT_EQ(SendMessageW(made->m_hWnd, WM_APP, 0, 0), 2);
    EXPECT_EQ(ATL::_pAtlModule->GetLockCount(), 0);
}

} // namespace
} // namespace quill::test
