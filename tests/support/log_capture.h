// The log lines that the code under test writes in this very program, caught before any sink. For code
// that is linked into the test; a loaded DLL has a logger of its own (see log_file.h).
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace spdlog {
class logger;
}

namespace quill::test {

// Catches lines of every level while it lives, and puts the former logger back at the end.
class log_capture
{
public:
    log_capture();
    ~log_capture();
    log_capture(const log_capture&) = delete;
    log_capture& operator=(const log_capture&) = delete;

    // The lines so far, each as "level: text", for example "debug: ACTIVEDOC ...". Any thread may write.
    std::vector<std::string> lines() const;
    // Forgets the lines so far.
    void clear();
    // Called with every line from now on, before the code under test goes on.
    void on_line(std::function<void(const std::string&)> action);

private:
    struct store;
    std::shared_ptr<store> store_;
    std::shared_ptr<spdlog::logger> before_;
};

} // namespace quill::test
