// Where a path of the registry leads, by its form alone. Plain code; windows_machine.h opens local files
// only: a server that does not answer would stop the program, would be told who the user is, and opening a
// device may have an effect.
#pragma once

#include <windows.h>

#include <string_view>

namespace quill::diagnose {

enum class path_place
{
    local,
    share, // of another computer
    device // "\\.\COM1", "C:\folder\NUL.dll", named pipes
};

path_place place_of(std::wstring_view path);

// Whether a path has a drive and begins at its root, or names a share or a device. Others depend on the
// current folder of the program that uses them.
bool is_absolute(std::wstring_view path);

// Errors instead of the system's for paths that are not opened. Bit 29 marks errors of applications.
inline constexpr DWORD error_path_on_share = 0x20000001;
inline constexpr DWORD error_path_of_device = 0x20000002;

} // namespace quill::diagnose
