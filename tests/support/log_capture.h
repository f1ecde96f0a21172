// Captures the log lines of code that is linked into the test program. A loaded DLL has a logger of its own,
// see log_file.h.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace spdlog {
class logger;
}

namespace quill::test {

// Captures lines of every level in its scope, and restores the former logger at its end.
class log_capture
{
public:
    log_capture();
    ~log_capture();
    log_capture(const log_capture&) = delete;
    log_capture& operator=(const log_capture&) = delete;

    // The lines so far, each as "level: text", for example "debug: ACTIVEDOC ...". Any thread may write.
    std::vector<std::string> lines() const;
    // Discards the lines so far.
    void clear();
    // Called with each later line, before the statement that logs it returns.
    void on_line(std::function<void(const std::string&)> action);

private:
    struct store;
    std::shared_ptr<store> store_;
    std::shared_ptr<spdlog::logger> before_;
};

} // namespace quill::test
