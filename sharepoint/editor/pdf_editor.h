// Opens PDFs of a SharePoint server in the suite's desktop editor. Owned by the aggregator.
#pragma once

#include <string>

namespace ATL {
class CUrl;
}

namespace quill {

class pdf_editor
{
public:
    // Reads the editor's path from the suite's settings.
    pdf_editor();

    // Starts the editor with the URL and does not wait for it. If there is no editor, or it does not start,
    // the system's default handler gets the URL, and messages may be dispatched meanwhile. UI thread only. If
    // it throws, nothing was opened.
    void open(const ATL::CUrl& url) const;

private:
    bool is_installed() const;
    bool start(const std::wstring& url) const;

    std::wstring exe_path_; // empty without an editor
};

// An empty URL for text that cannot be parsed. Throws std::bad_alloc.
ATL::CUrl parse_url(std::wstring_view text);

} // namespace quill
