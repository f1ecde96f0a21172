// A host with the document object, from its creation to the viewer's open call for the downloaded file.
#pragma once

#include "tests/bench/support/loaded_library.h"
#include "tests/support/host/document_host.h"
#include "tests/support/scopes.h"
#include "tests/support/viewer/viewer_class.h"

#include <windows.h>

#include <functional>
#include <string>

namespace quill::bench {

// Fetches url into the file at path.
using bare_download = std::function<void(const std::wstring& url, const std::wstring& path)>;

// The calling thread must have initialised OLE. All functions throw std::runtime_error on failure.
class document_session
{
public:
    document_session();

    // Shows the document at url. Returns the time from IPersistMoniker::Load to the viewer's open call, in
    // nanoseconds, without the work before and after.
    double open(const std::wstring& url);
    // Runs a bare download on a thread of its own while this host dispatches its messages, and returns its
    // time.
    double run_bare(const std::wstring& url, const bare_download& download);
    // Opens the document at url with the indispensable calls only, in this host. Returns its time.
    double open_bare(const std::wstring& url);
    // The parent of the document's window, and the library with its strings.
    HWND view_window() const { return host_.view_window(); }
    HMODULE library() const { return module_.handle(); }
    // Dispatches messages while nothing else runs.
    void idle(DWORD duration_ms) const;

private:
    void show(const std::wstring& url);
    void close();

    loaded_library module_{module_name};
    test::scratch_directory files_;
    test::environment_scope temporary_{L"QUILL_TMP_FOLDER", files_.path()};
    test::viewer_registration registration_;
    test::document_host host_;
    test::viewer_script viewer_{host_.calls};
    test::viewer_class viewers_{viewer_};
    Microsoft::WRL::ComPtr<IUnknown> document_;
    double opened_at_ = 0;
};

} // namespace quill::bench
