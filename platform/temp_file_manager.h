// Selects the folder for the module's temporary files.
#pragma once

#include "platform/integrity_level.h"

#include <windows.h>

#include <cstddef>
#include <functional>
#include <string>

namespace quill {

// The system's temporary folder of this process. Throws std::filesystem::filesystem_error if it is
// unavailable.
std::wstring system_temp_directory();

// The temporary folder of low-integrity processes, whether or not it exists; empty if the system has none.
std::wstring local_low_temp_directory();

// The environment variable that replaces the system's temporary folder.
inline constexpr wchar_t temp_folder_variable[] = L"QUILL_TMP_FOLDER";

class temp_file_manager
{
public:
    // Receives one line of UTF-8 text for each failure. The text is valid only during the call.
    using error_report = std::function<void(const char* line)>;
    // Returns whether the process runs at low integrity.
    using integrity_query = bool (*)(HANDLE process);

    explicit temp_file_manager(error_report report,
                               integrity_query is_low_integrity = is_low_integrity_process);

    // Sets path to the temporary folder: LocalLow\Temp at low integrity (created if missing), else the value
    // of QUILL_TMP_FOLDER, else the system's temporary folder. Returns whether that directory exists. path is
    // unchanged if no folder can be determined. Throws std::filesystem::filesystem_error if the system's
    // temporary folder is unavailable.
    bool temp_directory(std::wstring& path) const;

    // Copies the path into buffer, which may be null, truncated to buffer_size - 1 characters and
    // null-terminated. A missing folder is created only if create is 1. Returns the full length of the path
    // in characters; 0 if there is no folder or it cannot be created. Throws as temp_directory.
    std::size_t get_temp_folder(std::size_t buffer_size, wchar_t* buffer, int create) const;

private:
    bool local_low_directory(std::wstring& path) const;
    bool create_directories(const std::wstring& path) const;

    error_report report_;
    integrity_query is_low_integrity_;
};

} // namespace quill
