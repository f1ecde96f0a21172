#include "tests/soak/random_document.h"

#include "retrieval/download/window_messages.h"
#include "tests/support/wait.h"

#include <windows.h>

#include <ole2.h>
#include <urlmon.h>

namespace quill::soak {
namespace {

constexpr std::size_t most_documents = 3;
constexpr UINT unknown_message = 0x87f0;
constexpr wchar_t nowhere[] = L"quilltest://host.test/a/c/d.pdf#page=2#zoom=50";

// A server with every kind of response: at once, piece by piece, no PDF, 404, none.
void serve(test::http_server& server)
{
    server.route("/quick.pdf", test::http_response::ok(test::pdf_body(20'000)));
    auto slow = test::http_response::slow(test::pdf_body(40'000), 2'000, 10);
    server.route("/slow.pdf", slow);
    server.route("/page.pdf", test::http_response::ok("<html>no PDF</html>", "text/html"));
    server.route("/gone.pdf", test::http_response::not_found());
    auto silent = test::http_response::ok(test::pdf_body(20'000));
    silent.hold_head = true;
    server.route("/silent.pdf", silent);
}

} // namespace

random_documents::random_documents(document_soak_fixture& fixture, random_source& random)
    : fixture_(fixture), random_(random)
{
    serve(fixture_.server);
}

const std::vector<random_documents::named_action>& random_documents::actions()
{
    static const std::vector<named_action> all = {
        {"verb", &random_documents::verb},
        {"verb", &random_documents::verb},
        {"load a file", &random_documents::load},
        {"load an address", &random_documents::load_address},
        {"fetch", &random_documents::fetch},
        {"send", &random_documents::send},
        {"send", &random_documents::send},
        {"send", &random_documents::send},
        {"post", &random_documents::post},
        {"pump", &random_documents::pump},
        {"pump", &random_documents::pump},
        {"destroy its window", &random_documents::destroy_window},
        {"destroy the host's windows", &random_documents::destroy_host_windows},
        {"let a call fail", &random_documents::fail_a_call},
        {"disturb a call", &random_documents::disturb_a_call},
        {"let the viewer answer otherwise", &random_documents::vary_viewer},
        {"close", &random_documents::close_document},
        {"IOleObject", &random_documents::call_ole_object},
        {"advise", &random_documents::call_advise},
        {"IOleDocumentView", &random_documents::call_view},
        {"IOleDocumentView", &random_documents::call_view},
        {"IOleDocument", &random_documents::call_document},
        {"IOleInPlaceObject", &random_documents::call_in_place},
        {"IOleInPlaceActiveObject", &random_documents::call_active},
        {"IOleCommandTarget", &random_documents::call_command},
        {"IViewObjectEx", &random_documents::call_drawing},
        {"IOleControl", &random_documents::call_control},
        {"IPersist", &random_documents::call_persistence},
        {"IDataObject", &random_documents::call_data},
        {"IDispatch", &random_documents::call_dispatch},
        {"QueryInterface", &random_documents::query},
    };
    return all;
}

const char* random_documents::step()
{
    if (documents_.empty() || (documents_.size() < most_documents && random_.chance(20))) {
        documents_.push_back(std::make_unique<hosted_document>(fixture_));
        // The calls of a document that is saved, resized or undone.
        for (const char* call : {"IOleClientSite::SaveObject", "IOleClientSite::RequestNewObjectLayout",
                                 "IOleInPlaceSite::OnPosRectChange", "IOleInPlaceSite::DeactivateAndUndo",
                                 "IOleInPlaceSite::DiscardUndoState"})
            documents_.back()->host.calls.allow(call);
        return "create";
    }
    if (random_.chance(30)) {
        documents_.erase(documents_.begin() + static_cast<std::ptrdiff_t>(random_.below(documents_.size())));
        viewers_.script.forget_calls();
        return "release";
    }
    hosted_document& document = any();
    document.host.calls.forget_calls();
    const named_action& chosen = actions()[random_.below(actions().size())];
    (this->*chosen.run)(document);
    return chosen.name;
}

void random_documents::end()
{
    documents_.clear();
}

HWND random_documents::any_window(hosted_document& document)
{
    switch (random_.below(6)) {
    case 0:
        return nullptr;
    case 1:
        return reinterpret_cast<HWND>(static_cast<INT_PTR>(0x70ff2)); // not of this process
    case 2:
        return document.window();
    default:
        return document.host.view_window();
    }
}

LPCRECT random_documents::any_rectangle()
{
    rectangle_ = random_.rectangle();
    return random_.chance(5) ? nullptr : &rectangle_;
}

void random_documents::verb(hosted_document& document)
{
    const LONG number = random_.chance(8) ? random_.number() : -static_cast<LONG>(random_.below(9)) + 2;
    document.host.order = static_cast<test::activation_order>(random_.below(4));
    document.as<IOleObject>()->DoVerb(number, nullptr,
                                      random_.chance(5) ? nullptr : document.host.site.client_site(),
                                      random_.number(), any_window(document), any_rectangle());
}

void random_documents::load(hosted_document& document)
{
    const std::wstring path = random_.one_of<std::wstring>({fixture_.local_pdf, fixture_.local_pdf, L"",
                                                            L"C:\\missing.pdf", L"\\\\nobody\\share\\x.pdf",
                                                            std::wstring(700, L'x'), L"?*<>|", L"C:\\"});
    document.as<IPersistFile>()->Load(random_.chance(10) ? nullptr : path.c_str(),
                                      static_cast<DWORD>(random_.number()));
}

void random_documents::load_address(hosted_document& document)
{
    test::fake_moniker moniker(document.host.calls, "loaded moniker");
    if (!random_.chance(6))
        moniker.display_name = random_.one_of<std::wstring>(
            {nowhere, nowhere, L"", L"x", L"quilltest://" + std::wstring(3'000, L'%') + L"/x.pdf",
             L"quilltest://h/\xD800\xDFFF\xFFFF.pdf#page=99999999999#zoom=-1"});
    document.as<IPersistMoniker>()->Load(random_.chance(2), random_.chance(10) ? nullptr : &moniker, nullptr,
                                         0);
    document.host.browser.location_url = nowhere;
}

// A document of the server, shown at once, so that it is loading during the next steps. A WinINet call that
// waits for a silent server cannot be cancelled.
void random_documents::fetch(hosted_document& document)
{
    const bool is_urlmon = random_.chance(2);
    fixture_.use(is_urlmon ? download_path::urlmon : download_path::wininet);
    const std::wstring target =
        random_.one_of<std::wstring>({L"/quick.pdf#page=3", L"/slow.pdf", L"/slow.pdf", L"/page.pdf",
                                      L"/gone.pdf", is_urlmon ? L"/silent.pdf" : L"/quick.pdf#zoom=75"});
    document.load_url_if_taken(fixture_.server.url(target));
    document.as<IOleObject>()->DoVerb(OLEIVERB_SHOW, nullptr, document.host.site.client_site(), -1,
                                      document.host.view_window(), &document.host.position);
    fixture_.server.forget_requests();
}

random_documents::message random_documents::any_message()
{
    const LONG number = random_.number();
    const auto wparam = static_cast<WPARAM>(random_.number());
    const bool null = random_.chance(4);
    const auto pointer = [null](void* to) { return null ? LPARAM{0} : reinterpret_cast<LPARAM>(to); };
    switch (random_.below(9)) {
    case 0:
        return {WM_USER_OPENLINK, wparam, pointer(text_)};
    case 1:
        return {WM_USER_PROGRESS, 0, pointer(record_)};
    case 2: // capacities are correct: the buffer is as long as the message says
        return {WM_USER_GETURL, random_.below(std::size(text_)), pointer(text_)};
    case 3:
        return {random_.one_of<UINT>({WM_USER_GETURLLENGTH, WM_USER_GETBROWSERWINDOW, WM_USER_GETINSTANCE}),
                wparam, pointer(record_)};
    case 4:
        return {WM_USER_SETCACHEFILE, wparam,
                pointer(const_cast<wchar_t*>(random_.chance(2) ? fixture_.local_pdf.c_str() : text_))};
    case 5:
        return {WM_USER_LOGFILE, wparam, pointer(text_)};
    case 6:
        return {random_.one_of<UINT>({reserved_window_message, WM_USER_LOADFILE, WM_USER_SAVEAS,
                                      WM_USER_RELEASE, unknown_message}),
                wparam, number};
    default:
        return {random_.one_of<UINT>(
                    {WM_SIZE,       WM_MOVE,          WM_PAINT,          WM_ERASEBKGND, WM_KEYDOWN,
                     WM_KEYUP,      WM_CHAR,          WM_MOUSEMOVE,      WM_LBUTTONUP,  WM_SETFOCUS,
                     WM_KILLFOCUS,  WM_SHOWWINDOW,    WM_ENABLE,         WM_COMMAND,    WM_TIMER,
                     WM_HSCROLL,    WM_VSCROLL,       WM_CLOSE,          WM_DESTROY,    WM_NULL,
                     WM_CANCELMODE, WM_SETREDRAW,     WM_ACTIVATE,       WM_NCHITTEST,  WM_MOUSEACTIVATE,
                     WM_APP + 1,    WM_GETTEXTLENGTH, WM_CAPTURECHANGED, WM_MOUSEWHEEL}),
                wparam, number};
    }
}

void random_documents::send(hosted_document& document)
{
    const message chosen = any_message();
    if (const HWND window = document.window())
        SendMessageW(window, chosen.number, chosen.wparam, chosen.lparam);
}

void random_documents::post(hosted_document& document)
{
    const message chosen = any_message();
    if (const HWND window = document.window())
        PostMessageW(window, chosen.number, chosen.wparam, chosen.lparam);
}

// Sometimes until the next piece of a slow document has arrived.
void random_documents::pump(hosted_document&)
{
    const ULONGLONG end = GetTickCount64() + random_.below(30);
    test::wait_until([end] { return GetTickCount64() >= end; });
}

void random_documents::destroy_window(hosted_document& document)
{
    if (const HWND window = document.window(); window && random_.chance(3))
        DestroyWindow(window);
}

void random_documents::destroy_host_windows(hosted_document& document)
{
    if (random_.chance(6))
        document.host.destroy_windows();
}

void random_documents::fail_a_call(hosted_document& document)
{
    document.host.calls.fail_call_number(static_cast<int>(1 + random_.below(12)),
                                         test::host_faults[random_.below(4)]);
}

// Re-enters the document from inside one of the next calls of the host.
void random_documents::disturb_a_call(hosted_document& document)
{
    document.host.calls.when_call_number(static_cast<int>(1 + random_.below(12)), [this, &document] {
        document.host.calls.when_call_number(0, {});
        if (!document.document)
            return; // its last Release
        const named_action& chosen = actions()[random_.below(actions().size())];
        (this->*chosen.run)(document);
    });
}

void random_documents::vary_viewer(hosted_document&)
{
    const auto method = random_.one_of<DISPID>({1, 4, 9, 12, 15, 16, 19, 23, 24});
    VARIANT value{};
    value.vt = random_.one_of<VARTYPE>({VT_EMPTY, VT_NULL, VT_BOOL, VT_I4, VT_UI8, VT_ERROR});
    value.ullVal = random_.one_of<ULONGLONG>({0, 0xffff, 0xffffffffffffffff, 0x70ff2});
    viewers_.script.answer(method, random_.one_of<HRESULT>({S_OK, S_FALSE, E_FAIL}), value);
    viewers_.script.answers_viewer_interface = !random_.chance(8);
    viewers_.script.answers_ole_object = random_.chance(2);
}

void random_documents::close_document(hosted_document& document)
{
    switch (random_.below(3)) {
    case 0:
        return document.close_as_navigating_away();
    case 1:
        return document.close_view_alone();
    default:
        document.as<IOleObject>()->Close(static_cast<DWORD>(random_.below(4)));
    }
}

} // namespace quill::soak
