// Runs a native Unix program (poppler's tools) from a Windows program under Wine, without blocking. Wine
// returns no process handle for it, so its output is redirected to a file and an end mark in that file
// indicates that it has exited.
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
    // Starts `program`, an absolute Unix path ("/usr/bin/pdfinfo"), with the file `input`, a Windows path, as
    // its standard input. nullopt if the input or the Unix shell does not exist. The program is killed after
    // one minute.
    static std::optional<machine_program>
    start(const std::wstring& program, const std::vector<std::wstring>& arguments, const std::wstring& input);

    struct result
    {
        int exit_code;      // 127 if the program does not exist, 124 after the time-out
        std::string output; // its standard output
    };

    // nullopt until the program has exited.
    std::optional<result> poll() const;

private:
    explicit machine_program(file_handle output) : output_(std::move(output)) {}

    // Opened with delete-on-close, so the file is deleted even if the program still writes to it.
    file_handle output_;
};

// Quotes `text` as one argument of a Windows command line.
std::wstring quoted_argument(const std::wstring& text);

} // namespace quill
