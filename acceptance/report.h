// report.txt: each line is written when it is known, so that a run that is broken off leaves what it has
// seen. The report of an earlier run stays until all checks before a run have passed.
#pragma once

#include "platform/unique_handle.h"

#include <string>
#include <string_view>
#include <vector>

namespace quill::acceptance {

class report
{
public:
    // Writes to `path`, or to `beside` if there is a file `path` already. Returns false, with the system's
    // error code, if the file, which is named by path(), cannot be written.
    bool open(const std::wstring& path, const std::wstring& beside);
    // Replaces a file `path` of an earlier run. Returns false, with the system's error code, if it cannot be
    // replaced: it is as it was, and what follows is written to `beside`.
    bool replace_earlier();
    const std::wstring& path() const { return path_; }
    // Whether this report is written beside that of an earlier run.
    bool is_beside_earlier() const { return path_ != final_path_; }

    // A line of the report, which is also printed.
    void line(std::string_view text);
    // A heading with an empty line before it.
    void section(std::string_view title);
    // "  name: value"
    void fact(std::string_view name, std::string_view value);
    // A result: "  passed: what", or "  FAILED: what", which is repeated at the end of the report.
    void passed(std::string_view what);
    void failed(std::string_view what);

    const std::vector<std::string>& failures() const { return failures_; }

private:
    std::wstring final_path_;
    std::wstring path_;
    std::wstring beside_;
    unique_handle file_;
    std::vector<std::string> failures_;
};

} // namespace quill::acceptance
