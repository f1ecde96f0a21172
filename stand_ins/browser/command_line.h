// What quill_browser.exe is told on its command line.
#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace quill {

struct browser_options
{
    std::wstring address;          // a URL, or the path of a file
    std::wstring screenshot;       // PNG file to save when the document is shown; empty for none
    bool exit = false;             // leave after that, instead of staying until the window is closed
    std::chrono::seconds wait{30}; // how long the document may take to appear
    std::size_t documents = 1;     // how many are to appear: a page can have several
    bool page = false;             // an HTML page is to appear instead
    std::wstring click;            // identifier of the page's element to click on first; empty for none
    bool helpers = false;          // load the registered helper objects
};

inline constexpr wchar_t browser_usage[] =
    L"usage: quill_browser [OPTIONS] ADDRESS\n"
    L"  --screenshot FILE  saves a picture of the window (PNG) when the document is shown\n"
    L"  --exit             leaves then; the exit code is 0 when the document was shown\n"
    L"  --wait SECONDS     how long the document may take to appear, 1 to 600 (30)\n"
    L"  --documents COUNT  how many documents the page shows, 1 to 99 (1)\n"
    L"  --page             an HTML page is to be shown, not a document\n"
    L"  --click ID         waits for a page, clicks on its element of that id, and goes on from there\n"
    L"  --helpers          loads the browser helper objects that are registered for the machine\n";

// Empty when the arguments (without the program's name) make no sense.
std::optional<browser_options> parse_command_line(const std::vector<std::wstring>& arguments);

} // namespace quill
