// Classifies file names and paths by their text, as the system would interpret them. Nothing is opened or
// looked up. Callable on any thread.
#pragma once

#include <string_view>

namespace quill {

// Whether a path that ends in this component opens a device instead of a file. Folder, extension and case
// do not matter: "NUL", "com1.pdf", "AUX .tar.pdf".
bool is_device_name(std::wstring_view component) noexcept;

// Whether a file can be created under this name: no separators, wildcards, streams or devices. A trailing
// dot or blank, which the system strips, is permitted.
bool is_creatable_name(std::wstring_view name) noexcept;

// Whether path can name a file on a disk or a share. False for devices, pipes and mailslots, which could
// block the caller when opened. The file need not exist.
bool may_name_disk_file(std::wstring_view path) noexcept;

} // namespace quill
