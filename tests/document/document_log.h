// The module's log lines during one scenario, in the form that tests compare.
#pragma once

#include "tests/support/log_file.h"

#include <string>
#include <vector>

namespace quill::test {

// Create it before the module is loaded: it enables the module's log and directs it to a file of its own.
class document_log
{
public:
    document_log();

    // The lines of this thread since the last take, oldest first. The address of the document is written as
    // "@": the line "ACTIVEDOC 0x12ab OnDestroy" becomes "@ OnDestroy". A line of another document is
    // unchanged.
    std::vector<std::string> take(const std::string& document_address);
    // As take, without the lines that contain `part`.
    std::vector<std::string> take_without(const std::string& document_address, const std::string& part);
    // Discards the lines so far.
    void skip();

    // All lines so far of all threads, or only those of the download workers.
    std::vector<log_line> all() const;
    std::vector<std::string> worker_lines() const;
    bool worker_wrote(const std::string& beginning) const;

private:
    log_folder_scope folder_;
    std::string thread_;
    std::size_t taken_ = 0;
};

// The form of an address in the log.
std::string pointer_text(const void* pointer);

std::vector<std::string> without(std::vector<std::string> lines, const std::string& part);

} // namespace quill::test
