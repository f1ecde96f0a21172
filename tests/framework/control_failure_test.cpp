// Hosts that fail, answer less than they should, or call back in the middle of an activation.
#include "tests/framework/control_fixture.h"
#include "tests/support/fault_points.h"

#include <algorithm>

namespace quill::test {
namespace {

class framework_failing_host : public control_fixture
{
protected:
    void SetUp() override
    {
        control_fixture::SetUp();
        ASSERT_EQ(control->SetClientSite(container.get()), S_OK);
    }
};

// Every call that an activation makes fails once; whatever the answer, both sides agree on the state and
// nothing is held afterwards.
TEST_F(framework_failing_host, each_site_call_fails_in_turn)
{
    constexpr int most_calls = 30;
    int tried = 0;
    for (int n = 0; n < most_calls; ++n) {
        SCOPED_TRACE(n);
        const int calls_before = container->record.count();
        container->record.fail_at = calls_before + n;
        const HRESULT hr = do_verb(OLEIVERB_UIACTIVATE);
        const calls told = container->record.take();
        container->record.fail_at = -1;
        const bool reached = container->record.count() - calls_before > n;
        if (reached) {
            ++tried;
            const std::string& failed = told[static_cast<std::size_t>(n)];
            const bool ends_activation = failed == "CanInPlaceActivate" || failed == "OnInPlaceActivate" ||
                                         failed == "GetWindow" || failed == "OnUIActivate";
            EXPECT_EQ(hr, ends_activation ? call_record::injected_failure : S_OK) << failed;
            EXPECT_EQ(control->m_bInPlaceActive, !ends_activation || failed == "OnUIActivate") << failed;
            EXPECT_EQ(control->m_bUIActive, !ends_activation) << failed;
            EXPECT_EQ(control->m_hWnd != nullptr, control->m_bInPlaceActive != 0) << failed;
            EXPECT_EQ(container->in_place_balance, control->m_bInPlaceActive ? 1 : 0) << failed;
            EXPECT_EQ(container->ui_balance, control->m_bUIActive ? 1 : 0) << failed;
            if (!control->m_bInPlaceActive)
                EXPECT_EQ(control->m_spInPlaceSite.p, nullptr) << failed << ": no view is held";
        }
        close();
        container->record.take();
        EXPECT_TRUE(container->released());
        ASSERT_EQ(control->SetClientSite(container.get()), S_OK);
        if (!reached)
            break;
    }
    EXPECT_EQ(tried, 11);
    report_fault_points("a control's activation", static_cast<std::size_t>(tried));
    close();
}

TEST_F(framework_failing_host, each_site_call_of_the_way_down_fails_in_turn)
{
    for (int n = 0; n < 6; ++n) {
        SCOPED_TRACE(n);
        ASSERT_EQ(do_verb(OLEIVERB_UIACTIVATE), S_OK);
        container->record.fail_at = container->record.count() + n;
        close();
        container->record.fail_at = -1;
        EXPECT_FALSE(control->m_bInPlaceActive);
        EXPECT_FALSE(control->m_bUIActive);
        EXPECT_EQ(control->m_hWnd, nullptr);
        EXPECT_EQ(container->in_place_balance, 0);
        EXPECT_EQ(container->ui_balance, 0);
        EXPECT_TRUE(container->released());
        ASSERT_EQ(control->SetClientSite(container.get()), S_OK);
    }
    close();
    report_fault_points("a control's deactivation", 6);
}

TEST_F(framework_failing_host, no_site_is_no_activation)
{
    close();
    EXPECT_EQ(do_verb(OLEIVERB_UIACTIVATE), S_OK);
    EXPECT_EQ(control->m_hWnd, nullptr);
    EXPECT_FALSE(control->m_bInPlaceActive);
}

TEST_F(framework_failing_host, site_without_in_place_site)
{
    container->has_in_place_site = false;
    EXPECT_EQ(do_verb(OLEIVERB_SHOW), E_NOINTERFACE);
    EXPECT_FALSE(control->m_bInPlaceActive);
    EXPECT_EQ(container->record.take(), calls{});
    close();
}

TEST_F(framework_failing_host, site_that_does_not_want_it_now)
{
    container->record.answers["CanInPlaceActivate"] = S_FALSE;
    EXPECT_EQ(do_verb(OLEIVERB_SHOW), E_FAIL);
    EXPECT_EQ(container->record.take(), calls{"CanInPlaceActivate"});
    EXPECT_FALSE(control->m_bInPlaceActive);
    close();
}

TEST_F(framework_failing_host, window_that_succeeds_but_is_none)
{
    container->gives_window = false;
    EXPECT_EQ(do_verb(OLEIVERB_SHOW), E_FAIL);
    EXPECT_EQ(container->record.take(),
              (calls{"CanInPlaceActivate", "OnInPlaceActivate", "GetWindow", "OnInPlaceDeactivate"}));
    close();
}

TEST_F(framework_failing_host, context_without_frame_or_document_window)
{
    container->gives_frame = false;
    EXPECT_EQ(do_verb(OLEIVERB_UIACTIVATE), S_OK);
    EXPECT_EQ(container->record.count_of("document.SetActiveObject"), 1);
    EXPECT_EQ(control->InPlaceDeactivate(), S_OK);
    container->gives_document = false;
    container->record.take();
    EXPECT_EQ(do_verb(OLEIVERB_UIACTIVATE), S_OK);
    EXPECT_EQ(container->record.take(),
              (calls{"CanInPlaceActivate", "OnInPlaceActivate", "GetWindow", "GetWindowContext",
                     "OnUIActivate", "OnFocus(TRUE)", "ShowObject"}));
    close();
}

TEST_F(framework_failing_host, context_left_untouched_takes_the_position_of_the_verb)
{
    container->touches_context = false;
    const RECT position{7, 8, 77, 88};
    EXPECT_EQ(do_verb(OLEIVERB_SHOW, &position), S_OK);
    EXPECT_TRUE(same(place_of_control(), position));
    EXPECT_EQ(control->InPlaceDeactivate(), S_OK);

    EXPECT_EQ(do_verb(OLEIVERB_SHOW), S_OK) << "or the last one known";
    EXPECT_TRUE(same(place_of_control(), position));
    EXPECT_EQ(control->InPlaceDeactivate(), S_OK);

    container->record.answers["GetWindowContext"] = E_NOTIMPL;
    const RECT other{1, 1, 20, 20};
    EXPECT_EQ(do_verb(OLEIVERB_SHOW, &other), S_OK);
    EXPECT_TRUE(same(place_of_control(), other));
    close();
}

// Neither used nor released: the count of a reference that was not given would be wrong at the end.
TEST_F(framework_failing_host, failed_context_gives_no_windows)
{
    container->failure_leaves_windows = true;
    container->record.answers["GetWindowContext"] = E_FAIL;
    EXPECT_EQ(do_verb(OLEIVERB_UIACTIVATE), S_OK);
    EXPECT_EQ(control->InPlaceDeactivate(), S_OK);
    EXPECT_EQ(
        container->record.take(),
        (calls{"CanInPlaceActivate", "OnInPlaceActivate", "GetWindow", "GetWindowContext", "OnUIActivate",
               "OnFocus(TRUE)", "ShowObject", "GetWindowContext", "OnUIDeactivate", "OnInPlaceDeactivate"}));
    EXPECT_EQ(container->frame.references.count(), 1u);
    EXPECT_EQ(container->document.references.count(), 1u);
    close();
}

TEST_F(framework_failing_host, window_that_cannot_be_made)
{
    control->refuse_window = true;
    EXPECT_EQ(do_verb(OLEIVERB_UIACTIVATE), E_FAIL);
    EXPECT_EQ(container->record.take(), (calls{"CanInPlaceActivate", "OnInPlaceActivate", "GetWindow",
                                               "GetWindowContext", "OnInPlaceDeactivate"}));
    EXPECT_FALSE(control->m_bInPlaceActive);
    EXPECT_FALSE(control->m_bUIActive);
    control->refuse_window = false;
    EXPECT_EQ(do_verb(OLEIVERB_UIACTIVATE), S_OK) << "the next attempt works";
    close();
}

TEST_F(framework_failing_host, in_place_site_of_a_view_is_kept_through_a_failure)
{
    ASSERT_EQ(control->SetInPlaceSite(container.get()), S_OK);
    container->record.answers["OnInPlaceActivate"] = E_FAIL;
    EXPECT_EQ(control->Show(TRUE), E_FAIL);
    EXPECT_EQ(control->m_spInPlaceSite.p, static_cast<IOleInPlaceSite*>(container.get()));
    close();
}

// The host takes the control down from inside each call of its activation.
TEST_F(framework_failing_host, host_deactivates_in_the_middle)
{
    for (const char* const step :
         {"CanInPlaceActivate", "OnInPlaceActivate", "GetWindow", "GetWindowContext", "OnUIActivate",
          "OnFocus(TRUE)", "frame.SetActiveObject", "document.SetActiveObject", "frame.SetBorderSpace(NULL)",
          "document.SetBorderSpace(NULL)", "ShowObject"}) {
        for (const bool by_closing : {false, true}) {
            SCOPED_TRACE(step);
            SCOPED_TRACE(by_closing);
            int times = 0;
            container->record.during = [&](const std::string& call) {
                if (call != step || times++)
                    return;
                if (by_closing)
                    close();
                else
                    EXPECT_EQ(control->InPlaceDeactivate(), S_OK);
            };
            const HRESULT hr = do_verb(OLEIVERB_UIACTIVATE);
            EXPECT_EQ(times, 1);
            container->record.during = nullptr;
            // There is nothing to be deactivated yet in the first call, but there is something to be closed.
            const bool too_early = !by_closing && std::string(step) == "CanInPlaceActivate";
            EXPECT_EQ(control->m_bUIActive, too_early);
            if (!too_early) {
                EXPECT_FALSE(control->m_bInPlaceActive);
                EXPECT_EQ(control->m_hWnd, nullptr);
                EXPECT_EQ(container->in_place_balance, 0);
                EXPECT_EQ(container->ui_balance, 0);
                const bool before_window =
                    std::string(step) == "CanInPlaceActivate" || std::string(step) == "OnInPlaceActivate" ||
                    std::string(step) == "GetWindow" || std::string(step) == "GetWindowContext";
                EXPECT_EQ(hr, before_window ? OLE_E_NOT_INPLACEACTIVE : S_OK);
            }
            close();
            EXPECT_TRUE(container->released());
            ASSERT_EQ(control->SetClientSite(container.get()), S_OK);
        }
    }
    close();
}

TEST_F(framework_failing_host, host_deactivates_inside_the_deactivation)
{
    for (const char* const step :
         {"document.SetActiveObject(NULL)", "frame.SetActiveObject(NULL)", "OnUIDeactivate"}) {
        SCOPED_TRACE(step);
        ASSERT_EQ(do_verb(OLEIVERB_UIACTIVATE), S_OK);
        container->record.take();
        container->record.during = [&](const std::string& call) {
            if (call == step)
                EXPECT_EQ(control->InPlaceDeactivate(), S_OK);
        };
        EXPECT_EQ(control->InPlaceDeactivate(), S_OK);
        EXPECT_EQ(container->record.count_of("OnInPlaceDeactivate"), 1);
        EXPECT_EQ(container->record.count_of("OnUIDeactivate"), 1);
        container->record.during = nullptr;
    }
    close();
}

// The window of the first activation goes, and with it the handle, while its handler is still running.
TEST_F(framework_failing_host, activates_again_inside_a_handler_of_the_window)
{
    ASSERT_EQ(do_verb(OLEIVERB_SHOW), S_OK);
    const HWND first = control->m_hWnd;
    control->on_app = [&] {
        EXPECT_EQ(control->InPlaceDeactivate(), S_OK);
        HWND window = first;
        EXPECT_EQ(control->IOleInPlaceObjectWindowlessImpl::GetWindow(&window), E_FAIL);
        EXPECT_EQ(window, nullptr);
        EXPECT_EQ(do_verb(OLEIVERB_SHOW), S_OK);
        EXPECT_TRUE(IsWindow(control->m_hWnd));
    };
    SendMessageW(first, WM_APP, 0, 0);
    EXPECT_FALSE(IsWindow(first));
    EXPECT_TRUE(IsWindow(control->m_hWnd));
    EXPECT_EQ(control->created.size(), 2u);
    close();
}

TEST_F(framework_failing_host, window_destroyed_inside_its_handler_is_no_window_any_more)
{
    ASSERT_EQ(do_verb(OLEIVERB_SHOW), S_OK);
    control->on_app = [&] {
        DestroyWindow(control->m_hWnd);
        EXPECT_EQ(control->m_hWnd, nullptr);
    };
    SendMessageW(control->m_hWnd, WM_APP, 0, 0);
    close();
}

TEST_F(framework_failing_host, last_reference_goes_from_inside_a_call)
{
    for (const char* const step : {"OnInPlaceActivate", "OnUIActivate", "ShowObject"}) {
        SCOPED_TRACE(step);
        ATL::CComPtr<control_object> other = make_control();
        ASSERT_EQ(other->SetClientSite(container.get()), S_OK);
        container->record.during = [&](const std::string& call) {
            if (call == step && other) {
                other->Close(OLECLOSE_NOSAVE);
                other->SetClientSite(nullptr);
                other.Release();
            }
        };
        control_object* const raw = other;
        raw->DoVerb(OLEIVERB_UIACTIVATE, nullptr, container.get(), 0, nullptr, nullptr);
        EXPECT_FALSE(other);
        container->record.during = nullptr;
        EXPECT_EQ(ATL::_pAtlModule->GetLockCount(), 1) << "only the fixture's control is left";
    }
    close();
}

TEST_F(framework_failing_host, last_reference_goes_from_inside_a_message)
{
    ATL::CComPtr<control_object> other = make_control();
    ASSERT_EQ(other->SetClientSite(container.get()), S_OK);
    ASSERT_EQ(other->DoVerb(OLEIVERB_SHOW, nullptr, container.get(), 0, nullptr, nullptr), S_OK);
    const HWND window = other->m_hWnd;
    bool ended = false;
    other->on_end = [&] { ended = true; };
    other->stored = 41;
    other->on_app = [&] {
        other->Close(OLECLOSE_NOSAVE);
        other->SetClientSite(nullptr);
        other.Release();
        EXPECT_FALSE(ended) << "the object outlives its handler";
    };
    EXPECT_EQ(SendMessageW(window, WM_APP, 0, 0), 42) << "the handler ran to its end";
    EXPECT_TRUE(ended);
    EXPECT_FALSE(IsWindow(window));
    EXPECT_EQ(ATL::_pAtlModule->GetLockCount(), 1);
    close();
}

TEST_F(framework_failing_host, released_while_active)
{
    ASSERT_EQ(do_verb(OLEIVERB_UIACTIVATE), S_OK);
    const HWND window = control->m_hWnd;
    control.Release();
    EXPECT_FALSE(IsWindow(window));
    EXPECT_TRUE(container->released());
    container->in_place_balance = container->ui_balance = 0; // a host that lets go so is not told
}

TEST_F(framework_failing_host, windows_go_before_the_control)
{
    ASSERT_EQ(do_verb(OLEIVERB_UIACTIVATE), S_OK);
    DestroyWindow(control->m_hWnd);
    EXPECT_EQ(control->m_hWnd, nullptr);
    EXPECT_TRUE(control->m_bInPlaceActive);
    EXPECT_EQ(control->UIDeactivate(), S_OK);
    EXPECT_EQ(control->InPlaceDeactivate(), S_OK);
    close();
}

} // namespace
} // namespace quill::test
