#include "active_doc/document_location.h"

#include "retrieval/url/url_fragment.h"
#include "retrieval/url/url_resolution.h"

#include <utility>

namespace quill {

void document_location::set_path(const wchar_t* path, path_origin origin) noexcept
{
    path_origin_ = origin;
    path_ = {};
    // Bounded, because the path may come from another module.
    for (std::size_t index = 0; index + 1 < path_.size() && path[index]; ++index)
        path_[index] = path[index];
}

url_change document_location::load_url(std::wstring url)
{
    const bool has_loaded_before = std::exchange(has_loaded_url_, true);
    if (url == document_url_)
        return url_change::none;
    document_url_ = std::move(url);
    if (!has_loaded_before)
        return url_change::first;
    embedded_url_.clear();
    page_ = zoom_ = 0;
    if (path_origin_ == path_origin::document_url)
        path_ = {};
    return url_change::replaced;
}

void document_location::set_embedded_reference(const std::wstring& reference)
{
    if (IsUrl(reference.c_str(), nullptr))
        embedded_url_ = reference;
    else
        CombineUrl(reference, document_url_, embedded_url_);
    read_page_and_zoom(embedded_url_);
}

void document_location::set_page_and_zoom(std::int32_t page, std::int32_t zoom) noexcept
{
    page_ = page;
    zoom_ = zoom;
}

void document_location::read_page_and_zoom(const std::wstring& url) noexcept
{
    parse_url_number(url.c_str(), L"page", page_);
    parse_url_number(url.c_str(), L"zoom", zoom_);
}

} // namespace quill
