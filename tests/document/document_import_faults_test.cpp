// Each system call that the module makes while it fetches, shows and closes a document fails once, in every
// way and on any thread, and so does each allocation; then pairs of them fail.
#include "tests/document/document_fixture.h"
#include "tests/document/document_messages.h"
#include "tests/document/page_container.h"
#include "tests/support/download_setting.h"
#include "tests/support/faults/fault_loop.h"
#include "tests/support/http_server.h"
#include "tests/support/wait.h"

#include <gtest/gtest.h>
#include <ole2.h>

#include <algorithm>
#include <iterator>
#include <optional>

namespace quill::test {
namespace {

using Microsoft::WRL::ComPtr;

enum class source
{
    urlmon,
    wininet, // into the system's temporary folder; a setting excludes it for the others
    file,
    element // of a page, whose element is fetched through urlmon
};

constexpr const char* source_names[] = {"a document through urlmon", "a document through WinINet",
                                        "a document from a file", "a document in a page"};

// The effect of a failure on the document; without an effect it is shown.
struct loss
{
    const char* function;
    bool is_certain;                           // whichever of its calls fails
    const char* log = nullptr;                 // the line that the worker then ends with
    std::optional<source> from = std::nullopt; // any
};

constexpr loss losses[] = {
    // the window, the viewer in it, and their parts
    {"CLSIDFromProgID", true},
    {"CoGetClassObject", true},
    {"CreateWindowExW", false},
    {"GetWindowThreadProcessId", false},
    {"GlobalAddAtomW", false},
    {"RegisterClassExW", true},
    {"RegisterWindowMessageW", true},
    {"SetPropW", true},
    // the URL, and the file if it exists
    {"CreateFileW", false},
    {"GetFileType", true},
    {"PathFileExistsW", false},
    {"ReadFile", true},
    {"SysAllocString", false, nullptr, source::element}, // one of the names that a page is searched for
    {"SysAllocString", true},
    {"WideCharToMultiByte", false},
    // the steps of the worker
    {"CreateThread", true},
    {"GetTempPathW", true, "ACTIVEDOC DownloadPDFFile FAILED TO GET TEMP PATH"},
    {"GetFileAttributesW", false, nullptr, source::wininet}, // of the system's temporary folder
    {"CreateDirectoryW", true, "ACTIVEDOC DownloadPDFFile FAILED TO CREATE TEMP DIRECTORY"},
    {"URLDownloadToFileW", true, "ACTIVEDOC DownloadPDFFile "},
    {"PostMessageW", true},
    {"SendMessageTimeoutW", false},
    // the other download path
    {"InternetOpenW", true, "ACTIVEDOC DownloadPDFFile MISSING FILE "},
    {"InternetOpenUrlW", true, "ACTIVEDOC DEBUG InternetOpenUrl FAILED "},
    {"InternetQueryDataAvailable", false},
    {"InternetReadFile", true, "ACTIVEDOC DownloadPDFFile FAILED 1"},
    {"_wfopen", true, "ACTIVEDOC DEBUG FAILED TO CREATE CACHE FILE "},
    {"fflush", false},
    {"fwrite", false},
    {memory_group, false},
};

constexpr const wchar_t* document_target = L"/c/d.pdf";

const std::string& served_pdf()
{
    static const std::string body = pdf_body(20'000);
    return body;
}

// One document from creation to release, and the environment that decides where its file goes.
class document_visit
{
public:
    document_visit(source from, const http_server& server) : from_(from), server_(server)
    {
        if (from == source::wininet) {
            folder_.emplace(L"QUILL_TMP_FOLDER", std::nullopt);
            system_folder_.emplace(L"TMP", fixture_.temp.path());
        }
        if (from == source::element) {
            page_.add(L"EMBED", L"application/pdf", server_.url(document_target).c_str());
            fixture_.host.container = page_.container();
            fixture_.host.object_moniker.display_name = L"quilltest://host.test/dir/page.html";
        }
    }

    // Whether the viewer was called to open something, which was the document or, if the download may be
    // truncated, the beginning of it.
    bool open_and_close(import_faults& faults, bool may_end_early = false)
    {
        fixture_.viewer.forget_calls();
        if (!create())
            return false;
        fixture_.set_site();
        load();
        pump_messages(); // a thread that has not dispatched messages for seconds counts as hung
        fixture_.do_verb(OLEIVERB_SHOW);
        if (const HWND window = fixture_.window())
            RedrawWindow(window, nullptr, nullptr, RDW_INVALIDATE | RDW_UPDATENOW | RDW_ALLCHILDREN);
        EXPECT_TRUE(faults.wait_for_threads()) << "the worker does not end";
        pump_messages();
        const bool is_shown = expect_document_shown(may_end_early);
        use();
        close();
        return is_shown;
    }

    const document_log& log() const { return fixture_.log; }

private:
    bool create()
    {
        ComPtr<IClassFactory> factory;
        HRESULT result = fixture_.module.get_class_object(active_document_class_id, IID_PPV_ARGS(&factory));
        if (factory)
            result = factory->CreateInstance(nullptr, IID_PPV_ARGS(&fixture_.document));
        EXPECT_EQ(result, fixture_.document ? S_OK : E_OUTOFMEMORY);
        fixture_.host.document = fixture_.document.Get();
        return fixture_.document != nullptr;
    }

    void load()
    {
        if (from_ == source::element)
            return;
        const HRESULT result = from_ == source::file ? fixture_.load_file(fixture_.pdf())
                                                     : fixture_.load_url(server_.url(document_target));
        EXPECT_TRUE(result == S_OK || result == E_OUTOFMEMORY) << result;
    }

    bool expect_document_shown(bool may_end_early) const
    {
        const std::string whole = from_ == source::file ? small_pdf : served_pdf();
        bool is_shown = false;
        for (const recorded_call& call : fixture_.viewer.received) {
            if (call.id != viewer_open)
                continue;
            is_shown = true;
            const auto shown = read_file(call.arguments.at(0).text);
            EXPECT_TRUE(shown == whole || (may_end_early && shown && whole.starts_with(*shown)))
                << "not the document: " << to_text(call);
        }
        return is_shown;
    }

    void use()
    {
        if (const HWND window = fixture_.window()) {
            SendMessageW(window, WM_SIZE, 0, MAKELPARAM(300, 200));
            SendMessageW(window, WM_MOUSEACTIVATE, 0, 0);
            SendMessageW(window, message_open_link, 1, reinterpret_cast<LPARAM>(L"../x.pdf"));
        }
        fixture_.as<IOleCommandTarget>()->Exec(nullptr, OLECMDID_PRINT, 0, nullptr, nullptr);
    }

    void close()
    {
        const auto ole_object = fixture_.as<IOleObject>();
        if (fixture_.host.view)
            fixture_.host.view->UIActivate(FALSE);
        EXPECT_EQ(fixture_.as<IOleInPlaceObjectWindowless>()->InPlaceDeactivate(), S_OK);
        if (fixture_.host.view) {
            fixture_.host.view->CloseView(0);
            fixture_.host.view->SetInPlaceSite(nullptr);
        }
        EXPECT_EQ(ole_object->Close(OLECLOSE_NOSAVE), S_OK);
        EXPECT_EQ(ole_object->SetClientSite(nullptr), S_OK);
        EXPECT_EQ(fixture_.window(), nullptr);
    }

public:
    // Releases the last references of the host; the document must be destroyed then.
    void release()
    {
        fixture_.host.view.Reset();
        fixture_.host.frame.drop_active_object();
        fixture_.host.document = nullptr;
        if (fixture_.document)
            EXPECT_EQ(fixture_.document.Detach()->Release(), 0u) << "the document is still referenced";
        EXPECT_EQ(fixture_.viewers.living_viewers(), 0);
        EXPECT_EQ(fixture_.host.site.references(), 0);
        EXPECT_EQ(fixture_.host.frame.references(), 0);
    }

private:
    const source from_;
    const http_server& server_;
    page_container page_{L"http://host.test/page.html"};
    document_fixture fixture_;
    std::optional<environment_scope> folder_;
    std::optional<environment_scope> system_folder_;
};

class DocumentImportFaults : public testing::TestWithParam<std::tuple<source, fault_kind>>
{
protected:
    DocumentImportFaults()
    {
        server_.route("/c/d.pdf", http_response::ok(served_pdf()));
        if (from() == source::wininet)
            settings_.use_wininet();
    }

    static source from() { return std::get<source>(GetParam()); }

    std::vector<fault_place> recorded_places()
    {
        run_undisturbed();
        run_undisturbed(); // without what the process does once
        return faults_.places();
    }

    void run_undisturbed()
    {
        document_visit visit(from(), server_);
        faults_.count();
        EXPECT_TRUE(visit.open_and_close(faults_));
        visit.release();
        faults_.stop();
    }

    // Once with the failure, and once in the same module without one. Returns whether the call failed.
    bool run_with(const fault_place& place)
    {
        document_visit visit(from(), server_);
        faults_.fail(place);
        const bool is_shown = visit.open_and_close(faults_, may_end_early(place));
        visit.release();
        const int failures = faults_.failures();
        faults_.stop();
        if (failures == 0)
            EXPECT_TRUE(is_shown);
        else
            expect_promised(place, failures, is_shown, visit.log());
        faults_.count();
        EXPECT_TRUE(visit.open_and_close(faults_)) << "the next document is not shown";
        visit.release();
        faults_.stop();
        return failures == place.failures();
    }

    // A truncated download is kept, and the second failure may be a broken connection.
    static bool may_end_early(const fault_place& place)
    {
        return from() == source::wininet &&
               (place.failures() > 1 || place.group == "InternetQueryDataAvailable" ||
                place.group == "InternetReadFile");
    }

    static void expect_promised(const fault_place& place, int failures, bool is_shown,
                                const document_log& log)
    {
        const auto* const known = std::find_if(std::begin(losses), std::end(losses), [&](const loss& each) {
            return place.group == each.function && each.from.value_or(from()) == from();
        });
        if (known == std::end(losses)) {
            // The second failure may concern something else.
            EXPECT_TRUE(is_shown || failures > 1) << "the document needs none of these functions";
            return;
        }
        if (known->is_certain)
            EXPECT_FALSE(is_shown);
        if (known->log && failures == 1)
            EXPECT_TRUE(log.worker_wrote(known->log)) << testing::PrintToString(log.worker_lines());
    }

    download_setting settings_;
    http_server server_;
    import_faults faults_;
};

TEST_P(DocumentImportFaults, LeaveTheDocumentClosableAndTheNextOneWhole)
{
    const auto [from, kind] = GetParam();
    const std::string routine = source_names[static_cast<std::size_t>(from)];
    const std::string name = "the system's part in " + routine;
    const std::string memory = "memory for " + routine;
    const auto places = recorded_places();
    ASSERT_GT(places.size(), 200u);
    constexpr int usual_step = 15;
    fail_each((kind == fault_kind::calls ? name : memory).c_str(), kind, places, usual_step,
              [this](const fault_place& place) { return run_with(place); });
}

// Two failures of either kind, for a document from a server.
class DocumentPairedImportFaults : public DocumentImportFaults
{
};

TEST_P(DocumentPairedImportFaults, LeaveTheDocumentClosableAndTheNextOneWhole)
{
    const std::string routine =
        std::string("two failures in ") + source_names[static_cast<std::size_t>(from())];
    const auto places = recorded_places();
    for (const auto [second, usual_pairs] :
         {std::pair{fault_kind::calls, std::size_t{3}}, std::pair{fault_kind::memory, std::size_t{2}}})
        fail_pairs(routine.c_str(), second, places, usual_pairs,
                   [this](const fault_place& pair) { return run_with(pair); });
}

std::string name_of(const testing::TestParamInfo<DocumentImportFaults::ParamType>& way)
{
    constexpr const char* names[] = {"Urlmon", "WinInet", "File", "Element"};
    constexpr const char* kinds[] = {"Calls", "Memory", ""};
    return std::string(names[static_cast<std::size_t>(std::get<source>(way.param))]) +
           kinds[static_cast<std::size_t>(std::get<fault_kind>(way.param))];
}

INSTANTIATE_TEST_SUITE_P(Document, DocumentImportFaults,
                         testing::Combine(testing::Values(source::urlmon, source::wininet, source::file,
                                                          source::element),
                                          testing::Values(fault_kind::calls, fault_kind::memory)),
                         name_of);

INSTANTIATE_TEST_SUITE_P(Document, DocumentPairedImportFaults,
                         testing::Combine(testing::Values(source::urlmon, source::wininet),
                                          testing::Values(fault_kind::either)),
                         name_of);

} // namespace
} // namespace quill::test
