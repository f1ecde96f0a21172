// The log file that the module writes, as a test reads it.
#pragma once

#include "tests/support/scopes.h"

#include <windows.h>

#include <string>
#include <vector>

namespace quill::test {

// One line, taken apart: "12:34:56:123456 [t:42] [debug] text".
struct log_line
{
    std::string level;
    std::string text;
    std::string thread = {};
    std::string time = {};

    // Compares what the module decides: level and text.
    friend bool operator==(const log_line& a, const log_line& b)
    {
        return a.level == b.level && a.text == b.text;
    }
};

void PrintTo(const log_line& line, std::ostream* out);

// Takes a log's text apart at its "\r\n"; a line that is not built as above gets the level "malformed".
std::vector<log_line> parse_log(const std::string& text);

// The folder "<profile>\.quill\test", whose existence sends the module's log file into it.
std::wstring profile_log_folder_path();

// Makes that folder (or makes sure that there is none), and removes it with all its files at the end.
// While it exists, a process whose QUILL_LOG_LEVEL is set logs into it. Other test programs that use the
// folder wait meanwhile.
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

    // The log file of a process; stem is its program's name up to the first dot.
    std::wstring file_of(const std::wstring& stem, DWORD process_id) const;
    // The lines of this process's log file so far.
    std::vector<log_line> lines() const;

private:
    cross_process_lock lock_;
    std::wstring path_;
};

} // namespace quill::test
