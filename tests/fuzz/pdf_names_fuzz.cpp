// The type of a page's element, the name for saving a copy, and the kind of a name or path. Input: one text
// for each of them.
#include "retrieval/file/file_names.h"
#include "retrieval/page/pdf_element.h"
#include "retrieval/save_as/suggested_name.h"
#include "tests/fuzz/reference_text.h"
#include "tests/fuzz/subjects.h"

#include <algorithm>

namespace quill::fuzz {
namespace {

constexpr auto nowhere = std::wstring_view::npos;

void check_element(const exact_copy<wchar_t>& text)
{
    const std::wstring lower = lower_ascii(text);
    const element_kind kind = kind_of_tag(text);
    FUZZ_CHECK((kind == element_kind::embed) == (lower == L"embed"));
    FUZZ_CHECK((kind == element_kind::object) == (lower == L"object"));
    FUZZ_CHECK((reference_attribute(kind) == nullptr) == (kind == element_kind::other));
    FUZZ_CHECK(is_pdf_type(text) == (lower == L"application/pdf"));
    FUZZ_CHECK(names_pdf(text) == (lower.size() > 4 && lower.ends_with(L".pdf")));

    bool states_type = false;
    for (const wchar_t* quote : {L"", L"\"", L"'"})
        states_type = states_type || text.view().find(std::wstring(L"type=") + quote + L"application/pdf" +
                                                      quote) != nowhere;
    FUZZ_CHECK(source_states_pdf_type(text) == states_type);
}

// As the shell splits file names: a separator at the end of the path, or before another one, does not end a
// name.
std::wstring file_name_of(std::wstring_view path)
{
    for (std::size_t i = path.size(); i-- > 0;) {
        const bool is_last = i + 1 == path.size();
        if (std::wstring_view(L"\\/:").find(path[i]) != nowhere && !is_last && path[i + 1] != L'\\' &&
            path[i + 1] != L'/')
            return std::wstring(path.substr(i + 1));
    }
    return std::wstring(path);
}

void check_suggestion(const exact_terminated& path)
{
    const auto suggestion = suggested_file_name(path.c_str());
    const std::wstring name = file_name_of(path.view());
    const std::size_t dot = path.view().rfind(L'.');
    const std::size_t before_extension = path.view().find_last_of(L"\\ ");
    const bool has_extension = dot != nowhere && (before_extension == nowhere || before_extension < dot);
    const std::size_t extension_size = has_extension ? path.view().size() - dot : 0;
    const bool usable = has_extension && extension_size <= name.size() && name.size() < 260;
    FUZZ_CHECK(suggestion.has_value() == usable);
    if (!usable)
        return;
    std::wstring base = name.substr(0, name.size() - extension_size);
    if (!base.empty() && base.back() == L']' && base.find(L'[') != nowhere)
        base.erase(base.rfind(L'['));
    FUZZ_CHECK(*suggestion == base + name.substr(name.size() - extension_size));
}

void check_name(std::wstring_view name)
{
    const std::wstring start = device_start(name);
    FUZZ_CHECK(is_device_name(name) == !start.empty());
    bool is_plain = !name.empty();
    for (const wchar_t unit : name)
        is_plain = is_plain && unit >= 32 && std::wstring_view(L"\\/:*?\"<>|").find(unit) == nowhere;
    FUZZ_CHECK(is_creatable_name(name) == (is_plain && start.empty()));
    if (is_creatable_name(name)) {
        const std::wstring text(name);
        FUZZ_CHECK(may_name_disk_file(L"C:\\x\\" + text));
        FUZZ_CHECK(may_name_disk_file(L"\\\\server\\share\\" + text));
        FUZZ_CHECK(name == L".." || may_name_disk_file(L"\\\\?\\C:\\" + text));
    }
}

void check_path(std::wstring_view path)
{
    const std::wstring text(path);
    const bool may_be_file = may_name_disk_file(path);
    FUZZ_CHECK(may_name_disk_file(lower_ascii(path)) == may_be_file);
    for (const wchar_t* start : {L"\\\\.\\pipe\\", L"\\\\?\\pipe\\", L"\\??\\pipe\\", L"//./mailslot/",
                                 L"\\\\s\\pipe\\", L"\\\\?\\UNC\\s\\pipe\\", L"\\\\?\\GLOBALROOT\\"})
        FUZZ_CHECK(!may_name_disk_file(start + text));
    for (const wchar_t* end : {L"\\NUL", L"\\com1.pdf", L"/aux . "})
        FUZZ_CHECK(!may_name_disk_file(L"C:" + text + end));
    if (!may_be_file)
        return;
    FUZZ_CHECK(path.find_first_of(L"\\/") != nowhere || device_start(path).empty());
    // Two separators are followed by drives, shares and volumes only.
    std::wstring tidy = lower_ascii(path);
    std::replace(tidy.begin(), tidy.end(), L'/', L'\\');
    if (tidy.starts_with(L"\\\\.\\") || tidy.starts_with(L"\\\\?\\")) {
        const auto rest = std::wstring_view(tidy).substr(4);
        FUZZ_CHECK(rest.substr(1).starts_with(L":\\") || rest.starts_with(L"unc\\") ||
                   rest.starts_with(L"volume{"));
        FUZZ_CHECK((L"\\" + std::wstring(rest) + L"\\").find(L"\\..\\") == nowhere);
    }
}

} // namespace

void pdf_names(bytes input)
{
    const std::wstring text = wide_text(input);
    check_element(exact_copy<wchar_t>(text));
    check_suggestion(exact_terminated(text));
    check_name(exact_copy<wchar_t>(text));
    check_path(exact_copy<wchar_t>(text));
}

} // namespace quill::fuzz
