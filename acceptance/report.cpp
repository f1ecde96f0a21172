#include "acceptance/report.h"

#include <cstdio>

namespace quill::acceptance {

bool report::open(const std::wstring& path)
{
    file_.reset(CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_ALWAYS,
                            FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file_)
        return false;
    constexpr std::string_view byte_order_mark = "\xEF\xBB\xBF"; // for editors on older systems
    DWORD written = 0;
    return WriteFile(file_.get(), byte_order_mark.data(), static_cast<DWORD>(byte_order_mark.size()),
                     &written, nullptr) &&
           written == byte_order_mark.size();
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
