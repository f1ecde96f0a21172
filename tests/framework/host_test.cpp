// Hosting windows: their class, and the activation and deactivation of a control in them.
#include "tests/framework/host_fixture.h"

#include <shlwapi.h>

#include <algorithm>

namespace quill::test {
namespace {

class framework_module : public ATL::CAtlDllModuleT<framework_module>
{
};
framework_module module;

using FrameworkHost = host_fixture;

TEST_F(FrameworkHost, ClassIsTheModulesOwn)
{
    WNDCLASSEXW found{};
    found.cbSize = sizeof found;
    const HINSTANCE self = GetModuleHandleW(nullptr);
    EXPECT_FALSE(GetClassInfoExW(self, L"AtlAxWin140", &found));
    EXPECT_TRUE(ATL::AtlAxWinInit());
    EXPECT_TRUE(ATL::AtlAxWinInit()) << "again";
    ASSERT_TRUE(GetClassInfoExW(self, L"AtlAxWin140", &found));
    EXPECT_FALSE(found.style & CS_GLOBALCLASS);
    EXPECT_STREQ(ATL::CAxWindow::GetWndClassName(), L"AtlAxWin140");

    ASSERT_TRUE(make_window());
    EXPECT_FALSE(ATL::AtlAxWinTerm()) << "in use";
    DestroyWindow(host_window);
    EXPECT_TRUE(ATL::AtlAxWinTerm());
    EXPECT_FALSE(GetClassInfoExW(self, L"AtlAxWin140", &found));
    EXPECT_TRUE(ATL::AtlAxWinTerm()) << "again";
}

TEST_F(FrameworkHost, WindowWithoutATitleHasAHostAndNoControl)
{
    ASSERT_TRUE(make_window());
    CComPtr<IUnknown> found;
    EXPECT_EQ(ATL::AtlAxGetControl(host_window, &found), E_FAIL);
    EXPECT_EQ(found.p, nullptr);
    CComQIPtr<IAxWinHostWindow> host = host_of(host_window);
    ASSERT_TRUE(host);
    void* nothing = &nothing;
    EXPECT_EQ(host->QueryControl(IID_IUnknown, &nothing), E_FAIL);
    EXPECT_EQ(nothing, nullptr);
    EXPECT_EQ(host->QueryControl(IID_IUnknown, nullptr), E_POINTER);
    EXPECT_EQ(ATL::_pAtlModule->GetLockCount(), 1);
    host.Release();
    EXPECT_EQ(ATL::_pAtlModule->GetLockCount(), 1) << "the window's reference to the host";
    DestroyWindow(host_window);
    EXPECT_EQ(ATL::_pAtlModule->GetLockCount(), 0);
    EXPECT_EQ(control().record.total(), 0);
}

TEST_F(FrameworkHost, HostOutlivesItsWindow)
{
    ASSERT_EQ(create(), S_OK);
    CComQIPtr<IAxWinHostWindow> host = host_of(host_window);
    control().record.take();
    DestroyWindow(host_window);
    EXPECT_EQ(control().record.take(), deactivation);
    EXPECT_TRUE(control().released());
    CComPtr<IUnknown> made;
    EXPECT_EQ(host->QueryControl(IID_IUnknown, reinterpret_cast<void**>(&made)), E_FAIL);
    EXPECT_EQ(host->CreateControlEx(hosted_progid, host_window, nullptr, &made, IID_NULL, nullptr),
              E_INVALIDARG);
    const CComQIPtr<IOleInPlaceSite> site(host);
    HWND window = parent();
    EXPECT_EQ(site->GetWindow(&window), E_FAIL);
    EXPECT_EQ(window, nullptr);
}

TEST_F(FrameworkHost, ActivationAndDeactivation)
{
    for (const bool site_first : {true, false}) {
        control().misc_status = site_first ? DWORD{OLEMISC_SETCLIENTSITEFIRST} : 0;
        EXPECT_EQ(create(), S_OK);
        EXPECT_EQ(control().record.take(), site_first ? activation_site_first : activation_site_last);
        EXPECT_EQ(GetParent(control().window), host_window);
        const RECT whole{0, 0, 200, 100};
        EXPECT_TRUE(EqualRect(&control().position, &whole));
        CComPtr<IUnknown> found;
        EXPECT_EQ(ATL::AtlAxGetControl(host_window, &found), S_OK);
        EXPECT_EQ(found.p, static_cast<IDispatch*>(&control()));
        found.Release();
        DestroyWindow(host_window);
        EXPECT_EQ(control().record.take(), deactivation);
        EXPECT_TRUE(control().released());
    }
}

TEST_F(FrameworkHost, ClsidStandsForTheClassAsWell)
{
    EXPECT_EQ(create(hosted_clsid_text), S_OK);
}

TEST_F(FrameworkHost, StreamIsWhatTheControlIsLoadedFrom)
{
    CComPtr<IStream> stream;
    stream.Attach(SHCreateMemStream(nullptr, 0));
    EXPECT_EQ(create(hosted_progid, stream), S_OK);
    const calls recorded = control().record.take();
    EXPECT_EQ(recorded[2], "Load");
}

TEST_F(FrameworkHost, ControlWithoutAStateToInitialise)
{
    control().record.make_return("InitNew", E_NOTIMPL);
    EXPECT_EQ(create(), S_OK);
    DestroyWindow(host_window);
    control().persists = false;
    control().record.take();
    EXPECT_EQ(create(), S_OK);
    calls expected = activation_site_last;
    expected.erase(expected.begin() + 2);
    EXPECT_EQ(control().record.take(), expected);
}

TEST_F(FrameworkHost, AutomationObjectWithoutAUserInterface)
{
    control().only_dispatch = true;
    EXPECT_EQ(create(), S_OK);
    EXPECT_EQ(control().record.take(), calls{"CreateInstance"});
    CComPtr<IDispatch> dispatch;
    EXPECT_EQ(ATL::CAxWindow(host_window).QueryControl(IID_IDispatch, reinterpret_cast<void**>(&dispatch)),
              S_OK);
    EXPECT_EQ(dispatch.p, static_cast<IDispatch*>(&control()));
    dispatch.Release();
    SetWindowPos(host_window, nullptr, 0, 0, 50, 50, SWP_NOZORDER);
    SetFocus(host_window);
    DestroyWindow(host_window);
    EXPECT_EQ(control().record.take(), calls{});
}

TEST_F(FrameworkHost, ControlThatIsInvisibleAtRunTime)
{
    control().misc_status = OLEMISC_INVISIBLEATRUNTIME;
    EXPECT_EQ(create(), S_OK);
    EXPECT_EQ(control().window, nullptr);
    const calls recorded = control().record.take();
    EXPECT_EQ(std::count(recorded.begin(), recorded.end(), "DoVerb(-5)"), 0);
    EXPECT_EQ(recorded.back(), "SetSite");
}

TEST_F(FrameworkHost, TitleNamesTheControl)
{
    start_over_after_unknown_names();
    ASSERT_TRUE(make_window(hosted_progid));
    calls expected = activation_site_last;
    expected.insert(expected.end(), {"SetExtent", "SetObjectRects"}); // a new window gets its size last
    EXPECT_EQ(control().record.take(), expected);
    EXPECT_TRUE(control().window);
    DestroyWindow(host_window);

    EXPECT_EQ(make_window(unknown_names[0]), nullptr);
    control().record.make_return("InitNew", E_OUTOFMEMORY);
    EXPECT_EQ(make_window(hosted_progid), nullptr);
    EXPECT_TRUE(control().released());
}

TEST_F(FrameworkHost, SinkIsAdvisedAndUnadvised)
{
    hosted_control sink;
    sink.only_dispatch = true;
    ASSERT_EQ(create(hosted_progid, nullptr, static_cast<IDispatch*>(&sink)), S_OK);
    EXPECT_EQ(control().sink, static_cast<IDispatch*>(&sink));
    control().record.take();
    DestroyWindow(host_window);
    const calls recorded = control().record.take();
    EXPECT_EQ(calls(recorded.begin(), recorded.begin() + 2),
              (calls{"FindConnectionPoint", "Unadvise(sink)"}));
    EXPECT_EQ(sink.references(), 0);
}

TEST_F(FrameworkHost, AnotherControlReplacesTheFirst)
{
    ASSERT_EQ(create(), S_OK);
    control().record.take();
    ASSERT_EQ(create(), S_OK);
    calls expected = deactivation;
    expected.insert(expected.end(), activation_site_last.begin(), activation_site_last.end());
    EXPECT_EQ(control().record.take(), expected);
    EXPECT_TRUE(control().window);
    EXPECT_EQ(create(unknown_names[0]), CO_E_CLASSSTRING);
    EXPECT_TRUE(control().window) << "an unknown name changes nothing";
}

TEST_F(FrameworkHost, SizeAndPositionFollowTheWindow)
{
    ASSERT_EQ(create(), S_OK);
    control().record.take();
    SetWindowPos(host_window, nullptr, 10, 10, 120, 80, SWP_NOZORDER);
    EXPECT_EQ(control().record.take(), (calls{"SetExtent", "SetObjectRects"}));
    const RECT whole{0, 0, 120, 80};
    EXPECT_TRUE(EqualRect(&control().position, &whole));
    const CComQIPtr<IOleInPlaceSite> site(control().site);
    const RECT wish{5, 5, 10, 10};
    EXPECT_EQ(site->OnPosRectChange(&wish), S_OK);
    EXPECT_TRUE(EqualRect(&control().position, &whole)) << "the control fills the window";
}

TEST_F(FrameworkHost, FocusIsForwardedToTheControl)
{
    ASSERT_EQ(create(), S_OK);
    control().record.take();
    SetFocus(host_window);
    EXPECT_EQ(control().record.take(), calls{"DoVerb(-4)"});
    EXPECT_EQ(GetFocus(), control().window);
    SetFocus(parent());
    SetFocus(host_window);
    EXPECT_EQ(control().record.take(), calls{}) << "the control is UI-active already";
    EXPECT_EQ(GetFocus(), control().window);
}

TEST_F(FrameworkHost, AnyWindowCanBeGivenAHost)
{
    host_window =
        CreateWindowExW(0, L"STATIC", L"plain", WS_CHILD, 0, 0, 60, 40, parent(), nullptr, nullptr, nullptr);
    const LONG_PTR original = GetWindowLongPtrW(host_window, GWLP_WNDPROC);
    CComPtr<IUnknown> host;
    CComPtr<IUnknown> made;
    EXPECT_EQ(ATL::AtlAxCreateControlEx(unknown_names[0], host_window, nullptr, &host, &made),
              CO_E_CLASSSTRING);
    EXPECT_EQ(host.p, nullptr);
    EXPECT_EQ(made.p, nullptr);
    EXPECT_EQ(GetWindowLongPtrW(host_window, GWLP_WNDPROC), original) << "the window procedure is restored";
    EXPECT_EQ(ATL::_pAtlModule->GetLockCount(), 0);

    ASSERT_EQ(ATL::AtlAxCreateControlEx(hosted_progid, host_window, nullptr, &host, &made), S_OK);
    EXPECT_EQ(made.p, static_cast<IDispatch*>(&control()));
    EXPECT_EQ(GetWindowTextLengthW(host_window), 5);
    made.Release();
    host.Release();
    EXPECT_EQ(ATL::AtlAxCreateControlEx(hosted_progid, nullptr, nullptr, &host, &made), E_INVALIDARG);
    EXPECT_EQ(ATL::AtlAxCreateControl(nullptr, host_window, nullptr, nullptr), S_OK)
        << "a host without a control";
}

TEST_F(FrameworkHost, WindowWithAHostCanBeGivenAnother)
{
    ASSERT_TRUE(make_window());
    CComQIPtr<IAxWinHostWindow> first = host_of(host_window);
    CComPtr<IUnknown> second;
    ASSERT_EQ(ATL::AtlAxCreateControlEx(hosted_progid, host_window, nullptr, &second, nullptr), S_OK);
    CComPtr<IUnknown> found;
    EXPECT_EQ(ATL::AtlAxGetHost(host_window, &found), S_OK);
    EXPECT_TRUE(found.IsEqualObject(second));
    EXPECT_FALSE(found.IsEqualObject(first));
    found.Release();
    first.Release();
    second.Release();
    EXPECT_EQ(ATL::_pAtlModule->GetLockCount(), 2);
    DestroyWindow(host_window);
    EXPECT_EQ(ATL::_pAtlModule->GetLockCount(), 0);
}

} // namespace
} // namespace quill::test
