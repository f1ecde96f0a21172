// The kind of a page by its head, and its ready state. A line is an element: "s" and the source of a script,
// or "m", the name of a meta element, "=" and its content; any line is the name of a state.
#include "sharepoint/decisions/page_kind.h"
#include "sharepoint/decisions/ready_state.h"
#include "tests/fuzz/reference_text.h"
#include "tests/fuzz/subjects.h"

#include <algorithm>

namespace quill::fuzz {
namespace {

constexpr std::size_t most_elements = 64;

struct meta_text
{
    std::wstring name_text;
    std::wstring content_text;

    std::wstring name() const { return name_text; }
    std::wstring content() const { return content_text; }
};

struct head
{
    std::vector<std::wstring> scripts;
    std::vector<meta_text> metas;
};

head head_of(const std::vector<std::wstring>& lines)
{
    head result;
    for (const std::wstring& line : lines) {
        if (line.starts_with(L's')) {
            result.scripts.push_back(line.substr(1));
        } else if (line.starts_with(L'm')) {
            const std::size_t equals = std::min(line.find(L'='), line.size() - 1);
            result.metas.push_back({line.substr(1, equals - 1), line.substr(equals + 1)});
        }
    }
    return result;
}

bool names_scripts(const std::wstring& source)
{
    return lower_ascii(source).find(L".sharepointonline.com/") != std::wstring::npos;
}

bool names_generator(const meta_text& meta)
{
    return lower_ascii(meta.name_text) == L"generator" &&
           lower_ascii(meta.content_text).find(L"sharepoint") != std::wstring::npos;
}

// The number of elements read until test is true for one.
template <class Elements, class Test>
std::size_t reads_until(const Elements& elements, Test test)
{
    const auto found = std::ranges::find_if(elements, test);
    return static_cast<std::size_t>(found - elements.begin()) + (found == elements.end() ? 0 : 1);
}

void check_kind(const head& page)
{
    std::size_t scripts_read = 0, metas_read = 0;
    const auto any_of = [](const auto& elements, auto test, std::size_t& read) {
        return std::ranges::any_of(elements, [&](const auto& each) { return ++read, test(each); });
    };
    const quill::page_kind kind =
        decide_page_kind([&](auto test) { return any_of(page.scripts, test, scripts_read); },
                         [&](auto test) { return any_of(page.metas, test, metas_read); });

    const bool has_scripts = std::ranges::any_of(page.scripts, names_scripts);
    const bool has_generator = std::ranges::any_of(page.metas, names_generator);
    FUZZ_CHECK(kind == (has_scripts     ? quill::page_kind::sharepoint_online_scripts
                        : has_generator ? quill::page_kind::sharepoint
                                        : quill::page_kind::regular));
    FUZZ_CHECK(scripts_read == reads_until(page.scripts, names_scripts));
    FUZZ_CHECK(metas_read == (has_scripts ? 0 : reads_until(page.metas, names_generator)));
}

void check_state(const std::wstring& text)
{
    const std::vector<std::wstring> names = {L"uninitialized", L"loading", L"loaded", L"interactive",
                                             L"complete"};
    const auto found = std::ranges::find(names, text);
    const auto expected = found == names.end() ? 0 : found - names.begin();
    FUZZ_CHECK(static_cast<int>(ready_state_from_text(exact_copy<wchar_t>(text))) == expected);
}

} // namespace

void page_kind(bytes input)
{
    const auto lines = wide_lines_of(input, most_elements);
    if (!std::ranges::all_of(lines, [](const auto& line) { return is_ascii(line); }))
        return;
    check_kind(head_of(lines));
    for (const std::wstring& line : lines)
        check_state(line);
}

} // namespace quill::fuzz
