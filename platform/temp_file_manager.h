// Decides which folder the module may use for temporary files.
#pragma once

#include "platform/integrity_level.h"

#include <windows.h>

#include <cstddef>
#include <functional>
#include <string>

namespace quill {

class temp_file_manager
{
public:
    // Receives one line of UTF-8 text for each failure; the text is valid during the call.
    using error_report = std::function<void(const char* line)>;
    // Whether the given process runs at low integrity.
    using integrity_query = bool (*)(HANDLE process);

    explicit temp_file_manager(error_report report,
                               integrity_query is_low_integrity = is_low_integrity_process);

    // Fills path with the temporary folder: the user's LocalLow "Temp" at low integrity (made when missing),
    // else what QUILL_TMP_FOLDER says, else the system's temporary folder. Returns whether it is there as a
    // directory. path stays as it is when there is no folder to name. Throws
    // std::filesystem::filesystem_error when the system's temporary folder cannot be had.
    bool temp_directory(std::wstring& path) const;

    // Copies the temporary folder's path into buffer, cut to buffer_size - 1 characters and terminated;
    // buffer may be null. A missing folder is made when create is 1 and left missing otherwise. Returns the
    // path's full length in characters; 0 when there is no folder or it cannot be made. Throws as
    // temp_directory does.
    std::size_t get_temp_folder(std::size_t buffer_size, wchar_t* buffer, int create) const;

private:
    bool local_low_directory(std::wstring& path) const;
    bool create_directories(const std::wstring& path) const;

    error_report report_;
    integrity_query is_low_integrity_;
};

} // namespace quill
