// Determines the numbers of new cache folders from the names in the temporary folder.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <queue>
#include <string_view>
#include <vector>

namespace quill {

// Prefix of the name of each cache folder; its number follows.
inline constexpr std::wstring_view cache_folder_prefix = L"qll";

// The number in the name of a cache folder; nullopt for any other name. Ignores the case of the prefix, as
// the file system does.
std::optional<std::uint32_t> cache_folder_number(std::wstring_view entry);

// Add every entry of the folder first, then take free numbers in ascending order. Throws std::bad_alloc.
class folder_numbers
{
public:
    // Folder numbers are below this one.
    static constexpr std::uint32_t end = 0x7FFF'FFFF;

    // entry: the long name of a file or folder. Names other than those of cache folders are ignored.
    void add(std::wstring_view entry);

    // The smallest number that no entry has and that was not returned before; end if there is none.
    std::uint32_t next_free();

private:
    std::priority_queue<std::uint32_t, std::vector<std::uint32_t>, std::greater<>> taken_;
    std::uint32_t next_ = 0;
};

} // namespace quill
