#include "tests/document/document_run.h"

#include "tests/document/document_messages.h"
#include "tests/support/wait.h"

#include <ole2.h>
#include <urlmon.h>
#include <wrl/client.h>

#include <algorithm>

namespace quill::test {
namespace {

using Microsoft::WRL::ComPtr;

void use_window(document_fixture& fixture)
{
    if (const HWND window = fixture.window()) {
        SendMessageW(window, message_load_file, 0, 0);
        SendMessageW(window, message_open_link, 1, reinterpret_cast<LPARAM>(L"../x.pdf"));
        HWND browser = nullptr;
        SendMessageW(window, message_get_browser_window, 0, reinterpret_cast<LPARAM>(&browser));
        SendMessageW(window, WM_KEYDOWN, 'A', 1);
        SendMessageW(window, WM_MOUSEACTIVATE, 0, 0);
        SendMessageW(window, WM_SIZE, 0, MAKELPARAM(300, 200));
    }
    MSG key{};
    key.message = WM_KEYDOWN;
    key.wParam = 'F';
    fixture.as<IOleInPlaceActiveObject>()->TranslateAccelerator(&key);
    fixture.as<IOleCommandTarget>()->Exec(nullptr, OLECMDID_PRINT, 0, nullptr, nullptr);
}

// after_window runs after each step that may have created a window.
template <class AfterWindow>
void run_once_loaded(document_fixture& fixture, const AfterWindow& after_window)
{
    fixture.do_verb(OLEIVERB_SHOW);
    after_window();
    fixture.do_verb(OLEIVERB_UIACTIVATE);
    after_window();
    use_window(fixture);
    after_window(); // a click activates
    const auto view = fixture.as<IOleDocumentView>();
    view->UIActivate(FALSE);
    fixture.as<IOleInPlaceObject>()->InPlaceDeactivate();
    view->Show(TRUE);
    after_window();
    view->CloseView(0);
    fixture.as<IOleObject>()->Close(OLECLOSE_NOSAVE);
    fixture.as<IOleObject>()->SetClientSite(nullptr);
}

bool begins_with(const std::vector<std::string>& lines, const char* beginning)
{
    return std::any_of(lines.begin(), lines.end(),
                       [beginning](const std::string& line) { return line.rfind(beginning, 0) == 0; });
}

// No result of a host affects the running worker: its file must be delivered.
int wait_for_hand_over(document_fixture& fixture)
{
    auto lines = fixture.take_log();
    const bool has_no_file_yet = begins_with(lines, "@ OnCreate [#3]");
    EXPECT_EQ(begins_with(lines, "@ OnCreate [URL]"), has_no_file_yet) << "nothing is fetched";
    if (!has_no_file_yet)
        return 0;
    const bool came = begins_with(lines, "@ LOADFILE ") ||
                      wait_until([&] { return begins_with(fixture.take_log(), "@ LOADFILE "); });
    EXPECT_TRUE(came) << "the file was not handed over: "
                      << testing::PrintToString(fixture.log.worker_lines());
    return 1;
}

} // namespace

void run_document(document_fixture& fixture)
{
    fixture.create();
    fixture.set_site();
    fixture.load_file(fixture.pdf());
    run_once_loaded(fixture, [] {});
}

int run_document_from_server(document_fixture& fixture, const std::wstring& url)
{
    fixture.create();
    fixture.set_site();
    ComPtr<IBindCtx> context;
    EXPECT_EQ(CreateBindCtx(0, &context), S_OK);
    fake_moniker moniker(fixture.host.calls, "loaded moniker");
    moniker.display_name = url;
    EXPECT_EQ(fixture.as<IPersistMoniker>()->Load(FALSE, &moniker, context.Get(), STGM_READ), S_OK);
    pump_messages(); // a thread that has not dispatched messages for seconds counts as hung
    int downloads = 0;
    run_once_loaded(fixture, [&] { downloads += wait_for_hand_over(fixture); });
    EXPECT_EQ(context.Reset(), 0u) << "the bind context is still referenced";
    return downloads;
}

void prepare_host(document_fixture& fixture, activation_order order)
{
    fixture.host.order = order;
    fixture.host.site.offered.ambient_properties = true;
    fixture.host.object_moniker.display_name = L"http://host.test/a/c/d.pdf";
    fixture.host.browser.location_url = L"http://host.test/a/c/d.pdf#page=2#zoom=50";
}

int count_host_calls(activation_order order)
{
    document_fixture fixture;
    prepare_host(fixture, order);
    run_document(fixture);
    return fixture.host.calls.total();
}

std::string name_of(activation_order order)
{
    return order == activation_order::create_view_with_site ? "CreateViewWithSite" : "SiteThenUiActivate";
}

std::string name_of(call_fault kind)
{
    switch (kind) {
    case call_fault::error:
        return "Failure";
    case call_fault::error_untouched:
        return "FailureUntouched";
    case call_fault::error_with_value:
        return "FailureWithValue";
    case call_fault::null_result:
        return "SuccessNull";
    case call_fault::untouched:
        return "SuccessUntouched";
    case call_fault::none:
        break;
    }
    return "None";
}

} // namespace quill::test
