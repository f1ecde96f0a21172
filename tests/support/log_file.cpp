#include "tests/support/log_file.h"

#include <windows.h>

#include <shlobj.h>

#include <cstdio>
#include <ostream>
#include <string_view>

namespace quill::test {

void PrintTo(const log_line& line, std::ostream* out)
{
    *out << "[" << line.level << "] " << line.text;
}

namespace {

// Takes text from the front of rest up to mark, which is dropped too. Without the mark, rest gets empty.
std::string take_until(std::string_view& rest, std::string_view mark)
{
    const std::size_t end = rest.find(mark);
    const std::string taken(rest.substr(0, end));
    rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + mark.size());
    return taken;
}

bool has_only(const std::string& text, const char* characters)
{
    return !text.empty() && text.find_first_not_of(characters) == std::string::npos;
}

bool is_time(const std::string& text)
{
    return text.size() == 15 && has_only(text, "0123456789:") && text[2] == ':' && text[5] == ':' &&
           text[8] == ':';
}

log_line parse_line(const std::string& whole)
{
    std::string_view rest = whole;
    log_line line;
    line.time = take_until(rest, " [t:");
    line.thread = take_until(rest, "] [");
    const bool has_text = rest.find("] ") != std::string_view::npos;
    line.level = take_until(rest, "] ");
    line.text = rest;
    const bool well_formed = has_text && is_time(line.time) && has_only(line.thread, "0123456789") &&
                             has_only(line.level, "abcdefghijklmnopqrstuvwxyz");
    return well_formed ? line : log_line{"malformed", whole};
}

} // namespace

std::vector<log_line> parse_log(const std::string& text)
{
    std::vector<log_line> lines;
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t stop = text.find("\r\n", start);
        const std::string line = text.substr(start, stop - start);
        lines.push_back(stop == std::string::npos ? log_line{"malformed", line} : parse_line(line));
        start = stop == std::string::npos ? text.size() : stop + 2;
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
