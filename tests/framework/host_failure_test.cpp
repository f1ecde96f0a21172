// Hosting windows when something fails: names that lead nowhere, every call of the control, windows that go.
#include "tests/framework/host_fixture.h"
#include "tests/support/fault_points.h"

namespace quill::test {
namespace {

using framework_host_failure = host_fixture;

TEST_F(framework_host_failure, names_that_are_no_control)
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

TEST_F(framework_host_failure, class_that_nobody_serves)
{
    EXPECT_EQ(create(L"{11111111-2222-3333-4444-555555555555}"), REGDB_E_CLASSNOTREG);
    EXPECT_TRUE(IsWindow(host_window));
    EXPECT_EQ(create(), S_OK) << "the next attempt works";
    DestroyWindow(host_window);
    // Wine keeps two handles of every search for a server in another process.
    forget_new_handles();
}

TEST_F(framework_host_failure, class_object_that_succeeds_with_nothing)
{
    control_class().creates_nothing = true;
    EXPECT_EQ(create(), E_NOINTERFACE);
    control_class().creates_nothing = false;
    control_class().is_nothing = true;
    EXPECT_EQ(create(), E_NOINTERFACE);
    control_class().is_nothing = false;
    EXPECT_EQ(create(), S_OK);
}

TEST_F(framework_host_failure, each_call_of_the_way_in_fails_in_turn)
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
    report_fault_points("hosting a control", static_cast<std::size_t>(tried));
}

TEST_F(framework_host_failure, each_call_of_the_way_out_fails_in_turn)
{
    for (int n = 0; n < 6; ++n) {
        SCOPED_TRACE(n);
        ASSERT_EQ(create(), S_OK);
        control().record.fail_at = control().record.count() + n;
        DestroyWindow(host_window);
        control().record.fail_at = -1;
        EXPECT_TRUE(control().released());
    }
    report_fault_points("a hosted control's way out", 6);
}

TEST_F(framework_host_failure, control_that_does_not_leave_is_made_to)
{
    control().stays_active_when_closed = true;
    ASSERT_EQ(create(), S_OK);
    control().record.take();
    DestroyWindow(host_window);
    EXPECT_EQ(control().record.take(), way_out);
}

TEST_F(framework_host_failure, control_destroys_the_window_in_the_middle)
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

TEST_F(framework_host_failure, control_that_exists_is_attached)
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

TEST_F(framework_host_failure, windows_without_a_host)
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
