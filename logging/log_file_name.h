// Where the log file lies and what it is called.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quill {

// The fmt pattern of the log file's name for this process, with "{:d}" for the process id. May create
// the folder under the application data. Throws what DirectoryCreateRecursively and module_stem throw.
std::wstring log_file_name_pattern();

// The same from its parts: the folder, "/", the program's stem and "-{:d}.log". Braces of the parts are
// doubled, so that they stand for themselves.
std::wstring log_file_name_pattern(std::wstring_view folder, std::wstring_view stem);

// The folder in the user's profile that asks, by being there, for logs in it; empty when it is not there
// or there is no profile folder.
std::wstring profile_log_folder(const std::optional<std::wstring>& profile);

// The product's folder under the user's application data, created when missing, in its short form where
// the volume has one; empty when the system does not know the application data folder.
std::wstring app_data_folder();

} // namespace quill
