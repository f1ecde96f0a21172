// Runs a program of the machine that Wine runs on (poppler's tools), without waiting for it: Wine hands out
// no process handle for such a program, so its output goes to a file and its end shows as a mark in that
// file.
#pragma once

#include <windows.h>

#include <optional>
#include <string>
#include <vector>

namespace quill {

// Owns a file handle.
class file_handle
{
public:
    file_handle() = default;
    explicit file_handle(HANDLE handle) : handle_(handle) {}
    file_handle(file_handle&& other) noexcept : handle_(other.release()) {}
    file_handle& operator=(file_handle&& other) noexcept;
    ~file_handle();

    HANDLE get() const { return handle_; }
    explicit operator bool() const { return handle_ != INVALID_HANDLE_VALUE; }

private:
    HANDLE release();

    HANDLE handle_ = INVALID_HANDLE_VALUE;
};

class machine_program
{
public:
    // Starts `program`, an absolute path of the machine ("/usr/bin/pdfinfo"), which reads `input`, a Windows
    // path, as its standard input. Empty when the input or this platform's shell is not there. The program is
    // ended by the machine when it runs longer than a minute.
    static std::optional<machine_program>
    start(const std::wstring& program, const std::vector<std::wstring>& arguments, const std::wstring& input);

    struct result
    {
        int exit_code;      // 127 when there is no such program, 124 when it ran too long
        std::string output; // what it wrote to its standard output
    };

    // Nothing until the program has ended.
    std::optional<result> poll() const;

private:
    explicit machine_program(file_handle output) : output_(std::move(output)) {}

    // Deleted by the system when the handle is closed, also while the program still writes.
    file_handle output_;
};

// `text` as one argument of a Windows command line.
std::wstring quoted_argument(const std::wstring& text);

} // namespace quill
