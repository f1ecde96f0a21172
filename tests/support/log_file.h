// The log file that the module writes, for tests to read.
#pragma once

#include "tests/support/scopes.h"

#include <windows.h>

#include <string>
#include <vector>

namespace quill::test {

// One parsed line: "12:34:56:123456 [t:42] [debug] text".
struct log_line
{
    std::string level;
    std::string text;
    std::string thread = {};
    std::string time = {};

    // Compares level and text, which the module decides.
    friend bool operator==(const log_line& a, const log_line& b)
    {
        return a.level == b.level && a.text == b.text;
    }
};

void PrintTo(const log_line& line, std::ostream* out);

// Splits a log at "\r\n"; a line of another form gets the level "malformed".
std::vector<log_line> parse_log(const std::string& text);

// The folder "<profile>\.quill\test". If it exists, the module writes its log file there.
std::wstring profile_log_folder_path();

// Creates that folder (or removes it, if it is to be absent), and removes it with its files at the end. While
// it exists, a process whose QUILL_LOG_LEVEL is set logs into it. Other test programs that use the folder
// wait meanwhile.
class log_folder_scope
{
public:
    enum class folder
    {
        present,
        absent
    };

    explicit log_folder_scope(folder wanted = folder::present);
    ~log_folder_scope();
    log_folder_scope(const log_folder_scope&) = delete;
    log_folder_scope& operator=(const log_folder_scope&) = delete;

    // The log file of a process; stem is the name of its program up to the first dot.
    std::wstring file_of(const std::wstring& stem, DWORD process_id) const;
    // The lines in the log file of this process so far.
    std::vector<log_line> lines() const;

private:
    cross_process_lock lock_;
    std::wstring path_;
};

} // namespace quill::test
