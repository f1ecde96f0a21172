#include "tests/document/document_fixture.h"

#include "tests/support/module_threads.h"
#include "tests/support/wait.h"

#include <windows.h>

#include <gtest/gtest.h>
#include <ole2.h>
#include <urlmon.h>

#include <algorithm>
#include <cstdlib>
#include <stdexcept>

namespace quill::test {
namespace {

using Microsoft::WRL::ComPtr;

void require(bool condition, const char* what)
{
    if (!condition)
        throw std::runtime_error(what);
}

std::size_t failed_workers(const document_log& log)
{
    const std::string failed = "ACTIVEDOC DownloadPDFFile FAILED ";
    const auto lines = log.worker_lines();
    return static_cast<std::size_t>(std::count_if(
        lines.begin(), lines.end(), [&](const std::string& line) { return line.rfind(failed, 0) == 0; }));
}

HWND child_of_class(HWND parent, const wchar_t* name)
{
    return parent ? FindWindowExW(parent, nullptr, name, nullptr) : nullptr;
}

} // namespace

document_fixture::ole_session::ole_session()
{
    static const HRESULT started = OleInitialize(nullptr);
    require(SUCCEEDED(started), "OLE does not start");
}

document_fixture::document_fixture() : viewer(host.calls), viewers(viewer)
{
    _wputenv_s(L"QUILL_TMP_FOLDER", temp.path().c_str());
}

document_fixture::~document_fixture()
{
    if (document)
        release();
    EXPECT_FALSE(last_window_ && IsWindow(last_window_)) << "the document's window is still there";
}

void document_fixture::create()
{
    ComPtr<IClassFactory> factory;
    require(module.get_class_object(active_document_class_id, IID_PPV_ARGS(&factory)) == S_OK && factory,
            "no class object");
    log.skip();
    require(factory->CreateInstance(nullptr, IID_PPV_ARGS(&document)) == S_OK && document,
            "no document object");
    host.document = document.Get();
    failures_before_ = failed_workers(log);
    const auto lines = log.take({});
    const std::string prefix = "ACTIVEDOC 0x";
    require(lines.size() == 1 && lines[0].rfind(prefix, 0) == 0, "the construction is not in the log");
    address = lines[0].substr(prefix.size() - 2);
}

HRESULT document_fixture::set_site()
{
    return as<IOleObject>()->SetClientSite(host.site.client_site());
}

HRESULT document_fixture::load_url(const std::wstring& url, BOOL fully_available)
{
    fake_moniker moniker(host.calls, "loaded moniker");
    moniker.display_name = url;
    return as<IPersistMoniker>()->Load(fully_available, &moniker, nullptr, STGM_READ);
}

HRESULT document_fixture::load_file(const std::wstring& path)
{
    return as<IPersistFile>()->Load(path.c_str(), STGM_READ);
}

HRESULT document_fixture::do_verb(LONG verb)
{
    return as<IOleObject>()->DoVerb(verb, nullptr, host.site.client_site(), -1, host.view_window(),
                                    &host.position);
}

void document_fixture::show_file(const std::wstring& path)
{
    create();
    require(set_site() == S_OK, "SetClientSite failed");
    require(load_file(path) == S_OK, "IPersistFile::Load failed");
    show();
}

void document_fixture::show_url(const std::wstring& url)
{
    create();
    require(set_site() == S_OK, "SetClientSite failed");
    require(load_url(url) == S_OK, "IPersistMoniker::Load failed");
    show();
}

void document_fixture::show()
{
    pump_messages(); // a thread that has not dispatched messages for seconds counts as hung
    require(do_verb(OLEIVERB_SHOW) == S_OK, "DoVerb(OLEIVERB_SHOW) failed");
    last_window_ = window();
    require(last_window_ != nullptr, "the document has no window");
}

void document_fixture::close_in_order()
{
    const auto ole_object = as<IOleObject>();
    if (host.view)
        EXPECT_EQ(host.view->UIActivate(FALSE), S_OK);
    EXPECT_EQ(as<IOleInPlaceObjectWindowless>()->InPlaceDeactivate(), S_OK);
    if (host.view) {
        EXPECT_EQ(host.view->Show(FALSE), S_OK);
        EXPECT_EQ(host.view->CloseView(0), S_OK);
        EXPECT_EQ(host.view->SetInPlaceSite(nullptr), S_OK);
    }
    EXPECT_EQ(ole_object->Close(OLECLOSE_NOSAVE), S_OK);
    ComPtr<IOleClientSite> site;
    EXPECT_EQ(ole_object->GetClientSite(&site), S_OK);
    EXPECT_EQ(site.Get(), host.site.client_site());
    EXPECT_EQ(ole_object->SetClientSite(nullptr), S_OK);
}

void document_fixture::release()
{
    log.skip();
    host.view.Reset();
    host.frame.drop_active_object();
    host.document = nullptr;
    EXPECT_EQ(document.Detach()->Release(), 0u) << "the document is still referenced";
    const auto lines = take_log();
    EXPECT_NE(std::find(lines.begin(), lines.end(), "~@"), lines.end()) << "the document was not destroyed";
    EXPECT_EQ(viewers.living_viewers(), 0);
    EXPECT_EQ(host.site.references(), 0);
    EXPECT_EQ(host.frame.references(), 0);
    EXPECT_EQ(host.browser.references(), 0);
    EXPECT_EQ(host.shell.references(), 0);
    EXPECT_EQ(child_of_class(host.view_window(), nullptr), nullptr) << "a window of the document is left";
}

HWND document_fixture::window() const
{
    if (!document)
        return nullptr;
    HWND result = nullptr;
    as<IOleWindow>()->GetWindow(&result);
    return result;
}

HWND document_fixture::viewer_host_window() const
{
    return child_of_class(window(), L"AtlAxWin140");
}

HWND document_fixture::pane() const
{
    return child_of_class(window(), L"STATIC");
}

LRESULT document_fixture::send(UINT message, WPARAM wparam, LPARAM lparam) const
{
    const HWND target = window();
    EXPECT_NE(target, nullptr);
    return SendMessageW(target, message, wparam, lparam);
}

LRESULT document_fixture::send_text(UINT message, WPARAM wparam, const wchar_t* text) const
{
    return send(message, wparam, reinterpret_cast<LPARAM>(text));
}

std::wstring document_fixture::pdf(const std::wstring& name) const
{
    return file(name, small_pdf);
}

std::wstring document_fixture::file(const std::wstring& name, const std::string& contents) const
{
    const std::wstring path = files / name;
    EXPECT_TRUE(write_file(path, contents));
    return path;
}

void document_fixture::wait_for_failed_worker() const
{
    EXPECT_TRUE(wait_until([this] { return failed_workers(log) > failures_before_; }))
        << "the download worker did not end: " << testing::PrintToString(log.worker_lines());
}

void document_fixture::wait_for_no_worker() const
{
    EXPECT_TRUE(wait_until([this] { return threads_of(module.handle()) == 0; }))
        << "the download worker did not end";
}

void in_balance(void (*scenario)(document_fixture&))
{
    expect_balance([scenario] {
        document_fixture fixture;
        scenario(fixture);
    });
}

RECT in_parent(HWND window)
{
    RECT rect{};
    GetWindowRect(window, &rect);
    MapWindowPoints(nullptr, GetParent(window), reinterpret_cast<POINT*>(&rect), 2);
    return rect;
}

} // namespace quill::test
