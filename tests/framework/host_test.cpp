// Hosting windows: their class, the control's way in and out, and every call of it failing.
#include "atl/atlhost.h"
#include "atl/atlwin.h"
#include "atl/detail/module.h"
#include "tests/framework/hosted_control.h"
#include "tests/support/process_resources.h"

#include <windows.h>

#include <gtest/gtest.h>
#include <shlwapi.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

namespace quill::test {
namespace {

using calls = std::vector<std::string>;
using ATL::CComPtr;
using ATL::CComQIPtr;

class framework_module : public ATL::CAtlDllModuleT<framework_module>
{
};
framework_module module;

constexpr LPCWSTR unknown_names[] = {L"QuillFrameworkTest.NoSuchControl", L"{not a class}"};

class framework_host : public testing::Test
{
protected:
    const calls way_in_site_first{"CreateInstance", "GetMiscStatus", "SetClientSite", "InitNew",
                                  "Advise",         "SetAdvise",     "SetHostNames",  "SetExtent",
                                  "DoVerb(-5)",     "SetSite"};
    const calls way_in_site_last{"CreateInstance", "GetMiscStatus", "InitNew",   "SetClientSite", "Advise",
                                 "SetAdvise",      "SetHostNames",  "SetExtent", "DoVerb(-5)",    "SetSite"};
    const calls way_out{"SetAdvise(NULL)",     "Unadvise",     "Close", "InPlaceDeactivate",
                        "SetClientSite(NULL)", "SetSite(NULL)"};

    void SetUp() override
    {
        ASSERT_EQ(OleInitialize(nullptr), S_OK);
        scene_ = std::make_unique<scene>();
        {
            // What the first hosted control, and the test library's first trace, bring with them stays.
            SCOPED_TRACE("warm-up");
            const HWND window = make_window(hosted_progid);
            ASSERT_TRUE(window);
            SetFocus(window);
            DestroyWindow(window);
        }
        scene_.reset();
        ATL::_AtlWinModule.Term();
        before_ = process_resources::now();
        scene_ = std::make_unique<scene>();
    }

    void TearDown() override
    {
        if (IsWindow(host_window))
            DestroyWindow(host_window);
        EXPECT_TRUE(scene_->control.released()) << scene_->control.references.count();
        EXPECT_EQ(ATL::_pAtlModule->GetLockCount(), 0);
        scene_.reset();
        EXPECT_TRUE(ATL::AtlAxWinTerm());
        ATL::_AtlWinModule.Term();
        EXPECT_EQ(process_resources::now(), before_);
        OleUninitialize();
    }

    HWND make_window(LPCWSTR title = nullptr)
    {
        EXPECT_TRUE(ATL::AtlAxWinInit());
        host_window = CreateWindowExW(0, L"AtlAxWin140", title, WS_CHILD | WS_VISIBLE, 0, 0, 200, 100,
                                      scene_->parent, nullptr, GetModuleHandleW(nullptr), nullptr);
        return host_window;
    }
    CComQIPtr<IAxWinHostWindow> host_of(HWND window)
    {
        CComPtr<IUnknown> unknown;
        EXPECT_EQ(ATL::AtlAxGetHost(window, &unknown), S_OK);
        return CComQIPtr<IAxWinHostWindow>(unknown);
    }
    // As the document does it: a window without a title, then its host.
    HRESULT create(LPCWSTR name = hosted_progid, IStream* stream = nullptr, IUnknown* sink = nullptr)
    {
        if (!IsWindow(host_window))
            make_window();
        const CComQIPtr<IAxWinHostWindow> host = host_of(host_window);
        CComPtr<IUnknown> made;
        const HRESULT hr = host->CreateControlEx(name, host_window, stream, &made,
                                                 sink ? IID_IPropertyNotifySink : IID_NULL, sink);
        EXPECT_EQ(made.p != nullptr, SUCCEEDED(hr));
        return hr;
    }
    // The first searches for classes that do not exist make connections that stay.
    void start_over_after_unknown_names()
    {
        for (const LPCWSTR name : unknown_names)
            EXPECT_TRUE(FAILED(ATL::AtlAxCreateControl(name, parent(), nullptr, nullptr)));
        scene_.reset();
        before_ = process_resources::now();
        scene_ = std::make_unique<scene>();
    }
    void forget_new_handles()
    {
        scene_.reset();
        before_.kernel_handles = process_resources::now().kernel_handles;
        scene_ = std::make_unique<scene>();
    }
    hosted_control& control() { return scene_->control; }
    HWND parent() { return scene_->parent; }

    HWND host_window = nullptr;

private:
    // Everything that must be gone before the counts are compared.
    struct scene
    {
        scene()
            : parent(CreateWindowExW(0, L"STATIC", L"", WS_POPUP, 0, 0, 300, 200, nullptr, nullptr, nullptr,
                                     nullptr))
        {
        }
        ~scene() { DestroyWindow(parent); }

        HWND parent;
        hosted_control control;
        hosted_class factory{[this](REFIID iid, void** out) {
            const HRESULT hr = control.record.note("CreateInstance");
            return FAILED(hr) ? hr : control.QueryInterface(iid, out);
        }};
    };

    std::unique_ptr<scene> scene_;
    process_resources before_;
};

TEST_F(framework_host, class_is_the_modules_own)
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

TEST_F(framework_host, window_without_a_title_has_a_host_and_no_control)
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
    EXPECT_EQ(ATL::_pAtlModule->GetLockCount(), 1) << "the window's";
    DestroyWindow(host_window);
    EXPECT_EQ(ATL::_pAtlModule->GetLockCount(), 0);
    EXPECT_EQ(control().record.count(), 0);
}

TEST_F(framework_host, host_outlives_its_window)
{
    ASSERT_EQ(create(), S_OK);
    CComQIPtr<IAxWinHostWindow> host = host_of(host_window);
    control().record.take();
    DestroyWindow(host_window);
    EXPECT_EQ(control().record.take(), way_out);
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

TEST_F(framework_host, way_in_and_way_out)
{
    for (const bool site_first : {true, false}) {
        control().misc_status = site_first ? DWORD{OLEMISC_SETCLIENTSITEFIRST} : 0;
        EXPECT_EQ(create(), S_OK);
        EXPECT_EQ(control().record.take(), site_first ? way_in_site_first : way_in_site_last);
        EXPECT_EQ(GetParent(control().window), host_window);
        const RECT whole{0, 0, 200, 100};
        EXPECT_TRUE(EqualRect(&control().position, &whole));
        CComPtr<IUnknown> found;
        EXPECT_EQ(ATL::AtlAxGetControl(host_window, &found), S_OK);
        EXPECT_EQ(found.p, static_cast<IDispatch*>(&control()));
        found.Release();
        DestroyWindow(host_window);
        EXPECT_EQ(control().record.take(), way_out);
        EXPECT_TRUE(control().released());
    }
}

TEST_F(framework_host, clsid_stands_for_the_class_as_well)
{
    EXPECT_EQ(create(hosted_clsid_text), S_OK);
}

TEST_F(framework_host, stream_is_what_the_control_is_loaded_from)
{
    CComPtr<IStream> stream;
    stream.Attach(SHCreateMemStream(nullptr, 0));
    EXPECT_EQ(create(hosted_progid, stream), S_OK);
    const calls told = control().record.take();
    EXPECT_EQ(told[2], "Load");
}

TEST_F(framework_host, control_without_a_state_to_initialise)
{
    control().record.answers["InitNew"] = E_NOTIMPL;
    EXPECT_EQ(create(), S_OK);
    DestroyWindow(host_window);
    control().persists = false;
    control().record.take();
    EXPECT_EQ(create(), S_OK);
    calls expected = way_in_site_last;
    expected.erase(expected.begin() + 2);
    EXPECT_EQ(control().record.take(), expected);
}

TEST_F(framework_host, automation_object_without_a_user_interface)
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

TEST_F(framework_host, control_that_is_invisible_at_run_time)
{
    control().misc_status = OLEMISC_INVISIBLEATRUNTIME;
    EXPECT_EQ(create(), S_OK);
    EXPECT_EQ(control().window, nullptr);
    const calls told = control().record.take();
    EXPECT_EQ(std::count(told.begin(), told.end(), "DoVerb(-5)"), 0);
    EXPECT_EQ(told.back(), "SetSite");
}

TEST_F(framework_host, title_names_the_control)
{
    start_over_after_unknown_names();
    ASSERT_TRUE(make_window(hosted_progid));
    calls expected = way_in_site_last;
    expected.insert(expected.end(), {"SetExtent", "SetObjectRects"}); // a new window is told its size last
    EXPECT_EQ(control().record.take(), expected);
    EXPECT_TRUE(control().window);
    DestroyWindow(host_window);

    EXPECT_EQ(make_window(unknown_names[0]), nullptr);
    control().record.answers["InitNew"] = E_OUTOFMEMORY;
    EXPECT_EQ(make_window(hosted_progid), nullptr);
    EXPECT_TRUE(control().released());
}

TEST_F(framework_host, names_that_are_no_control)
{
    start_over_after_unknown_names();
    ASSERT_TRUE(make_window());
    EXPECT_EQ(create(unknown_names[0]), CO_E_CLASSSTRING);
    EXPECT_EQ(create(unknown_names[1]), CO_E_CLASSSTRING);
    EXPECT_EQ(create(L""), E_INVALIDARG);
    EXPECT_EQ(create(nullptr), E_INVALIDARG);
    const CComQIPtr<IAxWinHostWindow> host = host_of(host_window);
    CComPtr<IUnknown> made;
    EXPECT_EQ(host->CreateControlEx(hosted_progid, parent(), nullptr, &made, IID_NULL, nullptr), E_INVALIDARG)
        << "a host has one window";
    EXPECT_EQ(host->CreateControl(hosted_progid, host_window, nullptr), S_OK);
    EXPECT_EQ(host->SetExternalDispatch(nullptr), E_NOTIMPL);
    EXPECT_EQ(host->SetExternalUIHandler(nullptr), E_NOTIMPL);
}

TEST_F(framework_host, class_that_nobody_serves)
{
    EXPECT_EQ(create(L"{11111111-2222-3333-4444-555555555555}"), REGDB_E_CLASSNOTREG);
    EXPECT_TRUE(IsWindow(host_window));
    EXPECT_EQ(create(), S_OK) << "the next attempt works";
    DestroyWindow(host_window);
    // Wine keeps two handles of every search for a server in another process.
    forget_new_handles();
}

TEST_F(framework_host, each_call_of_the_way_in_fails_in_turn)
{
    hosted_control sink; // any object will do for one
    sink.only_dispatch = true;
    int tried = 0;
    bool reached = true;
    for (int n = 0; reached; ++n) {
        SCOPED_TRACE(n);
        control().record.take();
        control().record.fail_at = control().record.count() + n;
        const HRESULT hr = create(hosted_progid, nullptr, static_cast<IDispatch*>(&sink));
        const calls told = control().record.take();
        reached = control().record.count() > control().record.fail_at;
        const std::string failed = reached ? told[static_cast<std::size_t>(n)] : "nothing";
        const bool fatal = failed == "CreateInstance" || failed == "InitNew" || failed == "DoVerb(-5)" ||
                           failed == "FindConnectionPoint" || failed == "Advise(sink)";
        EXPECT_EQ(hr, fatal ? call_record::injected_failure : S_OK) << failed;
        EXPECT_EQ(control().released(), fatal) << failed;
        EXPECT_TRUE(IsWindow(host_window));
        control().record.fail_at = -1;
        DestroyWindow(host_window);
        EXPECT_TRUE(control().released()) << failed;
        EXPECT_EQ(sink.references.count(), 1u) << failed;
        tried += reached;
    }
    EXPECT_EQ(tried, 12);
}

TEST_F(framework_host, each_call_of_the_way_out_fails_in_turn)
{
    for (int n = 0; n < 6; ++n) {
        SCOPED_TRACE(n);
        ASSERT_EQ(create(), S_OK);
        control().record.fail_at = control().record.count() + n;
        DestroyWindow(host_window);
        control().record.fail_at = -1;
        EXPECT_TRUE(control().released());
    }
}

TEST_F(framework_host, control_that_does_not_leave_is_made_to)
{
    control().stays_active_when_closed = true;
    ASSERT_EQ(create(), S_OK);
    control().record.take();
    DestroyWindow(host_window);
    EXPECT_EQ(control().record.take(), way_out);
}

TEST_F(framework_host, sink_is_connected_and_disconnected)
{
    hosted_control sink;
    sink.only_dispatch = true;
    ASSERT_EQ(create(hosted_progid, nullptr, static_cast<IDispatch*>(&sink)), S_OK);
    EXPECT_EQ(control().sink, static_cast<IDispatch*>(&sink));
    control().record.take();
    DestroyWindow(host_window);
    const calls told = control().record.take();
    EXPECT_EQ(calls(told.begin(), told.begin() + 2), (calls{"FindConnectionPoint", "Unadvise(sink)"}));
    EXPECT_EQ(sink.references.count(), 1u);
}

TEST_F(framework_host, another_control_takes_the_place)
{
    ASSERT_EQ(create(), S_OK);
    control().record.take();
    ASSERT_EQ(create(), S_OK);
    calls expected = way_out;
    expected.insert(expected.end(), way_in_site_last.begin(), way_in_site_last.end());
    EXPECT_EQ(control().record.take(), expected);
    EXPECT_TRUE(control().window);
    EXPECT_EQ(create(unknown_names[0]), CO_E_CLASSSTRING);
    EXPECT_TRUE(control().window) << "a name that leads nowhere changes nothing";
}

TEST_F(framework_host, size_and_position_follow_the_window)
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

TEST_F(framework_host, focus_goes_to_the_control)
{
    ASSERT_EQ(create(), S_OK);
    control().record.take();
    SetFocus(host_window);
    EXPECT_EQ(control().record.take(), calls{"DoVerb(-4)"});
    EXPECT_EQ(GetFocus(), control().window);
    SetFocus(parent());
    SetFocus(host_window);
    EXPECT_EQ(control().record.take(), calls{}) << "it has the user interface";
    EXPECT_EQ(GetFocus(), control().window);
}

TEST_F(framework_host, control_destroys_the_window_in_the_middle)
{
    for (const char* const step :
         {"InitNew", "SetClientSite", "Advise", "SetExtent", "DoVerb(-5)", "SetSite"}) {
        SCOPED_TRACE(step);
        make_window();
        const CComQIPtr<IAxWinHostWindow> host = host_of(host_window);
        control().record.during = [&](const std::string& call) {
            if (call == step && IsWindow(host_window))
                DestroyWindow(host_window);
        };
        CComPtr<IUnknown> made;
        EXPECT_TRUE(
            FAILED(host->CreateControlEx(hosted_progid, host_window, nullptr, &made, IID_NULL, nullptr)));
        EXPECT_EQ(made.p, nullptr);
        control().record.during = nullptr;
        EXPECT_TRUE(control().released());
    }
}

TEST_F(framework_host, any_window_can_be_given_a_host)
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
    EXPECT_EQ(GetWindowLongPtrW(host_window, GWLP_WNDPROC), original) << "the window is as it was";
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

TEST_F(framework_host, window_with_a_host_can_be_given_another)
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

TEST_F(framework_host, control_that_exists_is_attached)
{
    ASSERT_TRUE(make_window());
    CComPtr<IUnknown> host;
    EXPECT_EQ(ATL::AtlAxAttachControl(nullptr, host_window, &host), E_INVALIDARG);
    control().record.take();
    ASSERT_EQ(ATL::AtlAxAttachControl(static_cast<IDispatch*>(&control()), host_window, &host), S_OK);
    calls expected = way_in_site_last;
    expected.erase(expected.begin() + 2); // not initialised again
    expected.erase(expected.begin());     // nor created
    EXPECT_EQ(control().record.take(), expected);
    DestroyWindow(host_window);
    host.Release();

    make_window();
    control().record.answers["DoVerb(-5)"] = E_FAIL;
    EXPECT_EQ(ATL::AtlAxAttachControl(static_cast<IDispatch*>(&control()), host_window, &host), E_FAIL);
    EXPECT_EQ(host.p, nullptr);
    EXPECT_TRUE(control().released());
}

TEST_F(framework_host, windows_without_a_host)
{
    CComPtr<IUnknown> found;
    EXPECT_EQ(ATL::AtlAxGetHost(parent(), &found), E_FAIL);
    EXPECT_EQ(ATL::AtlAxGetHost(nullptr, &found), E_INVALIDARG);
    EXPECT_EQ(ATL::AtlAxGetHost(GetDesktopWindow(), &found), E_INVALIDARG) << "of another process";
    EXPECT_EQ(ATL::AtlAxGetHost(parent(), nullptr), E_POINTER);
    EXPECT_EQ(ATL::AtlAxGetControl(parent(), nullptr), E_POINTER);
}

} // namespace
} // namespace quill::test
