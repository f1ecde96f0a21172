#include "tests/document/document_life.h"

#include "tests/document/document_messages.h"

#include <ole2.h>

namespace quill::test {

void live(document_bench& bench)
{
    bench.create();
    bench.set_site();
    bench.load_file(bench.pdf());
    bench.do_verb(OLEIVERB_SHOW);
    bench.do_verb(OLEIVERB_UIACTIVATE);
    if (const HWND window = bench.window()) {
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
    bench.as<IOleInPlaceActiveObject>()->TranslateAccelerator(&key);
    bench.as<IOleCommandTarget>()->Exec(nullptr, OLECMDID_PRINT, 0, nullptr, nullptr);
    const auto view = bench.as<IOleDocumentView>();
    view->UIActivate(FALSE);
    bench.as<IOleInPlaceObject>()->InPlaceDeactivate();
    view->Show(TRUE);
    view->CloseView(0);
    bench.as<IOleObject>()->Close(OLECLOSE_NOSAVE);
    bench.as<IOleObject>()->SetClientSite(nullptr);
}

void prepare_life(document_bench& bench, activation_order order)
{
    bench.host.order = order;
    bench.host.site.offered.ambient_properties = true;
    bench.host.object_moniker.display_name = L"http://host.test/a/c/d.pdf";
    bench.host.browser.location_url = L"http://host.test/a/c/d.pdf#page=2#zoom=50";
}

int calls_of_a_life(activation_order order)
{
    document_bench bench;
    prepare_life(bench, order);
    live(bench);
    return bench.host.calls.total();
}

std::string name_of(activation_order order)
{
    return order == activation_order::create_view_with_site ? "CreateViewWithSite" : "SiteThenUiActivate";
}

} // namespace quill::test
