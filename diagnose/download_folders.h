// The module's download folders on the disk: counting them, and removing old ones.
#pragma once

#include "diagnose/clean_up.h"
#include "diagnose/machine.h"

#include <functional>
#include <string>

namespace quill::diagnose {

download_count count_downloads(const std::wstring& temp_folder);

struct removal
{
    std::uint64_t folders = 0;
    std::uint64_t files = 0;
    std::uint64_t bytes = 0;
    std::uint64_t left = 0;  // older than the limit, but not removed
    bool is_complete = true; // every folder could be listed
};

using line_writer = std::function<void(const std::wstring& line)>;

// Removes the download folders below temp_folder that judge() lets it remove, and adds to `total`. Writes a
// line for each old folder that is left. Opens no link: each folder and file is removed by a handle whose
// properties were checked.
void remove_downloads(const std::wstring& temp_folder, unsigned days, const line_writer& write,
                      removal& total);

} // namespace quill::diagnose
