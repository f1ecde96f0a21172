// The fixture of a document test: the loaded module, its log, a host, the recording viewer, and the document.
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

// A file that passes the PDF check.
inline constexpr char small_pdf[] = "%PDF-1.7\n1 0 obj\n<< /Type /Catalog >>\nendobj\ntrailer\n%%EOF\n";

// A scheme that nobody serves: the download worker of such a URL ends at once.
inline constexpr wchar_t unserved_url[] = L"quilltest://host.test/a/c/d.pdf";

class document_fixture
{
public:
    document_fixture();
    document_fixture(const document_fixture&) = delete;
    document_fixture& operator=(const document_fixture&) = delete;
    // Releases what is left and checks that nothing of the document stays.
    ~document_fixture();

    // OLE is started once for the thread and stays: what it keeps is not the document's.
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

    // Steps of a host. A step that must work and does not ends the test with an exception.
    void create();
    HRESULT set_site();
    HRESULT load_url(const std::wstring& url, BOOL fully_available = FALSE);
    HRESULT load_file(const std::wstring& path);
    HRESULT do_verb(LONG verb);
    // create, set_site, load, DoVerb(OLEIVERB_SHOW); the window is there afterwards.
    void show_file(const std::wstring& path);
    void show_url(const std::wstring& url);
    // DoVerb(OLEIVERB_SHOW) alone.
    void show();
    // What a browser does that navigates away; ends with the last Release.
    void close_in_order();
    // Lets go of everything that the host holds. The document must be gone then.
    void release();

    // The document's window and its children; null without one.
    HWND window() const;
    HWND viewer_host_window() const;
    HWND pane() const;
    LRESULT send(UINT message, WPARAM wparam = 0, LPARAM lparam = 0) const;
    LRESULT send_text(UINT message, WPARAM wparam, const wchar_t* text) const;

    // Files in the scratch folder.
    std::wstring pdf(const std::wstring& name = L"sample.pdf") const;
    std::wstring file(const std::wstring& name, const std::string& contents) const;

    // Waits until the download worker of the document created last has given up; fails the test when it
    // does not.
    void wait_for_failed_worker() const;
    // Waits until the document has no worker any more, whatever became of it. For a document whose window
    // is the only one of this fixture.
    void wait_for_no_worker() const;

    std::vector<std::string> take_log() { return log.take(address); }

private:
    HWND last_window_ = nullptr;
    std::size_t failures_before_ = 0;
    DWORD threads_before_ = 0;
};

// Runs the scenario with a fixture of its own for each run, and expects balance.
void in_balance(void (*scenario)(document_fixture&));

} // namespace quill::test

// A test case whose body gets a fixture of the name `fixture` and runs in balance.
#define QUILL_DOCUMENT_TEST(suite, name)                                                                     \
    static void suite##_##name(quill::test::document_fixture& fixture);                                          \
    TEST(suite, name)                                                                                        \
    {                                                                                                        \
        quill::test::in_balance(suite##_##name);                                                             \
    }                                                                                                        \
    static void suite##_##name([[maybe_unused]] quill::test::document_fixture& fixture)
