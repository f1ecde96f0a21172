// A host with the document object in it, from its creation to the moment when its viewer is told to open the
// fetched file.
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

// The calling thread must have started OLE. Everything throws std::runtime_error when it fails.
class document_session
{
public:
    document_session();

    // Shows the document at url. Returns the time from IPersistMoniker::Load to the viewer's open call, in
    // nanoseconds; what comes before and after is not counted.
    double open(const std::wstring& url);
    // Runs a bare download on a thread of its own while this host pumps its messages, and returns its time.
    double run_bare(const std::wstring& url, const bare_download& download);
    // Opens the document at url with the calls alone that it takes, in this host. Returns its time.
    double open_bare(const std::wstring& url);
    // Where the document's window is put, and the library that holds its texts.
    HWND view_window() const { return host_.view_window(); }
    HMODULE library() const { return module_.handle(); }
    // Lets the host pump its messages with nothing to do.
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
