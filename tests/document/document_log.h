// The module's log lines during one scenario, as the tests compare them.
#pragma once

#include "tests/support/log_file.h"

#include <string>
#include <vector>

namespace quill::test {

// Build it before the module loads: it switches the module's log on and sends it to a file of its own.
class document_log
{
public:
    document_log();

    // The lines of this thread since the last take, oldest first. The document's address is written as
    // "@": the line "ACTIVEDOC 0x12ab OnDestroy" becomes "@ OnDestroy". A line of another document keeps
    // its text.
    std::vector<std::string> take(const std::string& document_address);
    // As take, without the lines that contain `part`.
    std::vector<std::string> take_without(const std::string& document_address, const std::string& part);
    // Drops the lines so far.
    void skip();

    // Every line so far of every thread, or only those of the download workers.
    std::vector<log_line> all() const;
    std::vector<std::string> worker_lines() const;
    bool worker_wrote(const std::string& beginning) const;

private:
    log_folder_scope folder_;
    std::string thread_;
    std::size_t taken_ = 0;
};

// How the log writes an address.
std::string pointer_text(const void* pointer);

std::vector<std::string> without(std::vector<std::string> lines, const std::string& part);

} // namespace quill::test
