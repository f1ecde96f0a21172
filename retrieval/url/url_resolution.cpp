#include "retrieval/url/url_resolution.h"

#include <cwchar>
#include <utility>

namespace quill {
namespace {

constexpr std::wstring_view http_prefix = L"http://";
constexpr std::wstring_view https_prefix = L"https://";
constexpr std::wstring_view parent_step = L"../";
constexpr std::wstring_view same_folder_step = L"./";

bool contains(const wchar_t* text, const wchar_t* part)
{
    return std::wcsstr(text, part) != nullptr;
}

bool contains(std::wstring_view text, std::wstring_view part)
{
    return text.find(part) != std::wstring_view::npos;
}

std::wstring_view up_to_first(std::wstring_view text, wchar_t end)
{
    return text.substr(0, text.find(end));
}

std::wstring_view up_to_last(std::wstring_view text, wchar_t end)
{
    return text.substr(0, text.rfind(end));
}

// Each step removes three characters of the reference and one folder of the base while the rest of the
// reference contains "../", so the position of the last one determines the number of steps. The page
// controls that number: a step scans only what it removes.
void apply_parent_steps(std::wstring_view& reference, std::wstring_view& folder)
{
    const std::size_t steps = reference.rfind(parent_step) / parent_step.size() + 1;
    reference.remove_prefix(steps * parent_step.size());
    for (std::size_t step = 0; step < steps; ++step) {
        const std::size_t slash = folder.rfind(L'/');
        if (slash == std::wstring_view::npos)
            break;
        folder = folder.substr(0, slash);
    }
}

// prefix_length: how much of the base is never removed.
std::wstring join(std::wstring_view base, std::size_t prefix_length, std::wstring_view reference)
{
    const std::wstring_view prefix = base.substr(0, prefix_length);
    std::wstring_view folder = up_to_last(up_to_first(base.substr(prefix_length), L'?'), L'/');
    if (contains(reference, parent_step)) {
        apply_parent_steps(reference, folder);
    } else if (contains(reference, same_folder_step)) {
        reference.remove_prefix(same_folder_step.size());
    } else if (reference.starts_with(L'/')) {
        reference.remove_prefix(1);
        folder = up_to_first(folder, L'/');
    }

    std::wstring url;
    url.reserve(prefix.size() + folder.size() + 1 + reference.size());
    url.append(prefix).append(folder).append(1, L'/').append(reference);
    return url;
}

} // namespace

int IsUrl(const wchar_t* text, int* is_other_scheme)
{
    if (is_other_scheme)
        *is_other_scheme = 0;
    if (!text)
        return 0;
    if (contains(text, L"http://") || contains(text, L"https://") || contains(text, L"ftp://"))
        return 1;
    if (contains(text, L"www.") || contains(text, L"file://") || contains(text, L"mailto:")) {
        if (is_other_scheme)
            *is_other_scheme = 1;
        return 1;
    }
    return 0;
}

int CombineUrl(const std::wstring& relative, const std::wstring& base, std::wstring& out)
{
    if (base.empty()) {
        out.clear();
        return 0;
    }
    std::size_t prefix_length = 0;
    if (contains(std::wstring_view(base), http_prefix))
        prefix_length = http_prefix.size();
    else if (contains(std::wstring_view(base), https_prefix))
        prefix_length = https_prefix.size();
    out = join(base, prefix_length, relative);
    return 1;
}

bool resolve_link(std::wstring_view link, std::wstring_view document_url, std::wstring& out)
{
    if (document_url.empty()) {
        out.clear();
        return false;
    }
    std::size_t prefix_length = 0;
    if (document_url.starts_with(http_prefix))
        prefix_length = http_prefix.size();
    else if (document_url.starts_with(https_prefix))
        prefix_length = https_prefix.size();
    out = join(document_url, prefix_length, link);
    return true;
}

} // namespace quill
