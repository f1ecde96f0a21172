// A host that releases its last reference to the document inside a call that the document makes: the document
// is destroyed when the host's own call returns, and not accessed afterwards.
#include "tests/document/document_fixture.h"
#include "tests/support/faults/freed_memory_trap.h"

#include <gtest/gtest.h>
#include <ole2.h>
#include <urlmon.h>

#include <algorithm>
#include <functional>
#include <utility>

namespace quill::test {
namespace {

// A call of the host that releases the host's last reference: the document exists until the call returns.
struct last_call
{
    const char* name;
    const char* inside; // the document's call of the host
    activation_order order;
    std::function<void(IUnknown&)> make;
};

template <class Interface>
std::function<void(IUnknown&)> on(void (*call)(Interface&))
{
    return [call](IUnknown& document) {
        Microsoft::WRL::ComPtr<Interface> queried;
        ASSERT_EQ(document.QueryInterface(IID_PPV_ARGS(&queried)), S_OK);
        Interface* const unreferenced = queried.Get();
        queried.Reset(); // the reference of the fixture is the last one
        call(*unreferenced);
    };
}

const last_call last_calls[] = {
    {"ShowFalse", "IOleInPlaceSite::OnUIDeactivate", activation_order::site_then_ui_activate,
     on<IOleDocumentView>([](IOleDocumentView& view) { view.Show(FALSE); })},
    {"UIActivateFalse", "IOleInPlaceFrame::SetActiveObject", activation_order::site_then_ui_activate,
     on<IOleDocumentView>([](IOleDocumentView& view) { view.UIActivate(FALSE); })},
    {"UIActivateTrue", "IOleInPlaceFrame::SetBorderSpace", activation_order::create_view_with_site,
     on<IOleDocumentView>([](IOleDocumentView& view) { view.UIActivate(TRUE); })},
    {"CloseView", "IOleInPlaceSite::OnUIDeactivate", activation_order::site_then_ui_activate,
     on<IOleDocumentView>([](IOleDocumentView& view) { view.CloseView(0); })},
    {"CloseViewOfAnInPlaceActive", "IOleInPlaceSite::OnInPlaceDeactivate",
     activation_order::create_view_with_site,
     on<IOleDocumentView>([](IOleDocumentView& view) { view.CloseView(0); })},
    {"SetInPlaceSite", "IOleInPlaceSite::OnInPlaceDeactivate", activation_order::create_view_with_site,
     on<IOleDocumentView>([](IOleDocumentView& view) { view.SetInPlaceSite(nullptr); })},
    {"InPlaceDeactivate", "IOleInPlaceSite::OnUIDeactivate", activation_order::site_then_ui_activate,
     on<IOleInPlaceObject>([](IOleInPlaceObject& object) { object.InPlaceDeactivate(); })},
    {"Close", "IOleClientSite::OnShowWindow", activation_order::site_then_ui_activate,
     on<IOleObject>([](IOleObject& object) { object.Close(OLECLOSE_NOSAVE); })},
    {"Hide", "IOleInPlaceSite::OnUIDeactivate", activation_order::site_then_ui_activate,
     on<IOleObject>(
         [](IOleObject& object) { object.DoVerb(OLEIVERB_HIDE, nullptr, nullptr, 0, nullptr, nullptr); })},
    {"Primary", "IOleClientSite::ShowObject", activation_order::create_view_with_site,
     on<IOleObject>(
         [](IOleObject& object) { object.DoVerb(OLEIVERB_PRIMARY, nullptr, nullptr, 0, nullptr, nullptr); })},
    {"PrimaryAtTheUserMode", "IDispatch::Invoke", activation_order::create_view_with_site,
     on<IOleObject>(
         [](IOleObject& object) { object.DoVerb(OLEIVERB_PRIMARY, nullptr, nullptr, 0, nullptr, nullptr); })},
    {"TranslateAccelerator", "IOleInPlaceSite::GetWindowContext", activation_order::create_view_with_site,
     on<IOleInPlaceActiveObject>([](IOleInPlaceActiveObject& object) {
         MSG key{};
         key.message = WM_KEYDOWN;
         key.wParam = 'O';
         object.TranslateAccelerator(&key);
     })},
    {"Print", "viewer::12", activation_order::create_view_with_site,
     on<IOleCommandTarget>(
         [](IOleCommandTarget& target) { target.Exec(nullptr, OLECMDID_PRINT, 0, nullptr, nullptr); })},
};

// The document is larger than its other allocations.
constexpr std::size_t document_size = 1000;

class DocumentReleasedInside : public testing::TestWithParam<last_call>
{
};

bool is_destroyed(document_fixture& fixture)
{
    const auto logged = fixture.take_log();
    return std::find(logged.begin(), logged.end(), "~@") != logged.end();
}

TEST_P(DocumentReleasedInside, IsDestroyedAfterTheCallReturns)
{
    const last_call& call = GetParam();
    document_fixture fixture;
    const freed_memory_trap trap(fixture.module.handle(), document_size);
    fixture.host.order = call.order;
    fixture.host.site.offered.ambient_properties = true;
    fixture.show_file(fixture.pdf());
    IUnknown* const last = fixture.document.Get();
    bool is_released = false;
    fixture.take_log();
    fixture.host.calls.when(call.inside, [&] {
        if (std::exchange(is_released, true))
            return;
        fixture.host.view.Reset();
        fixture.host.document = nullptr;
        fixture.document.Reset();
        fixture.host.frame.drop_active_object();
        EXPECT_FALSE(is_destroyed(fixture)) << "destroyed with its own method on the stack";
    });
    call.make(*last);
    EXPECT_TRUE(is_released) << "the call was not made";
    EXPECT_TRUE(is_destroyed(fixture));
    EXPECT_EQ(fixture.host.site.references(), 0);
    EXPECT_EQ(fixture.host.frame.references(), 0);
    EXPECT_EQ(fixture.viewers.living_viewers(), 0);
}

INSTANTIATE_TEST_SUITE_P(Document, DocumentReleasedInside, testing::ValuesIn(last_calls),
                         [](const testing::TestParamInfo<last_call>& call) {
                             return std::string(call.param.name);
                         });

struct DocumentReleasedWhile : testing::Test
{
    document_fixture fixture;
    freed_memory_trap trap{fixture.module.handle(), document_size};
};

// The interfaces of a new site are queried while it is set.
TEST_F(DocumentReleasedWhile, ItsClientSiteIsSet)
{
    fixture.create();
    IOleObject* const object = fixture.as<IOleObject>().Get();
    fixture.take_log();
    fixture.host.calls.when("site::QueryInterface", [&] {
        fixture.host.document = nullptr;
        fixture.document.Reset();
        EXPECT_FALSE(is_destroyed(fixture));
    });
    EXPECT_EQ(object->SetClientSite(fixture.host.site.client_site()), S_OK);
    EXPECT_TRUE(is_destroyed(fixture));
    EXPECT_EQ(fixture.host.site.references(), 0);
}

TEST_F(DocumentReleasedWhile, ItsMonikerIsRequested)
{
    fixture.create();
    IPersistMoniker* const persist = fixture.as<IPersistMoniker>().Get();
    fake_moniker moniker(fixture.host.calls, "loaded moniker");
    moniker.display_name = unserved_url;
    fixture.take_log();
    fixture.host.calls.when("loaded moniker::GetDisplayName", [&] {
        fixture.host.document = nullptr;
        fixture.document.Reset();
        EXPECT_FALSE(is_destroyed(fixture));
    });
    EXPECT_EQ(persist->Load(FALSE, &moniker, nullptr, STGM_READ), S_OK);
    EXPECT_TRUE(is_destroyed(fixture));
}

// Runs an action once, after the window procedure has handled a new position of the window.
class after_placing
{
public:
    after_placing(HWND window, std::function<void()> action) : window_(window), action_(std::move(action))
    {
        instance_ = this;
        hook_ = SetWindowsHookExW(WH_CALLWNDPROCRET, &procedure, nullptr, GetCurrentThreadId());
        EXPECT_NE(hook_, nullptr);
    }
    ~after_placing() { UnhookWindowsHookEx(hook_); }
    after_placing(const after_placing&) = delete;
    after_placing& operator=(const after_placing&) = delete;

private:
    static LRESULT CALLBACK procedure(int code, WPARAM wparam, LPARAM lparam)
    {
        const auto& returned = *reinterpret_cast<const CWPRETSTRUCT*>(lparam);
        if (code == HC_ACTION && returned.message == WM_WINDOWPOSCHANGED &&
            returned.hwnd == instance_->window_ && instance_->action_)
            std::exchange(instance_->action_, nullptr)();
        return CallNextHookEx(nullptr, code, wparam, lparam);
    }

    static inline after_placing* instance_ = nullptr;
    HWND window_;
    std::function<void()> action_;
    HHOOK hook_ = nullptr;
};

TEST_F(DocumentReleasedWhile, ItsViewIsPlaced)
{
    fixture.show_file(fixture.pdf());
    IOleDocumentView* const view = fixture.as<IOleDocumentView>().Get();
    bool is_released = false;
    fixture.take_log();
    const after_placing placing(fixture.window(), [&] {
        is_released = true;
        fixture.host.view.Reset();
        fixture.host.document = nullptr;
        fixture.document.Reset();
        fixture.host.frame.drop_active_object();
        EXPECT_FALSE(is_destroyed(fixture)) << "destroyed with its own method on the stack";
    });
    RECT smaller{10, 20, 210, 220};
    EXPECT_EQ(view->SetRect(&smaller), S_OK);
    EXPECT_TRUE(is_released);
    EXPECT_TRUE(is_destroyed(fixture));
    EXPECT_EQ(fixture.host.site.references(), 0);
}
} // namespace
} // namespace quill::test
