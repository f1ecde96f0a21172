// Every call that the module makes of the system while it fetches, shows and closes a document fails once,
// in every way, on whichever thread it is made; and so does every request for memory.
#include "tests/document/document_bench.h"
#include "tests/document/document_messages.h"
#include "tests/support/fault_points.h"
#include "tests/support/faults/import_faults.h"
#include "tests/support/http_server.h"
#include "tests/support/wait.h"

#include <gtest/gtest.h>
#include <ole2.h>

#include <cstdio>

namespace quill::test {
namespace {

using Microsoft::WRL::ComPtr;

enum class source
{
    urlmon,
    wininet,
    file
};

class ImportFaults : public testing::TestWithParam<source>
{
protected:
    ImportFaults()
    {
        server_.route("/c/d.pdf", http_response::ok(pdf_body(20'000)));
        if (GetParam() == source::wininet)
            settings_.set_string(L"kIEBrowserPluginWinINet", L"/b 1");
    }

    bool open_and_close(document_bench& bench)
    {
        bench.viewer.forget_calls();
        ComPtr<IClassFactory> factory;
        HRESULT result = bench.module.get_class_object(active_document_class_id, IID_PPV_ARGS(&factory));
        EXPECT_EQ(SUCCEEDED(result), factory != nullptr);
        if (!factory)
            return false;
        result = factory->CreateInstance(nullptr, IID_PPV_ARGS(&bench.document));
        factory.Reset();
        EXPECT_EQ(SUCCEEDED(result), bench.document != nullptr);
        if (!bench.document)
            return false;
        bench.host.document = bench.document.Get();
        bench.set_site();
        if (GetParam() == source::file)
            bench.load_file(bench.pdf());
        else
            bench.load_url(server_.url(L"/c/d.pdf"));
        pump_messages(); // a thread that has not looked at its messages for seconds counts as hung
        bench.do_verb(OLEIVERB_SHOW);
        if (const HWND window = bench.window())
            RedrawWindow(window, nullptr, nullptr, RDW_INVALIDATE | RDW_UPDATENOW | RDW_ALLCHILDREN);
        EXPECT_TRUE(faults_.wait_for_threads()) << "the worker does not end";
        pump_messages();
        const bool is_shown = !bench.viewer.texts(viewer_open).empty();
        use(bench);
        close(bench);
        return is_shown;
    }

    static void use(document_bench& bench)
    {
        if (const HWND window = bench.window()) {
            SendMessageW(window, WM_SIZE, 0, MAKELPARAM(300, 200));
            SendMessageW(window, WM_MOUSEACTIVATE, 0, 0);
            SendMessageW(window, message_open_link, 1, reinterpret_cast<LPARAM>(L"../x.pdf"));
        }
        bench.as<IOleCommandTarget>()->Exec(nullptr, OLECMDID_PRINT, 0, nullptr, nullptr);
    }

    static void close(document_bench& bench)
    {
        const auto ole_object = bench.as<IOleObject>();
        if (bench.host.view)
            bench.host.view->UIActivate(FALSE);
        bench.as<IOleInPlaceObjectWindowless>()->InPlaceDeactivate();
        if (bench.host.view) {
            bench.host.view->CloseView(0);
            bench.host.view->SetInPlaceSite(nullptr);
        }
        ole_object->Close(OLECLOSE_NOSAVE);
        ole_object->SetClientSite(nullptr);
        bench.host.view.Reset();
        bench.host.frame.drop_active_object();
        bench.host.document = nullptr;
    }

    registry_key_scope settings_{
        HKEY_CURRENT_USER, L"SOFTWARE\\Quill\\DocStudio\\14\\Settings\\Preferences\\kBrowserPlugin"};
    http_server server_;
    import_faults faults_;
};

TEST_P(ImportFaults, Explore)
{
    std::vector<fault_place> places;
    for (int i = 0; i < 3; ++i) {
        document_bench bench;
        faults_.count();
        EXPECT_TRUE(open_and_close(bench));
        bench.document.Reset();
        faults_.stop();
        places = faults_.places();
        std::printf("%zu places\n", places.size());
    }
    const bool memory = GetEnvironmentVariableW(L"QUILL_MEMORY", nullptr, 0) != 0;
    for (const fault_place& place : places) {
        if (memory != (place.group == memory_group))
            continue;
        std::printf("%s\n", to_text(place).c_str());
        std::fflush(stdout);
        expect_balance_in_loop([&] {
            document_bench bench;
            faults_.fail(place);
            const bool shown = open_and_close(bench);
            if (bench.document)
                EXPECT_EQ(bench.document.Detach()->Release(), 0u) << to_text(place);
            const bool failed = faults_.has_failed();
            std::printf("   %d %s\n", failed, shown ? "shown" : "NOT");
            faults_.count();
            EXPECT_TRUE(open_and_close(bench)) << "next, after " << to_text(place);
            if (bench.document)
                EXPECT_EQ(bench.document.Detach()->Release(), 0u) << to_text(place);
            faults_.stop();
        });
    }
}

INSTANTIATE_TEST_SUITE_P(Document, ImportFaults,
                         testing::Values(source::urlmon, source::wininet, source::file),
                         [](const testing::TestParamInfo<source>& way) {
                             return way.param == source::urlmon    ? "Urlmon"
                                    : way.param == source::wininet ? "WinInet"
                                                                   : "File";
                         });

} // namespace
} // namespace quill::test
