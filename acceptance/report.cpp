#include "acceptance/report.h"

#include <cstdio>

namespace quill::acceptance {

bool report::open(const std::wstring& path, const std::wstring& beside)
{
    final_path_ = path;
    beside_ = beside;
    const bool has_earlier = GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
    path_ = has_earlier ? beside : path;
    // A file that shares deletion can be renamed while it is open: no line is lost in between.
    file_.reset(CreateFileW(path_.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_DELETE, nullptr,
                            has_earlier ? CREATE_ALWAYS : CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file_)
        return false;
    constexpr std::string_view byte_order_mark = "\xEF\xBB\xBF"; // for editors on older systems
    DWORD written = 0;
    return WriteFile(file_.get(), byte_order_mark.data(), static_cast<DWORD>(byte_order_mark.size()),
                     &written, nullptr) &&
           written == byte_order_mark.size();
}

bool report::replace_earlier()
{
    if (!is_beside_earlier()) {
        DeleteFileW(beside_.c_str()); // of a start that was refused
        return true;
    }
    if (!MoveFileExW(path_.c_str(), final_path_.c_str(), MOVEFILE_REPLACE_EXISTING))
        return false;
    path_ = final_path_;
    return true;
}

void report::line(std::string_view text)
{
    const std::string bytes = std::string(text) + "\r\n";
    DWORD written = 0;
    if (file_)
        WriteFile(file_.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
    std::printf("%.*s\n", static_cast<int>(text.size()), text.data());
    std::fflush(stdout);
}

void report::section(std::string_view title)
{
    line("");
    line(title);
}

void report::fact(std::string_view name, std::string_view value)
{
    line("  " + std::string(name) + ": " + std::string(value));
}

void report::passed(std::string_view what)
{
    fact("passed", what);
}

void report::failed(std::string_view what)
{
    failures_.emplace_back(what);
    fact("FAILED", what);
}

} // namespace quill::acceptance
