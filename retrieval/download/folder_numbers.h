// Decides which number the next cache folder gets, from the names in the temporary folder.
#pragma once

#include <cstdint>
#include <functional>
#include <queue>
#include <string_view>
#include <vector>

namespace quill {

// What the name of each cache folder begins with; its number follows.
inline constexpr std::wstring_view cache_folder_prefix = L"qll";

// Give it every entry of the folder, then take free numbers in ascending order. Keeps four bytes for each
// entry with a number; throws std::bad_alloc.
class folder_numbers
{
public:
    // No folder gets this number or a larger one.
    static constexpr std::uint32_t end = 0x7FFF'FFFF;

    // entry: the long name of a file or folder, in any case. Ignored when it is no cache folder's name.
    void add(std::wstring_view entry);

    // The smallest number that no entry has and that was not returned before; end when there is none.
    std::uint32_t next_free();

private:
    std::priority_queue<std::uint32_t, std::vector<std::uint32_t>, std::greater<>> taken_;
    std::uint32_t next_ = 0;
};

} // namespace quill
