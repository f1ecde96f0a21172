#include "retrieval/download/folder_numbers.h"

#include "platform/text.h"

namespace quill {
namespace {

bool has_prefix(std::wstring_view entry)
{
    return entry.size() > cache_folder_prefix.size() &&
           equal_ignoring_ascii_case(entry.substr(0, cache_folder_prefix.size()), cache_folder_prefix);
}

// Only the form that a folder's name has: "007" and "7" are different entries.
std::optional<std::uint32_t> number_of(std::wstring_view digits)
{
    if (digits.size() > 1 && digits.front() == L'0')
        return std::nullopt;
    std::uint32_t number = 0;
    for (const wchar_t digit : digits) {
        if (digit < L'0' || digit > L'9')
            return std::nullopt;
        const auto value = static_cast<std::uint32_t>(digit - L'0');
        if (number > (folder_numbers::end - value) / 10)
            return std::nullopt;
        number = number * 10 + value;
    }
    return number;
}

} // namespace

std::optional<std::uint32_t> cache_folder_number(std::wstring_view entry)
{
    return has_prefix(entry) ? number_of(entry.substr(cache_folder_prefix.size())) : std::nullopt;
}

void folder_numbers::add(std::wstring_view entry)
{
    if (const auto number = cache_folder_number(entry))
        taken_.push(*number);
}

std::uint32_t folder_numbers::next_free()
{
    while (!taken_.empty() && taken_.top() <= next_) {
        // On a case-sensitive file system a number may occur twice.
        if (taken_.top() == next_)
            ++next_;
        taken_.pop();
    }
    return next_ < end ? next_++ : end;
}

} // namespace quill
