// Where an active document comes from, and the page and zoom to open it with. The source is one of a local
// file, the document URL (of IPersistMoniker::Load or of the site's moniker) and the URL of the EMBED or
// OBJECT element that the document stands for. CActiveDocCtrl asks the host for them and records them here.
// Plain code; UI thread only.
#pragma once

#include <windows.h>

#include <array>
#include <cstdint>
#include <string>
#include <utility>

namespace quill {

// Who set the path. A path that belongs to the document URL is discarded when another URL is loaded.
enum class path_origin
{
    host,
    document_url
};

// What an IPersistMoniker::Load changed.
enum class url_change
{
    none,    // the URL is the same
    first,   // nothing had been loaded before; what the window has found meanwhile is kept
    replaced // what was found for the former URL has been discarded
};

class document_location
{
public:
    // The local file, a null-terminated buffer of MAX_PATH; empty if there is none. Longer paths are
    // truncated.
    const wchar_t* path() const noexcept { return path_.data(); }
    void set_path(const wchar_t* path, path_origin origin) noexcept;

    // For IPersistMoniker::Load; url is escaped by EncodeUrl.
    url_change load_url(std::wstring url);
    // For a URL that the window obtained from its site. Does not count as a Load.
    void set_document_url(std::wstring url) { document_url_ = std::move(url); }
    const std::wstring& document_url() const noexcept { return document_url_; }

    // Resolves an element's reference against the document URL, makes the result the URL to fetch, and reads
    // its page and zoom.
    void set_embedded_reference(const std::wstring& reference);

    // What the download worker fetches: the URL of the element if there is one, else the document URL.
    const std::wstring& url_to_fetch() const noexcept
    {
        return embedded_url_.empty() ? document_url_ : embedded_url_;
    }

    std::int32_t page() const noexcept { return page_; } // counts from 1; 0 if the URL names none
    std::int32_t zoom() const noexcept { return zoom_; } // per cent; 0 if the URL names none
    void set_page_and_zoom(std::int32_t page, std::int32_t zoom) noexcept;
    void read_page_and_zoom(const std::wstring& url) noexcept;

private:
    std::array<wchar_t, MAX_PATH> path_{};
    path_origin path_origin_ = path_origin::host;
    std::wstring document_url_;
    bool has_loaded_url_ = false; // by IPersistMoniker::Load
    std::wstring embedded_url_;
    std::int32_t page_ = 0;
    std::int32_t zoom_ = 0;
};

} // namespace quill
