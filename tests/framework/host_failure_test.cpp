// Hosting windows with failures: invalid names, every call of the control, windows that are destroyed.
#include "tests/framework/host_fixture.h"
#include "tests/support/fault_points.h"

namespace quill::test {
namespace {

using FrameworkHostFailure = host_fixture;

TEST_F(FrameworkHostFailure, NamesThatAreNoControl)
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

TEST_F(FrameworkHostFailure, ClassThatIsNotRegistered)
{
    EXPECT_EQ(create(L"{11111111-2222-3333-4444-555555555555}"), REGDB_E_CLASSNOTREG);
    EXPECT_TRUE(IsWindow(host_window));
    EXPECT_EQ(create(), S_OK) << "the next attempt works";
    DestroyWindow(host_window);
    // Wine leaks two handles for each search for a server in another process.
    forget_new_handles();
}

TEST_F(FrameworkHostFailure, ClassObjectThatSucceedsWithNull)
{
    control_class().creates_nothing = true;
    EXPECT_EQ(create(), E_NOINTERFACE);
    control_class().creates_nothing = false;
    control_class().is_nothing = true;
    EXPECT_EQ(create(), E_NOINTERFACE);
    control_class().is_nothing = false;
    EXPECT_EQ(create(), S_OK);
}

TEST_F(FrameworkHostFailure, EachCallOfTheActivationFailsInTurn)
{
    hosted_control sink; // any object can be the sink
    sink.only_dispatch = true;
    int tried = 0;
    bool reached = true;
    for (int n = 0; reached; ++n) {
        SCOPED_TRACE(n);
        control().record.take();
        control().record.fail_call_number(control().record.total() + n + 1, call_fault::error);
        const HRESULT hr = create(hosted_progid, nullptr, static_cast<IDispatch*>(&sink));
        const calls recorded = control().record.take();
        reached = recorded.size() > static_cast<std::size_t>(n);
        const std::string failed = reached ? recorded[static_cast<std::size_t>(n)] : "nothing";
        const bool fatal = failed == "CreateInstance" || failed == "InitNew" || failed == "DoVerb(-5)" ||
                           failed == "FindConnectionPoint" || failed == "Advise(sink)";
        EXPECT_EQ(hr, fatal ? call_log::injected_failure : S_OK) << failed;
        EXPECT_EQ(control().released(), fatal) << failed;
        EXPECT_TRUE(IsWindow(host_window));
        control().record.fail_call_number(0, call_fault::none);
        DestroyWindow(host_window);
        EXPECT_TRUE(control().released()) << failed;
        EXPECT_EQ(sink.references(), 0) << failed;
        tried += reached;
    }
    EXPECT_EQ(tried, 12);
    report_fault_points("hosting a control", static_cast<std::size_t>(tried));
}

TEST_F(FrameworkHostFailure, EachCallOfTheDeactivationFailsInTurn)
{
    for (int n = 0; n < 6; ++n) {
        SCOPED_TRACE(n);
        ASSERT_EQ(create(), S_OK);
        control().record.fail_call_number(control().record.total() + n + 1, call_fault::error);
        DestroyWindow(host_window);
        control().record.fail_call_number(0, call_fault::none);
        EXPECT_TRUE(control().released());
    }
    report_fault_points("a hosted control's deactivation", 6);
}

TEST_F(FrameworkHostFailure, ControlThatStaysActiveIsDeactivated)
{
    control().stays_active_when_closed = true;
    ASSERT_EQ(create(), S_OK);
    control().record.take();
    DestroyWindow(host_window);
    EXPECT_EQ(control().record.take(), deactivation);
}

TEST_F(FrameworkHostFailure, ControlDestroysTheWindowDuringActivation)
{
    for (const char* const step :
         {"InitNew", "SetClientSite", "Advise", "SetExtent", "DoVerb(-5)", "SetSite"}) {
        SCOPED_TRACE(step);
        make_window();
        const CComQIPtr<IAxWinHostWindow> host = host_of(host_window);
        control().record.when_any([&](const std::string& call) {
            if (call == step && IsWindow(host_window))
                DestroyWindow(host_window);
        });
        CComPtr<IUnknown> made;
        EXPECT_TRUE(
            FAILED(host->CreateControlEx(hosted_progid, host_window, nullptr, &made, IID_NULL, nullptr)));
        EXPECT_EQ(made.p, nullptr);
        control().record.when_any(nullptr);
        EXPECT_TRUE(control().released());
    }
}

TEST_F(FrameworkHostFailure, ControlThatExistsIsAttached)
{
    ASSERT_TRUE(make_window());
    CComPtr<IUnknown> host;
    EXPECT_EQ(ATL::AtlAxAttachControl(nullptr, host_window, &host), E_INVALIDARG);
    control().record.take();
    ASSERT_EQ(ATL::AtlAxAttachControl(static_cast<IDispatch*>(&control()), host_window, &host), S_OK);
    calls expected = activation_site_last;
    expected.erase(expected.begin() + 2); // not initialised again
    expected.erase(expected.begin());     // nor created
    EXPECT_EQ(control().record.take(), expected);
    DestroyWindow(host_window);
    host.Release();

    make_window();
    control().record.make_return("DoVerb(-5)", E_FAIL);
    EXPECT_EQ(ATL::AtlAxAttachControl(static_cast<IDispatch*>(&control()), host_window, &host), E_FAIL);
    EXPECT_EQ(host.p, nullptr);
    EXPECT_TRUE(control().released());
}

TEST_F(FrameworkHostFailure, WindowsWithoutAHost)
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
