// Which download folders --clean-downloads removes. Plain code; download_folders.h finds and removes them.
#pragma once

#include "diagnose/product.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace quill::diagnose {

// Times are in units of 100 ns since 1601, as the file system's.
using file_time = std::uint64_t;
inline constexpr file_time ticks_per_day = 24ull * 60 * 60 * 10'000'000;

struct folder_entry
{
    std::wstring name;
    bool is_folder = false;
    bool is_link = false; // any reparse point: symbolic link, junction, placeholder of a cloud
    std::uint64_t size = 0;
    file_time newest = 0; // the later of creation and last write
};

enum class verdict
{
    remove,
    too_new,
    foreign // not as the product leaves it
};

struct judgement
{
    verdict what = verdict::foreign;
    std::wstring reason; // of foreign
};

// Whether the product gives a folder this name: "qll" and a number without leading zeros.
bool is_download_folder_name(std::wstring_view name);

// Whether an entry of a temporary folder is a folder, or a link, of such a name. A file is not the product's.
bool is_download_folder(const folder_entry& entry);

struct clean_up_plan
{
    std::vector<std::wstring> folders; // temporary folders, each once
    std::vector<std::wstring> skipped; // lines about those that cannot be cleaned
};
clean_up_plan plan_clean_up(const product_settings& settings);

// folder: the entry of the folder itself, contents: what it holds. The product leaves at most one file in it,
// whose name ends in ".pdf".
judgement judge(const folder_entry& folder, const std::vector<folder_entry>& contents, file_time now,
                unsigned days);

} // namespace quill::diagnose
