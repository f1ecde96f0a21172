#include "tests/support/log_file.h"

#include <windows.h>

#include <gtest/gtest.h>
#include <shlobj.h>

#include <cstdio>
#include <ostream>
#include <regex>

namespace quill::test {
namespace {

// A line may be of any length, which std::regex does not handle: only its head is matched.
log_line parse_line(const std::string& line)
{
    static const std::regex shape(R"((\d\d:\d\d:\d\d:\d{6}) \[t:(\d+)\] \[([a-z]+)\] )");
    constexpr std::size_t longest_head = 64;
    std::smatch parts;
    const std::string head = line.substr(0, longest_head);
    if (!std::regex_search(head, parts, shape, std::regex_constants::match_continuous))
        return {"malformed", line, "", ""};
    return {parts[3], line.substr(static_cast<std::size_t>(parts.length(0))), parts[2], parts[1]};
}

// The folder is removed at the end of the test, so a failing test prints its log files.
void print_logs(const std::wstring& folder)
{
    WIN32_FIND_DATAW found{};
    const HANDLE search = FindFirstFileW((folder + L"\\*.log").c_str(), &found);
    if (search == INVALID_HANDLE_VALUE)
        return;
    do {
        const std::string text = read_file(folder + L"\\" + found.cFileName).value_or("");
        std::printf("module log %ls:\n%s\n", found.cFileName, text.c_str());
    } while (FindNextFileW(search, &found));
    FindClose(search);
}

} // namespace

void PrintTo(const log_line& line, std::ostream* out)
{
    *out << "[" << line.level << "] " << line.text;
}

std::vector<log_line> parse_log(const std::string& text)
{
    std::vector<log_line> lines;
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t stop = text.find("\r\n", start);
        const bool whole = stop != std::string::npos;
        const std::string line = text.substr(start, whole ? stop - start : stop);
        lines.push_back(whole ? parse_line(line) : log_line{"malformed", line, "", ""});
        start = whole ? stop + 2 : text.size();
    }
    return lines;
}

std::wstring profile_log_folder_path()
{
    wchar_t profile[MAX_PATH] = {};
    SHGetFolderPathW(nullptr, CSIDL_PROFILE, nullptr, 0, profile);
    return std::wstring(profile) + L"\\.quill\\test";
}

log_folder_scope::log_folder_scope(folder wanted) : lock_(L"log-folder"), path_(profile_log_folder_path())
{
    remove_path(path_);
    if (wanted == folder::absent)
        return;
    CreateDirectoryW(path_.substr(0, path_.find_last_of(L'\\')).c_str(), nullptr);
    CreateDirectoryW(path_.c_str(), nullptr);
}

log_folder_scope::~log_folder_scope()
{
    if (testing::Test::HasFailure())
        print_logs(path_);
    remove_path(path_);
}

std::wstring log_folder_scope::file_of(const std::wstring& stem, DWORD process_id) const
{
    return path_ + L"\\" + stem + L"-" + std::to_wstring(process_id) + L".log";
}

std::vector<log_line> log_folder_scope::lines() const
{
    wchar_t path[MAX_PATH] = {};
    GetModuleFileNameW(nullptr, path, MAX_PATH);
    std::wstring name = path;
    name.erase(0, name.find_last_of(L'\\') + 1);
    return parse_log(read_file(file_of(name.substr(0, name.find(L'.')), GetCurrentProcessId())).value_or(""));
}

} // namespace quill::test
