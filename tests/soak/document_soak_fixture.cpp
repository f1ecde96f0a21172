#include "tests/soak/document_soak_fixture.h"

#include "tests/support/wait.h"

#include <windows.h>

#include <docobj.h>
#include <gtest/gtest.h>
#include <ole2.h>
#include <urlmon.h>

#include <stdexcept>

namespace quill::soak {

using Microsoft::WRL::ComPtr;

document_soak_fixture::document_soak_fixture() : local_pdf(files / L"sample.pdf")
{
    static const HRESULT ole = OleInitialize(nullptr);
    EXPECT_TRUE(SUCCEEDED(ole));
    EXPECT_TRUE(test::write_file(local_pdf, test::pdf_body(5'000)));
}

document_soak_fixture::~document_soak_fixture()
{
    EXPECT_EQ(module.can_unload_now(), S_OK);
}

std::size_t viewer_store::opened() const
{
    std::size_t count = 0;
    for (const auto& call : script.received)
        count += call.id == test::viewer_open;
    return count;
}

bool viewer_store::wait_until_opened(std::size_t times, DWORD deadline_ms) const
{
    return test::wait_until([this, times] { return opened() >= times; }, deadline_ms);
}

hosted_document::hosted_document(const document_soak_fixture& fixture)
{
    ComPtr<IClassFactory> factory;
    if (fixture.module.get_class_object(test::active_document_class_id, IID_PPV_ARGS(&factory)) != S_OK ||
        factory->CreateInstance(nullptr, IID_PPV_ARGS(&document)) != S_OK)
        throw std::runtime_error("no document object");
    host.document = document.Get();
    EXPECT_EQ(as<IOleObject>()->SetClientSite(host.site.client_site()), S_OK);
}

hosted_document::~hosted_document()
{
    host.view.Reset();
    host.frame.drop_active_object();
    host.document = nullptr;
    if (document)
        EXPECT_EQ(document.Detach()->Release(), 0u) << "the document is still referenced";
    EXPECT_EQ(host.site.references(), 0);
    EXPECT_EQ(host.frame.references(), 0);
    EXPECT_EQ(host.browser.references(), 0);
    EXPECT_EQ(host.shell.references(), 0);
    if (host.view_window())
        EXPECT_EQ(GetWindow(host.view_window(), GW_CHILD), nullptr) << "a window of the document is left";
}

void hosted_document::load_file(const std::wstring& path)
{
    EXPECT_EQ(as<IPersistFile>()->Load(path.c_str(), STGM_READ), S_OK);
}

void hosted_document::load_url(const std::wstring& url)
{
    EXPECT_EQ(try_to_load(url), S_OK);
}

void hosted_document::load_url_if_taken(const std::wstring& url)
{
    try_to_load(url);
}

HRESULT hosted_document::try_to_load(const std::wstring& url)
{
    test::fake_moniker moniker(host.calls, "loaded moniker");
    moniker.display_name = url;
    host.browser.location_url = url;
    return as<IPersistMoniker>()->Load(FALSE, &moniker, nullptr, STGM_READ);
}

HRESULT hosted_document::do_verb(LONG verb)
{
    test::pump_messages(); // a thread that has not dispatched messages for seconds counts as hung
    return as<IOleObject>()->DoVerb(verb, nullptr, host.site.client_site(), -1, host.view_window(),
                                    &host.position);
}

HWND hosted_document::window() const
{
    HWND found = nullptr;
    if (document)
        as<IOleWindow>()->GetWindow(&found);
    return found;
}

void hosted_document::close(std::size_t way)
{
    switch (way % 3) {
    case 0:
        return close_as_navigating_away();
    case 1:
        return close_as_closed_browser();
    default:
        return close_view_alone();
    }
}

void hosted_document::close_as_navigating_away()
{
    if (host.view)
        host.view->UIActivate(FALSE);
    as<IOleInPlaceObjectWindowless>()->InPlaceDeactivate();
    if (host.view) {
        host.view->Show(FALSE);
        host.view->CloseView(0);
        host.view->SetInPlaceSite(nullptr);
    }
    as<IOleObject>()->Close(OLECLOSE_NOSAVE);
    as<IOleObject>()->SetClientSite(nullptr);
}

void hosted_document::close_as_closed_browser()
{
    host.destroy_windows();
    close_as_navigating_away();
}

void hosted_document::close_view_alone()
{
    if (host.view)
        host.view->CloseView(0);
    as<IOleObject>()->SetClientSite(nullptr);
}

} // namespace quill::soak
