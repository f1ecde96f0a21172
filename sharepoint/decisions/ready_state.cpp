#include "sharepoint/decisions/ready_state.h"

#include <array>
#include <cstddef>

namespace quill {

ready_state ready_state_from_text(std::wstring_view text) noexcept
{
    constexpr std::array<std::wstring_view, 5> names = {L"uninitialized", L"loading", L"loaded",
                                                        L"interactive", L"complete"};
    for (std::size_t state = 0; state < names.size(); ++state)
        if (names[state] == text)
            return static_cast<ready_state>(state);
    return ready_state::uninitialized;
}

} // namespace quill
