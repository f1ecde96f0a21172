// The stages of a document's loading.
#pragma once

#include <string_view>

namespace quill {

enum class ready_state : int
{
    uninitialized = 0,
    loading = 1,
    loaded = 2,
    interactive = 3,
    complete = 4
};

// The state that the text names, in exactly this case; uninitialized for any other text.
ready_state ready_state_from_text(std::wstring_view text) noexcept;

} // namespace quill
