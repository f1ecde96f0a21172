// The arguments of QuillDiagnose.exe.
#pragma once

#include <span>
#include <string>

namespace quill::diagnose {

enum class command
{
    diagnose,
    clean_downloads,
    help,
    wrong_usage
};

// Limits of --clean-downloads. At least one day, so that what open tabs show stays.
inline constexpr unsigned fewest_days = 1;
inline constexpr unsigned most_days = 3650;

struct options
{
    command what = command::diagnose;
    unsigned days = 0;
    std::wstring error; // of wrong_usage
};

// arguments: without the program's name.
options parse_arguments(std::span<const std::wstring> arguments);

std::wstring usage_text();

} // namespace quill::diagnose
