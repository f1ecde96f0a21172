// The command line of quill_browser.exe.
#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace quill {

struct browser_options
{
    std::wstring address;          // a URL or a file path
    std::wstring screenshot;       // path of the PNG file to save; empty for none
    bool exit = false;             // exit when the document is shown
    std::chrono::seconds wait{30}; // time-out for the document
    std::size_t documents = 1;     // expected number of documents in the page
    bool page = false;             // expect an HTML page instead of a document
    std::wstring click;            // id of the element to click first; empty for none
    bool helpers = false;          // load the registered helper objects
};

inline constexpr wchar_t browser_usage[] =
    L"usage: quill_browser [OPTIONS] URL\n"
    L"  --screenshot FILE  save a screenshot (PNG) when the document is shown\n"
    L"  --exit             exit when the document is shown; the exit code is 0 if it was\n"
    L"  --wait SECONDS     time-out for the document, 1 to 600 (default 30)\n"
    L"  --documents COUNT  number of documents in the page, 1 to 99 (default 1)\n"
    L"  --page             wait for an HTML page instead of a document\n"
    L"  --click ID         wait for a page, click its element with this id, then wait for the document\n"
    L"  --helpers          load the browser helper objects that are registered per machine\n";

// Parses the arguments without the program's name. nullopt if they are invalid.
std::optional<browser_options> parse_command_line(const std::vector<std::wstring>& arguments);

} // namespace quill
