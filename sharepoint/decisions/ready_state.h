// The ready states of an HTML document. Used by the event sink of documents.
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

// Case-sensitive; uninitialized for text that names no state.
ready_state ready_state_from_text(std::wstring_view text) noexcept;

} // namespace quill
