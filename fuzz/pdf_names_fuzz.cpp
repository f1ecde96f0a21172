// What a page's element stands for, and the name under which a copy is saved: one text as each of them.
#include "fuzz/reference_text.h"
#include "fuzz/subjects.h"
#include "retrieval/pdf_element.h"
#include "retrieval/suggested_name.h"

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

// As the shell tells file names: a separator at the path's end, or before another one, ends none.
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

} // namespace

void pdf_names(bytes input)
{
    const std::wstring text = wide_text(input);
    check_element(exact_copy<wchar_t>(text));
    check_suggestion(exact_terminated(text));
}

} // namespace quill::fuzz
