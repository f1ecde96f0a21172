// The fixture of the document tests: the loaded module, its log, a host, the recording viewer, and the
// document.
#pragma once

#include "tests/document/document_log.h"
#include "tests/document/module_under_test.h"
#include "tests/support/balance.h"
#include "tests/support/host/document_host.h"
#include "tests/support/scopes.h"
#include "tests/support/viewer/viewer_class.h"

#include <functional>
#include <string>
#include <vector>

namespace quill::test {

using lines = std::vector<std::string>;

// A file that passes the PDF check.
inline constexpr char small_pdf[] = "%PDF-1.7\n1 0 obj\n<< /Type /Catalog >>\nendobj\ntrailer\n%%EOF\n";

// A scheme without a handler: the download worker of such a URL ends at once.
inline constexpr wchar_t unserved_url[] = L"quilltest://host.test/a/c/d.pdf";

class document_fixture
{
public:
    document_fixture();
    document_fixture(const document_fixture&) = delete;
    document_fixture& operator=(const document_fixture&) = delete;
    // Releases what is left and checks that the document is destroyed.
    ~document_fixture();

    // Initialises OLE once for the thread and keeps it: its resources are not the document's.
    struct ole_session
    {
        ole_session();
    };

    ole_session ole;
    document_log log;
    scratch_directory files;
    scratch_directory temp; // the module's temporary folder
    module_under_test module;
    document_host host;
    viewer_registration registration;
    viewer_script viewer;
    viewer_class viewers;

    Microsoft::WRL::ComPtr<IUnknown> document;
    std::string address; // as the log writes it; empty before create()

    template <class Interface>
    Microsoft::WRL::ComPtr<Interface> as() const
    {
        Microsoft::WRL::ComPtr<Interface> result;
        if (document)
            EXPECT_EQ(document->QueryInterface(IID_PPV_ARGS(&result)), S_OK);
        return result;
    }

    // Steps of a host. A step that must succeed and fails ends the test with an exception.
    void create();
    HRESULT set_site();
    HRESULT load_url(const std::wstring& url, BOOL fully_available = FALSE);
    HRESULT load_file(const std::wstring& path);
    HRESULT do_verb(LONG verb);
    // create, set_site, load, DoVerb(OLEIVERB_SHOW); the document has a window afterwards.
    void show_file(const std::wstring& path);
    void show_url(const std::wstring& url);
    // DoVerb(OLEIVERB_SHOW) alone.
    void show();
    // Closes the document as a browser does that navigates away; ends with the last Release.
    void close_in_order();
    // Releases everything that the host holds. The document must be destroyed then.
    void release();

    // The document's window and its children; nullptr without one.
    HWND window() const;
    HWND viewer_host_window() const;
    HWND pane() const;
    LRESULT send(UINT message, WPARAM wparam = 0, LPARAM lparam = 0) const;
    LRESULT send_text(UINT message, WPARAM wparam, const wchar_t* text) const;

    // Files in the scratch folder.
    std::wstring pdf(const std::wstring& name = L"sample.pdf") const;
    std::wstring file(const std::wstring& name, const std::string& contents) const;

    // Waits until the download worker of the last document has failed; otherwise fails the test.
    void wait_for_failed_worker() const;
    // Waits until the module has no thread, that is no document has a worker, whatever its result.
    void wait_for_no_worker() const;

    std::vector<std::string> take_log() { return log.take(address); }

private:
    HWND last_window_ = nullptr;
    std::size_t failures_before_ = 0;
};

// Runs the scenario with a new fixture for each run, and expects balance.
void in_balance(void (*scenario)(document_fixture&));

// The rectangle of a window in the client coordinates of its parent.
RECT in_parent(HWND window);

} // namespace quill::test

// A test whose body gets `fixture` and runs until it is balanced.
#define QUILL_DOCUMENT_TEST(suite, name)                                                                     \
    static void suite##_##name(quill::test::document_fixture& fixture);                                      \
    TEST(suite, name)                                                                                        \
    {                                                                                                        \
        quill::test::in_balance(suite##_##name);                                                             \
    }                                                                                                        \
    static void suite##_##name([[maybe_unused]] quill::test::document_fixture& fixture)
