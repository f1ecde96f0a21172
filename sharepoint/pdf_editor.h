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

    // Starts the editor on the address and does not wait for it. Without an editor, or when it cannot be
    // started, the system's default handler gets the address. Call on a thread with a message queue. Throws
    // std::bad_alloc only.
    void open(const ATL::CUrl& url) const;

private:
    bool is_installed() const;
    bool start(const std::wstring& url) const;

    std::wstring exe_path_; // empty: no editor
};

// The address as an object; text that cannot be taken apart gives whatever the object makes of it.
ATL::CUrl parse_url(std::wstring_view text);

} // namespace quill
