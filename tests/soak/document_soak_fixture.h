// Shared by the documents of one process: the loaded module, the viewer's registration, a web server. The
// module's log is off, as for users.
#pragma once

#include "tests/document/module_under_test.h"
#include "tests/soak/download_setup.h"
#include "tests/support/host/document_host.h"
#include "tests/support/http_server.h"
#include "tests/support/scopes.h"
#include "tests/support/viewer/viewer_class.h"

#include <windows.h>

#include <wrl/client.h>

#include <string>

namespace quill::soak {

class document_soak_fixture : public download_setup
{
public:
    document_soak_fixture();
    document_soak_fixture(const document_soak_fixture&) = delete;
    document_soak_fixture& operator=(const document_soak_fixture&) = delete;
    ~document_soak_fixture(); // the module must be unloadable, and be unloaded

    test::scratch_directory files;
    test::viewer_registration registration;
    std::wstring local_pdf;
    test::module_under_test module;
    test::http_server server;
};

// The viewers of all open documents. The class object keeps each viewer that it has created, so a long run
// creates a new one for each cycle.
class viewer_store
{
public:
    viewer_store() : script(calls), viewers(script) {}

    // How often viewers were called to open a file.
    std::size_t opened() const;
    bool wait_until_opened(std::size_t times = 1, DWORD deadline_ms = 20'000) const;

    test::call_log calls;
    test::viewer_script script;
    test::viewer_class viewers;
};

// One document with a host of its own.
class hosted_document
{
public:
    explicit hosted_document(const document_soak_fixture& fixture);
    hosted_document(const hosted_document&) = delete;
    hosted_document& operator=(const hosted_document&) = delete;
    // Releases everything. Document, windows and references must be gone then.
    ~hosted_document();

    template <class Interface>
    Microsoft::WRL::ComPtr<Interface> as() const
    {
        Microsoft::WRL::ComPtr<Interface> result;
        if (document)
            document.As(&result);
        return result;
    }

    void load_file(const std::wstring& path);
    void load_url(const std::wstring& url);
    // The same for a document that may refuse.
    void load_url_if_taken(const std::wstring& url);
    HRESULT do_verb(LONG verb);
    HWND window() const;

    // The ways in which browsers close a document.
    // way modulo 3 selects one of them.
    void close(std::size_t way);
    void close_as_navigating_away();
    void close_as_closed_browser();
    void close_view_alone();

    test::document_host host;
    Microsoft::WRL::ComPtr<IUnknown> document;

private:
    HRESULT try_to_load(const std::wstring& url);
};

} // namespace quill::soak
