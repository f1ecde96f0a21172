// report.txt: each line is written when it is known, so that a run that is broken off leaves what it has
// seen.
#pragma once

#include "platform/unique_handle.h"

#include <string>
#include <string_view>
#include <vector>

namespace quill::acceptance {

class report
{
public:
    // Replaces the file. Returns false, with the system's error code, if it cannot be written.
    bool open(const std::wstring& path);

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
    unique_handle file_;
    std::vector<std::string> failures_;
};

} // namespace quill::acceptance
