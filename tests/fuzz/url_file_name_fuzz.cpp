// The file name in a URL. Input: a number for the capacity of the buffer, and the URL.
#include "retrieval/download/cache_folder.h"
#include "retrieval/url/url_text.h"
#include "tests/fuzz/reference_text.h"
#include "tests/fuzz/subjects.h"

#include <algorithm>

namespace quill::fuzz {
namespace {

constexpr auto nowhere = std::wstring::npos;

enum class outcome
{
    none,
    too_long,
    name
};

struct answer
{
    outcome kind = outcome::none;
    std::wstring text;
};

bool ends_in_pdf(std::wstring_view text)
{
    return lower_ascii(text).ends_with(L"pdf");
}

answer fitting(const std::wstring& name, std::size_t capacity)
{
    if (name.size() >= capacity)
        return {outcome::too_long, {}};
    return name.empty() ? answer{} : answer{outcome::name, name};
}

std::wstring name_of_value(std::wstring value)
{
    std::size_t start = 0;
    for (const wchar_t character : std::wstring_view(L"\\/:*?\"<>|")) {
        for (std::size_t i = value.size(); i-- > 0;) {
            if (value[i] == character) {
                start = i > start ? i + 1 : start;
                break;
            }
        }
    }
    return value.substr(start);
}

answer expected_name(const std::wstring& url, std::size_t capacity)
{
    const std::size_t slash = url.rfind(L'/');
    if (slash == nowhere)
        return {};
    const std::size_t question = url.find(L'?');
    if (question != nowhere && question < slash)
        return {outcome::too_long, {}};
    std::wstring name = url.substr(slash + 1);
    name = name.substr(0, name.find(question != nowhere ? L'?' : L'#'));
    const answer plain = fitting(name, capacity);
    if (plain.kind == outcome::too_long || ends_in_pdf(name) || question == nowhere)
        return plain;
    for (const std::wstring& piece : split(url.substr(question), L'&')) {
        if (!ends_in_pdf(piece))
            continue;
        const std::size_t equals = piece.find(L'=');
        return equals == nowhere ? answer{} : fitting(name_of_value(piece.substr(equals + 1)), capacity);
    }
    return {};
}

void check_name(const exact_terminated& url, std::size_t capacity)
{
    constexpr wchar_t untouched = L'\xABCD';
    const exact_copy<wchar_t> room(std::wstring(capacity, untouched));
    auto* const buffer = const_cast<wchar_t*>(room.view().data());
    const std::size_t length = GetFileNameFromUrl(url.c_str(), buffer, capacity);
    const answer expected = expected_name(std::wstring(url.view()), capacity);
    switch (expected.kind) {
    case outcome::none:
        FUZZ_CHECK(length == 0);
        break;
    case outcome::too_long:
        FUZZ_CHECK(length >= capacity);
        break;
    case outcome::name:
        FUZZ_CHECK(length == expected.text.size());
        FUZZ_CHECK(room.view().substr(0, length) == expected.text);
        FUZZ_CHECK(buffer[length] == L'\0');
        break;
    }
}

} // namespace

void url_file_name(bytes input)
{
    const auto lines = lines_of(input, 2);
    if (lines.size() < 2)
        return;
    std::size_t capacity = 0;
    for (const std::uint8_t digit : lines[0])
        capacity = (capacity * 10 + digit % 16) % 512;
    const exact_terminated url(wide_text(lines[1]));
    check_name(url, capacity);

    const std::wstring name = cache_file_name(url.c_str());
    FUZZ_CHECK(!name.empty() && name.size() < 260);
    for (const wchar_t unit : name)
        FUZZ_CHECK(unit >= 32 && std::wstring_view(L"\\/:*?\"<>|").find(unit) == nowhere);
    FUZZ_CHECK(device_start(name).empty());
    const std::wstring folder = with_separator(std::wstring(url.view()));
    FUZZ_CHECK(with_separator(folder) == folder);
}

} // namespace quill::fuzz
