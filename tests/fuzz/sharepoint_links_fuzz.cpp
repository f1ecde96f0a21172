// Links of a SharePoint page, clicks on them and the start of the editor. Input: a link, and the URL of the
// page.
#include "sharepoint/decisions/links.h"
#include "sharepoint/editor/editor_launch.h"
#include "tests/fuzz/caught_line.h"
#include "tests/fuzz/reference_text.h"
#include "tests/fuzz/subjects.h"
#include "tests/fuzz/windows_arguments.h"

#include <atlutil.h>

#ifdef _WIN32
#include <shellapi.h>
#endif

#include <iterator>

namespace quill::fuzz {
namespace {

constexpr auto nowhere = std::wstring::npos;

bool expected_pdf_link(const std::wstring& lower)
{
    if (!lower.starts_with(L"/") && !lower.starts_with(L"http"))
        return false;
    if (lower.find(L'\0') != nowhere)
        return false;
    return lower.ends_with(L".pdf") && lower.find(L"/_vti_history/") == nowhere &&
           lower.find(L"/_vti_bin/") == nowhere;
}

bool expected_list_link(const std::wstring& lower)
{
    return lower.find(L"\"ms-listlink ms-draggable\"") != nowhere &&
           lower.find(L"onclick=\"return dispex(this") != nowhere;
}

void check_tests(const std::wstring& text)
{
    const exact_copy<wchar_t> exact(text);
    caught_line();
    const bool is_link = is_pdf_link(exact);
    FUZZ_CHECK(caught_line() == "detect click to " + utf8_of(text));
    const bool is_list_link = is_list_link_markup(exact);
    const bool is_anchor = is_link_tag(exact);
    // The case of other letters depends on the locale of the process.
    if (!is_ascii(text))
        return;
    const std::wstring lower = lower_ascii(text);
    FUZZ_CHECK(is_link == expected_pdf_link(lower));
    FUZZ_CHECK(is_list_link == expected_list_link(lower));
    FUZZ_CHECK(is_anchor == (lower == L"a"));
}

std::wstring expected_url(const std::wstring& link, const std::wstring& page)
{
    const std::size_t mark = page.find(L"://");
    if (mark == nowhere || !link.starts_with(L"/"))
        return link;
    const std::wstring scheme = page.substr(0, mark + 1);
    if (lower_ascii(scheme) != L"http:" && lower_ascii(scheme) != L"https:")
        return link;
    std::wstring server = page.substr(mark + 3);
    for (const wchar_t end : std::wstring_view(L"/?#"))
        server = server.substr(0, server.find(end));
    if (server.empty())
        return link;
    return link.starts_with(L"//") ? scheme + link : scheme + L"//" + server + link;
}

void check_url(const std::wstring& link, const std::wstring& page)
{
    const std::wstring url = absolute_link(exact_copy<wchar_t>(link), exact_copy<wchar_t>(page));
    FUZZ_CHECK(url == expected_url(link, page));
    FUZZ_CHECK(url.ends_with(link));
    if (!page.starts_with(L"/"))
        FUZZ_CHECK(absolute_link(url, page) == url);
}

bool is_separator(wchar_t unit)
{
    return unit == L'\\' || unit == L'/';
}

std::wstring expected_on_command_line(const std::wstring& url)
{
    static constexpr const wchar_t* escapes[] = {
        L"%00", L"%01", L"%02", L"%03", L"%04", L"%05", L"%06", L"%07", L"%08", L"%09", L"%0A",
        L"%0B", L"%0C", L"%0D", L"%0E", L"%0F", L"%10", L"%11", L"%12", L"%13", L"%14", L"%15",
        L"%16", L"%17", L"%18", L"%19", L"%1A", L"%1B", L"%1C", L"%1D", L"%1E", L"%1F"};
    std::wstring text;
    for (const wchar_t c : url) {
        if (c < std::size(escapes))
            text += escapes[c];
        else if (c == L'"')
            text += L"%22";
        else
            text += c;
    }
    return text;
}

// Compares with the system's own function where there is one.
std::vector<std::wstring> shell_arguments(const std::wstring& line)
{
#ifdef _WIN32
    int count = 0;
    wchar_t** const found = CommandLineToArgvW(line.c_str(), &count);
    FUZZ_CHECK(found);
    std::vector<std::wstring> arguments(found, found + count);
    LocalFree(found);
    return arguments;
#else
    return windows_arguments(line);
#endif
}

// Two arguments for any URL. A URL that ended with a backslash would escape the last quotation mark.
void check_command_line(const std::wstring& url)
{
    const std::wstring line = editor_command_line(exact_copy<wchar_t>(url));
    const std::wstring expected = L"sharepoint://" + expected_on_command_line(url);
    FUZZ_CHECK(line == L"/pdf \"" + expected + L"\"");
    for (const auto& arguments : {windows_arguments(line), shell_arguments(line)}) {
        FUZZ_CHECK(arguments.size() == 2 && arguments[0] == L"/pdf");
        FUZZ_CHECK(arguments[1] == expected || url.ends_with(L'\\'));
    }
}

// From the link to the arguments of the editor: no opened link ends with a backslash.
void check_opening(const std::wstring& link)
{
    if (!is_pdf_link(link))
        return;
    CUrl url;
    url.CrackUrl(link.c_str());
    DWORD length = url.GetUrlLength() + 1;
    std::wstring text(length, L'\0');
    FUZZ_CHECK(url.CreateUrl(text.data(), &length));
    text.resize(length);
    FUZZ_CHECK(!text.ends_with(L'\\') && text.find(L'\0') == nowhere);
    check_command_line(text);
}

void check_launch(const std::wstring& text)
{
    check_command_line(text);
    check_opening(text);

    const exact_copy<wchar_t> exact(text);
    const std::wstring folder = parent_directory(exact);
    FUZZ_CHECK(text.starts_with(folder));
    // One name is removed: the folder is the parent, not another ancestor.
    std::wstring rest = text.substr(folder.size());
    while (!rest.empty() && is_separator(rest.front()))
        rest.erase(0, 1);
    FUZZ_CHECK(rest.find_first_of(L"\\/") == nowhere);
    // A root is its own parent, with or without a trailing separator.
    FUZZ_CHECK(parent_directory(folder).size() <= folder.size());
    if (text.size() > 3 && text[1] == L':' && is_separator(text[2]))
        FUZZ_CHECK(folder.size() >= 3);
    if (folder.size() > 3 && text[1] == L':')
        FUZZ_CHECK(!is_separator(folder.back()));
}

} // namespace

void sharepoint_links(bytes input)
{
    const auto lines = wide_lines_of(input, 2);
    check_tests(lines[0]);
    check_launch(lines[0]);
    if (lines.size() > 1)
        check_url(lines[0], lines[1]);
}

} // namespace quill::fuzz
