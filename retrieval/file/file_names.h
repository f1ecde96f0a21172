// What the system makes of a file name or a path, told from the text alone: nothing is opened or looked up.
// Plain functions, callable on any thread.
#pragma once

#include <string_view>

namespace quill {

// Whether a path's last component opens a device in place of a file, in any folder, with any extension and
// in any case: "NUL", "com1.pdf", "AUX .tar.pdf".
bool is_device_name(std::wstring_view component) noexcept;

// Whether name stands for one file of its own in its folder: no separators, no wildcards, no stream, no
// device. A dot or blank at its end, which the system drops, counts as good.
bool is_creatable_name(std::wstring_view name) noexcept;

// Whether path can lead to a file on a disk or a share; false for devices, pipes and mailslots, which may
// keep the caller waiting. Says nothing of whether the file exists.
bool may_name_disk_file(std::wstring_view path) noexcept;

} // namespace quill
