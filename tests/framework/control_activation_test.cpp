// Activation of a control by its verbs and by its view, in the orders that hosts use.
#include "tests/framework/control_fixture.h"

#include <algorithm>

namespace quill::test {
namespace {

class framework_module : public ATL::CAtlDllModuleT<framework_module>
{
};
framework_module module;

class FrameworkActivation : public control_fixture
{
protected:
    const calls in_place{"CanInPlaceActivate", "OnInPlaceActivate", "GetWindow", "GetWindowContext",
                         "ShowObject"};
    const calls ui_after_in_place{"GetWindow",
                                  "GetWindowContext",
                                  "OnUIActivate",
                                  "OnFocus(TRUE)",
                                  "frame.SetActiveObject",
                                  "document.SetActiveObject",
                                  "frame.SetBorderSpace(NULL)",
                                  "document.SetBorderSpace(NULL)",
                                  "ShowObject"};
    const calls ui_at_once{"CanInPlaceActivate",
                           "OnInPlaceActivate",
                           "GetWindow",
                           "GetWindowContext",
                           "OnUIActivate",
                           "OnFocus(TRUE)",
                           "frame.SetActiveObject",
                           "document.SetActiveObject",
                           "frame.SetBorderSpace(NULL)",
                           "document.SetBorderSpace(NULL)",
                           "ShowObject"};
    const calls ui_end{"GetWindowContext", "document.SetActiveObject(NULL)", "frame.SetActiveObject(NULL)",
                       "OnUIDeactivate"};
    const calls close_of_ui_active{
        "OnShowWindow(FALSE)",         "GetWindowContext", "document.SetActiveObject(NULL)",
        "frame.SetActiveObject(NULL)", "OnUIDeactivate",   "OnInPlaceDeactivate"};

    void set_site()
    {
        ASSERT_EQ(control->SetClientSite(container.get()), S_OK);
        EXPECT_EQ(container->record.take(), calls{});
    }
};

TEST_F(FrameworkActivation, ShowAndInPlaceVerbsActivateWithoutTheUserInterface)
{
    for (const LONG verb : {OLEIVERB_SHOW, OLEIVERB_INPLACEACTIVATE}) {
        set_site();
        EXPECT_EQ(do_verb(verb), S_OK);
        EXPECT_EQ(container->record.take(), in_place);
        EXPECT_TRUE(control->m_bInPlaceActive);
        EXPECT_FALSE(control->m_bUIActive);
        EXPECT_EQ(GetParent(control->m_hWnd), container->window);
        EXPECT_TRUE(same(place_of_control(), container->position));
        EXPECT_TRUE(same(control->m_rcPos, container->position));
        EXPECT_TRUE(same(control->created.back(), container->position))
            << "the window is created at the control's position";

        close();
        EXPECT_EQ(container->record.take(), (calls{"OnShowWindow(FALSE)", "OnInPlaceDeactivate"}));
        EXPECT_FALSE(control->m_bInPlaceActive);
        EXPECT_EQ(control->m_hWnd, nullptr);
    }
}

TEST_F(FrameworkActivation, PrimaryAndUiVerbsActivateWithTheUserInterface)
{
    for (const LONG verb : {OLEIVERB_PRIMARY, OLEIVERB_UIACTIVATE}) {
        set_site();
        EXPECT_EQ(do_verb(verb), S_OK);
        if (verb == OLEIVERB_PRIMARY) {
            EXPECT_EQ(container->record.take(), in_place)
                << "in user mode the primary verb activates in place only";
            EXPECT_EQ(do_verb(OLEIVERB_UIACTIVATE), S_OK);
            EXPECT_EQ(container->record.take(), ui_after_in_place);
        } else {
            EXPECT_EQ(container->record.take(), ui_at_once);
        }
        EXPECT_TRUE(control->m_bUIActive);
        EXPECT_EQ(GetFocus(), control->m_hWnd);
        EXPECT_EQ(container->frame.active, static_cast<IOleInPlaceActiveObject*>(control.p));
        EXPECT_EQ(container->document.active, static_cast<IOleInPlaceActiveObject*>(control.p));

        close();
        EXPECT_EQ(container->record.take(), close_of_ui_active);
        EXPECT_EQ(container->frame.active, nullptr);
        EXPECT_EQ(container->document.active, nullptr);
    }
}

TEST_F(FrameworkActivation, VerbsWithoutEffect)
{
    set_site();
    EXPECT_EQ(do_verb(OLEIVERB_OPEN), S_OK);
    EXPECT_EQ(do_verb(OLEIVERB_DISCARDUNDOSTATE), S_OK);
    EXPECT_EQ(do_verb(-7), E_NOTIMPL);
    EXPECT_EQ(do_verb(1), E_NOTIMPL);
    EXPECT_EQ(container->record.take(), calls{});
    EXPECT_EQ(do_verb(OLEIVERB_HIDE), S_OK);
    EXPECT_EQ(container->record.take(), calls{});
    close();
}

TEST_F(FrameworkActivation, HideDeactivatesTheUserInterfaceAndHidesTheWindow)
{
    set_site();
    EXPECT_EQ(do_verb(OLEIVERB_UIACTIVATE), S_OK);
    container->record.take();
    EXPECT_EQ(do_verb(OLEIVERB_HIDE), S_OK);
    const calls recorded = container->record.take();
    EXPECT_EQ(calls(recorded.begin(), recorded.begin() + 4), ui_end);
    EXPECT_FALSE(control->GetStyle() & WS_VISIBLE);
    EXPECT_TRUE(control->m_bInPlaceActive);

    EXPECT_EQ(do_verb(OLEIVERB_SHOW), S_OK);
    EXPECT_EQ(container->record.take(), (calls{"GetWindow", "GetWindowContext", "ShowObject"}));
    EXPECT_TRUE(control->GetStyle() & WS_VISIBLE);
    EXPECT_EQ(control->created.size(), 1u) << "the window is kept";
    close();
}

TEST_F(FrameworkActivation, DesignerHasNoPrimaryVerb)
{
    set_site();
    container->user_mode = false;
    EXPECT_EQ(do_verb(OLEIVERB_PRIMARY), E_NOTIMPL);
    EXPECT_EQ(container->record.take(), calls{});
    container->user_mode = true;
    EXPECT_EQ(do_verb(OLEIVERB_PRIMARY), S_OK);
    EXPECT_EQ(container->record.take(), in_place);
    close();
}

TEST_F(FrameworkActivation, DocumentHostCreatesAViewAndShowsIt)
{
    set_site();
    ATL::CComPtr<IOleDocumentView> view;
    ASSERT_EQ(control->CreateView(container.get(), nullptr, 0, &view), S_OK);
    RECT place{1, 2, 33, 44};
    EXPECT_EQ(view->SetRect(&place), S_OK);
    EXPECT_EQ(container->record.take(), calls{});
    EXPECT_EQ(view->Show(TRUE), S_OK);
    EXPECT_EQ(container->record.take(), in_place);
    EXPECT_EQ(view->UIActivate(TRUE), S_OK);
    EXPECT_EQ(container->record.take(), ui_after_in_place);
    EXPECT_EQ(view->UIActivate(TRUE), S_OK) << "already active: only shown";
    EXPECT_EQ(container->record.take(), (calls{"GetWindow", "GetWindowContext", "ShowObject"}));
    EXPECT_EQ(view->UIActivate(FALSE), S_OK);
    EXPECT_EQ(container->record.take(), ui_end);
    EXPECT_EQ(view->UIActivate(FALSE), S_OK);
    EXPECT_EQ(container->record.take(), calls{});
    EXPECT_EQ(view->CloseView(0), S_OK);
    EXPECT_EQ(container->record.take(), calls{"OnInPlaceDeactivate"});
    close();
    EXPECT_EQ(container->record.take(), calls{}) << "nothing remains to be deactivated";
}

TEST_F(FrameworkActivation, ViewGetsItsSiteThenUserInterfaceThenPlace)
{
    ASSERT_EQ(control->SetInPlaceSite(container.get()), S_OK);
    EXPECT_EQ(control->UIActivate(TRUE), S_OK) << "also without a client site";
    calls expected = ui_at_once;
    expected.erase(expected.begin() +
                   5);   // without a client site there is no control site to notify of the focus
    expected.pop_back(); // and none to be shown in
    EXPECT_EQ(container->record.take(), expected);
    RECT place{1, 2, 33, 44};
    EXPECT_EQ(control->SetRect(&place), S_OK);
    EXPECT_TRUE(same(place_of_control(), place));
    set_site();
    EXPECT_EQ(control->Show(TRUE), S_OK);
    EXPECT_EQ(container->record.take(), (calls{"GetWindow", "GetWindowContext", "ShowObject"}));
    close();
}

TEST_F(FrameworkActivation, DeactivationInTwoStepsAndTwice)
{
    set_site();
    EXPECT_EQ(do_verb(OLEIVERB_UIACTIVATE), S_OK);
    container->record.take();
    EXPECT_EQ(control->UIDeactivate(), S_OK);
    EXPECT_EQ(container->record.take(), ui_end);
    EXPECT_EQ(control->UIDeactivate(), S_OK);
    EXPECT_EQ(control->InPlaceDeactivate(), S_OK);
    EXPECT_EQ(container->record.count("OnInPlaceDeactivate"), 1);
    EXPECT_EQ(control->InPlaceDeactivate(), S_OK);
    EXPECT_EQ(container->record.count("OnInPlaceDeactivate"), 1);
    container->record.take();

    EXPECT_EQ(do_verb(OLEIVERB_SHOW), S_OK) << "can be activated again";
    EXPECT_EQ(container->record.take(), in_place);
    EXPECT_EQ(control->created.size(), 2u);
    close();
    close();
}

TEST_F(FrameworkActivation, InPlaceDeactivationEndsTheUserInterfaceFirst)
{
    set_site();
    EXPECT_EQ(do_verb(OLEIVERB_UIACTIVATE), S_OK);
    container->record.take();
    EXPECT_EQ(control->InPlaceDeactivate(), S_OK);
    EXPECT_EQ(container->record.take(), calls(close_of_ui_active.begin() + 1, close_of_ui_active.end()));
    close();
}

TEST_F(FrameworkActivation, WindowIsClipped)
{
    set_site();
    container->clip = {0, 0, 105, 300};
    EXPECT_EQ(do_verb(OLEIVERB_SHOW), S_OK);
    RECT region{};
    EXPECT_EQ(GetWindowRgnBox(control->m_hWnd, &region), SIMPLEREGION);
    EXPECT_TRUE(same(region, {0, 0, 100, 150}));

    const RECT moved{50, 60, 90, 110};
    EXPECT_EQ(control->SetObjectRects(&moved, &moved), S_OK);
    EXPECT_TRUE(same(place_of_control(), moved));
    EXPECT_EQ(GetWindowRgnBox(control->m_hWnd, &region), ERROR) << "no region";
    const RECT elsewhere{300, 300, 310, 310};
    EXPECT_EQ(control->SetObjectRects(&moved, &elsewhere), S_OK);
    EXPECT_EQ(GetWindowRgnBox(control->m_hWnd, &region), ERROR) << "no intersection, no region";
    EXPECT_EQ(control->SetObjectRects(nullptr, &moved), E_POINTER);
    EXPECT_EQ(control->SetObjectRects(&moved, nullptr), E_POINTER);
    close();
    EXPECT_EQ(control->SetObjectRects(&elsewhere, &elsewhere), S_OK)
        << "without a window the position is stored";
    EXPECT_TRUE(same(control->m_rcPos, elsewhere));
}

// For the window of a control: counts the calculations of its frame, each of which repaints it.
class frame_watch : public ATL::CWindowImpl<frame_watch>
{
public:
    BEGIN_MSG_MAP(frame_watch)
    MESSAGE_HANDLER(WM_NCCALCSIZE, OnCalculation)
    END_MSG_MAP()

    int calculations = 0;

private:
    LRESULT OnCalculation(UINT, WPARAM, LPARAM, BOOL& handled)
    {
        ++calculations;
        handled = FALSE;
        return 0;
    }
};

TEST_F(FrameworkActivation, WindowWithoutARegionIsPlacedWithoutARepaint)
{
    set_site();
    EXPECT_EQ(do_verb(OLEIVERB_SHOW), S_OK);
    const RECT place = place_of_control();
    frame_watch watch;
    ASSERT_TRUE(watch.SubclassWindow(control->m_hWnd));
    EXPECT_EQ(control->SetObjectRects(&place, &place), S_OK);
    EXPECT_EQ(watch.calculations, 0);

    RECT clip = place;
    --clip.right;
    EXPECT_EQ(control->SetObjectRects(&place, &clip), S_OK);
    EXPECT_GT(watch.calculations, 0) << "a region was set";
    watch.calculations = 0;
    EXPECT_EQ(control->SetObjectRects(&place, &place), S_OK);
    EXPECT_GT(watch.calculations, 0) << "the region was removed";
    watch.UnsubclassWindow();
    close();
}

TEST_F(FrameworkActivation, FocusFromOutsideActivatesTheUserInterface)
{
    set_site();
    EXPECT_EQ(do_verb(OLEIVERB_SHOW), S_OK);
    container->record.take();
    SetFocus(control->m_hWnd);
    EXPECT_TRUE(control->m_bUIActive);
    const calls recorded = container->record.take();
    EXPECT_EQ(std::count(recorded.begin(), recorded.end(), "OnUIActivate"), 1);
    EXPECT_EQ(std::count(recorded.begin(), recorded.end(), "OnFocus(TRUE)"), 1);
    EXPECT_EQ(control->UIDeactivate(), S_OK);
    container->record.take();

    SendMessageW(control->m_hWnd, WM_MOUSEACTIVATE, reinterpret_cast<WPARAM>(container->window), 0);
    EXPECT_TRUE(control->m_bUIActive) << "a click UI-activates";
    EXPECT_EQ(control->UIDeactivate(), S_OK);
    container->user_mode = false;
    SendMessageW(control->m_hWnd, WM_MOUSEACTIVATE, reinterpret_cast<WPARAM>(container->window), 0);
    EXPECT_FALSE(control->m_bUIActive) << "not in design mode";
    close();
}

TEST_F(FrameworkActivation, NewClientSiteBringsItsOwnInPlaceSite)
{
    set_site();
    EXPECT_EQ(do_verb(OLEIVERB_SHOW), S_OK);
    EXPECT_EQ(control->InPlaceDeactivate(), S_OK);
    strict_container other;
    EXPECT_EQ(control->SetClientSite(&other), S_OK);
    EXPECT_TRUE(container->released());
    container->record.take();
    EXPECT_EQ(do_verb(OLEIVERB_SHOW), S_OK);
    EXPECT_EQ(other.record.take(), in_place);
    EXPECT_EQ(container->record.take(), calls{});
    close();
    EXPECT_TRUE(other.released());
}

TEST_F(FrameworkActivation, SameClientSiteAgainIsNoChange)
{
    set_site();
    const long count = container->references();
    set_site();
    EXPECT_EQ(container->references(), count);
    close();
}

} // namespace
} // namespace quill::test
