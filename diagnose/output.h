// The program's output: Unicode on a console, UTF-8 without a byte order mark in a file or a pipe.
#pragma once

#include <windows.h>

#include <string>

namespace quill::diagnose {

class output
{
public:
    // stream: STD_OUTPUT_HANDLE or STD_ERROR_HANDLE.
    explicit output(DWORD stream);

    // Line feeds become the system's line ends.
    void write(std::wstring_view text);
    // False if anything could not be written.
    bool is_complete() const { return is_complete_; }

private:
    void write_bytes(const std::string& bytes);

    HANDLE stream_;
    bool is_console_;
    bool is_complete_ = true;
};

} // namespace quill::diagnose
