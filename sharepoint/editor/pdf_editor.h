// Opens PDFs of a SharePoint server in the suite's desktop editor.
#pragma once

#include <string>

namespace ATL {
class CUrl;
}

namespace quill {

class pdf_editor
{
public:
    // Asks the suite's settings where the editor is.
    pdf_editor();

    // Starts the editor on the URL and does not wait for it. Without an editor, or when it cannot be started,
    // the system's default handler gets the URL; the calling thread may dispatch messages meanwhile. Call on
    // a thread with a message queue. An exception (std::bad_alloc, as a rule) means that nothing was opened.
    void open(const ATL::CUrl& url) const;

private:
    bool is_installed() const;
    bool start(const std::wstring& url) const;

    std::wstring exe_path_; // empty: no editor
};

// The URL as an object; text that cannot be taken apart gives an empty one. Throws std::bad_alloc.
ATL::CUrl parse_url(std::wstring_view text);

} // namespace quill
