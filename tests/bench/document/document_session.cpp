#include "tests/bench/document/document_session.h"

#include "tests/bench/document/bare_document.h"
#include "tests/bench/support/measure.h"
#include "tests/support/wait.h"

#include <wininet.h>

#include <exception>
#include <stdexcept>
#include <thread>

namespace quill::bench {
namespace {

constexpr DWORD deadline_ms = 300'000;

void require(bool condition, const char* what)
{
    if (!condition)
        throw std::runtime_error(what);
}

template <class Interface>
Microsoft::WRL::ComPtr<Interface> query(const Microsoft::WRL::ComPtr<IUnknown>& object)
{
    Microsoft::WRL::ComPtr<Interface> result;
    require(SUCCEEDED(object.As(&result)), "the document misses an interface");
    return result;
}

// Dispatches messages of the calling thread until condition() is true; only messages wake it.
template <class Condition>
void pump_until(const Condition& condition, HANDLE handle = nullptr)
{
    const ULONGLONG end = GetTickCount64() + deadline_ms;
    while (!condition()) {
        require(GetTickCount64() < end, "a document does not come");
        MsgWaitForMultipleObjectsEx(handle ? 1 : 0, &handle, deadline_ms, QS_ALLINPUT, MWMO_INPUTAVAILABLE);
        test::pump_messages();
    }
}

} // namespace

document_session::document_session()
{
    ShowWindow(host_.frame_window(), SW_SHOWNA); // invisible windows are not painted
    host_.calls.when("viewer::1", [this] { opened_at_ = now(); });
}

double document_session::open(const std::wstring& url)
{
    document_.Attach(module_.create(active_document_class));
    host_.document = document_.Get();
    require(query<IOleObject>(document_)->SetClientSite(host_.site.client_site()) == S_OK, "SetClientSite");
    test::pump_messages();
    opened_at_ = 0;
    const double start = now();
    show(url);
    pump_until([this] { return opened_at_ != 0; });
    const double taken = opened_at_ - start;
    close();
    DeleteUrlCacheEntryW(url.c_str());
    test::remove_path(files_ / L"qll0");
    return taken;
}

void document_session::show(const std::wstring& url)
{
    test::fake_moniker moniker(host_.calls, "loaded moniker");
    moniker.display_name = url;
    require(query<IPersistMoniker>(document_)->Load(FALSE, &moniker, nullptr, STGM_READ) == S_OK, "Load");
    require(query<IOleObject>(document_)->DoVerb(OLEIVERB_SHOW, nullptr, host_.site.client_site(), -1,
                                                 host_.view_window(), &host_.position) == S_OK,
            "DoVerb");
}

void document_session::close()
{
    const auto ole_object = query<IOleObject>(document_);
    if (host_.view)
        host_.view->UIActivate(FALSE);
    query<IOleInPlaceObjectWindowless>(document_)->InPlaceDeactivate();
    if (host_.view) {
        host_.view->CloseView(0);
        host_.view->SetInPlaceSite(nullptr);
    }
    ole_object->Close(OLECLOSE_NOSAVE);
    ole_object->SetClientSite(nullptr);
    host_.view.Reset();
    host_.frame.drop_active_object();
    host_.document = nullptr;
    host_.calls.forget_calls();
    viewer_.forget_calls();
    test::pump_messages();
    document_.Reset();
}

double document_session::run_bare(const std::wstring& url, const bare_download& download)
{
    const std::wstring path = files_ / L"bare.pdf";
    double taken = 0;
    std::exception_ptr failure;
    const HANDLE done = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    {
        const std::jthread worker([&] {
            const double start = now();
            try {
                download(url, path);
            } catch (...) {
                failure = std::current_exception();
            }
            taken = now() - start;
            SetEvent(done);
        });
        pump_until([&] { return WaitForSingleObject(done, 0) == WAIT_OBJECT_0; }, done);
    }
    CloseHandle(done);
    if (failure)
        std::rethrow_exception(failure);
    DeleteUrlCacheEntryW(url.c_str());
    test::remove_path(path);
    return taken;
}

double document_session::open_bare(const std::wstring& url)
{
    test::pump_messages();
    const double taken = open_bare_document(host_.view_window(), url, files_ / L"bare");
    host_.calls.forget_calls();
    DeleteUrlCacheEntryW(url.c_str());
    return taken;
}

void document_session::idle(DWORD duration_ms) const
{
    const ULONGLONG end = GetTickCount64() + duration_ms;
    for (ULONGLONG at = GetTickCount64(); at < end; at = GetTickCount64()) {
        MsgWaitForMultipleObjectsEx(0, nullptr, static_cast<DWORD>(end - at), QS_ALLINPUT,
                                    MWMO_INPUTAVAILABLE);
        test::pump_messages();
    }
}

} // namespace quill::bench
