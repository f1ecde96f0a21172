// Hosts that fail, return less than they should, or call back during an activation.
#include "tests/framework/control_fixture.h"
#include "tests/support/fault_points.h"

#include <algorithm>

namespace quill::test {
namespace {

class FrameworkFailingHost : public control_fixture
{
protected:
    void SetUp() override
    {
        control_fixture::SetUp();
        ASSERT_EQ(control->SetClientSite(container.get()), S_OK);
    }
};

// Each call of an activation fails once; whatever it returns, both sides agree on the state and no reference
// is leaked.
TEST_F(FrameworkFailingHost, EachSiteCallFailsInTurn)
{
    constexpr int most_calls = 30;
    int tried = 0;
    for (int n = 0; n < most_calls; ++n) {
        SCOPED_TRACE(n);
        const int calls_before = container->record.total();
        container->record.fail_call_number(calls_before + n + 1, call_fault::error);
        const HRESULT hr = do_verb(OLEIVERB_UIACTIVATE);
        const calls recorded = container->record.take();
        container->record.fail_call_number(0, call_fault::none);
        const bool reached = container->record.total() - calls_before > n;
        if (reached) {
            ++tried;
            const std::string& failed = recorded[static_cast<std::size_t>(n)];
            const bool ends_activation = failed == "CanInPlaceActivate" || failed == "OnInPlaceActivate" ||
                                         failed == "GetWindow" || failed == "OnUIActivate";
            EXPECT_EQ(hr, ends_activation ? call_log::injected_failure : S_OK) << failed;
            EXPECT_EQ(control->m_bInPlaceActive, !ends_activation || failed == "OnUIActivate") << failed;
            EXPECT_EQ(control->m_bUIActive, !ends_activation) << failed;
            EXPECT_EQ(control->m_hWnd != nullptr, control->m_bInPlaceActive != 0) << failed;
            EXPECT_EQ(container->in_place_balance, control->m_bInPlaceActive ? 1 : 0) << failed;
            EXPECT_EQ(container->ui_balance, control->m_bUIActive ? 1 : 0) << failed;
            if (!control->m_bInPlaceActive)
                EXPECT_EQ(control->m_spInPlaceSite.p, nullptr) << failed << ": the view is still referenced";
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

TEST_F(FrameworkFailingHost, EachSiteCallOfTheDeactivationFailsInTurn)
{
    for (int n = 0; n < 6; ++n) {
        SCOPED_TRACE(n);
        ASSERT_EQ(do_verb(OLEIVERB_UIACTIVATE), S_OK);
        container->record.fail_call_number(container->record.total() + n + 1, call_fault::error);
        close();
        container->record.fail_call_number(0, call_fault::none);
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

TEST_F(FrameworkFailingHost, NoSiteIsNoActivation)
{
    close();
    EXPECT_EQ(do_verb(OLEIVERB_UIACTIVATE), S_OK);
    EXPECT_EQ(control->m_hWnd, nullptr);
    EXPECT_FALSE(control->m_bInPlaceActive);
}

TEST_F(FrameworkFailingHost, SiteWithoutInPlaceSite)
{
    container->has_in_place_site = false;
    EXPECT_EQ(do_verb(OLEIVERB_SHOW), E_NOINTERFACE);
    EXPECT_FALSE(control->m_bInPlaceActive);
    EXPECT_EQ(container->record.take(), calls{});
    close();
}

TEST_F(FrameworkFailingHost, SiteThatRefusesActivation)
{
    container->record.make_return("CanInPlaceActivate", S_FALSE);
    EXPECT_EQ(do_verb(OLEIVERB_SHOW), E_FAIL);
    EXPECT_EQ(container->record.take(), calls{"CanInPlaceActivate"});
    EXPECT_FALSE(control->m_bInPlaceActive);
    close();
}

TEST_F(FrameworkFailingHost, NullWindowWithSuccess)
{
    container->gives_window = false;
    EXPECT_EQ(do_verb(OLEIVERB_SHOW), E_FAIL);
    EXPECT_EQ(container->record.take(),
              (calls{"CanInPlaceActivate", "OnInPlaceActivate", "GetWindow", "OnInPlaceDeactivate"}));
    close();
}

TEST_F(FrameworkFailingHost, ContextWithoutFrameOrDocumentWindow)
{
    container->gives_frame = false;
    EXPECT_EQ(do_verb(OLEIVERB_UIACTIVATE), S_OK);
    EXPECT_EQ(container->record.count("document.SetActiveObject"), 1);
    EXPECT_EQ(control->InPlaceDeactivate(), S_OK);
    container->gives_document = false;
    container->record.take();
    EXPECT_EQ(do_verb(OLEIVERB_UIACTIVATE), S_OK);
    EXPECT_EQ(container->record.take(),
              (calls{"CanInPlaceActivate", "OnInPlaceActivate", "GetWindow", "GetWindowContext",
                     "OnUIActivate", "OnFocus(TRUE)", "ShowObject"}));
    close();
}

TEST_F(FrameworkFailingHost, ContextLeftUntouchedTakesThePositionOfTheVerb)
{
    container->touches_context = false;
    const RECT position{7, 8, 77, 88};
    EXPECT_EQ(do_verb(OLEIVERB_SHOW, &position), S_OK);
    EXPECT_TRUE(same(place_of_control(), position));
    EXPECT_EQ(control->InPlaceDeactivate(), S_OK);

    EXPECT_EQ(do_verb(OLEIVERB_SHOW), S_OK) << "or at the last known position";
    EXPECT_TRUE(same(place_of_control(), position));
    EXPECT_EQ(control->InPlaceDeactivate(), S_OK);

    container->record.make_return("GetWindowContext", E_NOTIMPL);
    const RECT other{1, 1, 20, 20};
    EXPECT_EQ(do_verb(OLEIVERB_SHOW, &other), S_OK);
    EXPECT_TRUE(same(place_of_control(), other));
    close();
}

// Neither used nor released: releasing a reference that was not added would show in the count.
TEST_F(FrameworkFailingHost, FailedContextYieldsNoWindows)
{
    container->failure_leaves_windows = true;
    container->record.make_return("GetWindowContext", E_FAIL);
    EXPECT_EQ(do_verb(OLEIVERB_UIACTIVATE), S_OK);
    EXPECT_EQ(control->InPlaceDeactivate(), S_OK);
    EXPECT_EQ(
        container->record.take(),
        (calls{"CanInPlaceActivate", "OnInPlaceActivate", "GetWindow", "GetWindowContext", "OnUIActivate",
               "OnFocus(TRUE)", "ShowObject", "GetWindowContext", "OnUIDeactivate", "OnInPlaceDeactivate"}));
    EXPECT_EQ(container->frame.references(), 0);
    EXPECT_EQ(container->document.references(), 0);
    close();
}

TEST_F(FrameworkFailingHost, WindowThatCannotBeCreated)
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

TEST_F(FrameworkFailingHost, InPlaceSiteOfAViewIsKeptAfterAFailure)
{
    ASSERT_EQ(control->SetInPlaceSite(container.get()), S_OK);
    container->record.make_return("OnInPlaceActivate", E_FAIL);
    EXPECT_EQ(control->Show(TRUE), E_FAIL);
    EXPECT_EQ(control->m_spInPlaceSite.p, static_cast<IOleInPlaceSite*>(container.get()));
    close();
}

// The host closes the control inside each call of its activation.
TEST_F(FrameworkFailingHost, HostDeactivatesInTheMiddle)
{
    for (const char* const step :
         {"CanInPlaceActivate", "OnInPlaceActivate", "GetWindow", "GetWindowContext", "OnUIActivate",
          "OnFocus(TRUE)", "frame.SetActiveObject", "document.SetActiveObject", "frame.SetBorderSpace(NULL)",
          "document.SetBorderSpace(NULL)", "ShowObject"}) {
        for (const bool by_closing : {false, true}) {
            SCOPED_TRACE(step);
            SCOPED_TRACE(by_closing);
            int times = 0;
            container->record.when_any([&](const std::string& call) {
                if (call != step || times++)
                    return;
                if (by_closing)
                    close();
                else
                    EXPECT_EQ(control->InPlaceDeactivate(), S_OK);
            });
            const HRESULT hr = do_verb(OLEIVERB_UIACTIVATE);
            EXPECT_EQ(times, 1);
            container->record.when_any(nullptr);
            // In the first call there is nothing to deactivate yet, but the control can be closed.
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

TEST_F(FrameworkFailingHost, HostDeactivatesInsideTheDeactivation)
{
    for (const char* const step :
         {"document.SetActiveObject(NULL)", "frame.SetActiveObject(NULL)", "OnUIDeactivate"}) {
        SCOPED_TRACE(step);
        ASSERT_EQ(do_verb(OLEIVERB_UIACTIVATE), S_OK);
        container->record.take();
        container->record.when_any([&](const std::string& call) {
            if (call == step)
                EXPECT_EQ(control->InPlaceDeactivate(), S_OK);
        });
        EXPECT_EQ(control->InPlaceDeactivate(), S_OK);
        EXPECT_EQ(container->record.count("OnInPlaceDeactivate"), 1);
        EXPECT_EQ(container->record.count("OnUIDeactivate"), 1);
        container->record.when_any(nullptr);
    }
    close();
}

// The window of the first activation, and with it the handle, is destroyed while its handler is still
// running.
TEST_F(FrameworkFailingHost, ActivatesAgainInsideAHandlerOfTheWindow)
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

TEST_F(FrameworkFailingHost, WindowDestroyedInsideItsHandlerIsForgotten)
{
    ASSERT_EQ(do_verb(OLEIVERB_SHOW), S_OK);
    control->on_app = [&] {
        DestroyWindow(control->m_hWnd);
        EXPECT_EQ(control->m_hWnd, nullptr);
    };
    SendMessageW(control->m_hWnd, WM_APP, 0, 0);
    close();
}

TEST_F(FrameworkFailingHost, LastReleaseInsideACall)
{
    for (const char* const step : {"OnInPlaceActivate", "OnUIActivate", "ShowObject"}) {
        SCOPED_TRACE(step);
        ATL::CComPtr<control_object> other = make_control();
        ASSERT_EQ(other->SetClientSite(container.get()), S_OK);
        container->record.when_any([&](const std::string& call) {
            if (call == step && other) {
                other->Close(OLECLOSE_NOSAVE);
                other->SetClientSite(nullptr);
                other.Release();
            }
        });
        control_object* const raw = other;
        raw->DoVerb(OLEIVERB_UIACTIVATE, nullptr, container.get(), 0, nullptr, nullptr);
        EXPECT_FALSE(other);
        container->record.when_any(nullptr);
        EXPECT_EQ(ATL::_pAtlModule->GetLockCount(), 1) << "only the fixture's control exists";
    }
    close();
}

TEST_F(FrameworkFailingHost, LastReleaseInsideAMessage)
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
        EXPECT_FALSE(ended) << "the object must exist until its handler returns";
    };
    EXPECT_EQ(SendMessageW(window, WM_APP, 0, 0), 42) << "the handler ran to its end";
    EXPECT_TRUE(ended);
    EXPECT_FALSE(IsWindow(window));
    EXPECT_EQ(ATL::_pAtlModule->GetLockCount(), 1);
    close();
}

TEST_F(FrameworkFailingHost, ReleasedWhileActive)
{
    ASSERT_EQ(do_verb(OLEIVERB_UIACTIVATE), S_OK);
    const HWND window = control->m_hWnd;
    control.Release();
    EXPECT_FALSE(IsWindow(window));
    EXPECT_TRUE(container->released());
    container->in_place_balance = container->ui_balance =
        0; // a host that releases without closing is not notified
}

TEST_F(FrameworkFailingHost, WindowsAreDestroyedBeforeTheControl)
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
