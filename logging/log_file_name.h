// Folder and name of the log file. Used by the set-up of the logger.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quill {

// The fmt pattern of the log file's path, with "{:d}" for the process id. May create the folder in the
// application data. Throws what DirectoryCreateRecursively and module_stem throw.
std::wstring log_file_name_pattern();

// The pattern from its parts: folder, "/", stem of the program's name and "-{:d}.log". Doubles braces in the
// parts, so that fmt prints them.
std::wstring log_file_name_pattern(std::wstring_view folder, std::wstring_view stem);

// The folder for logs in the user's profile; empty if it does not exist or profile is std::nullopt. A user
// creates it to have the logs written there.
std::wstring profile_log_folder(const std::optional<std::wstring>& profile);

// The product's folder in the user's application data as a short path if the volume has one; created if
// missing. Empty if the system has no application data folder.
std::wstring app_data_folder();

} // namespace quill
