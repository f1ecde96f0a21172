// One initialisation among all threads: what guards static objects and what the C++ library initialises once
// both need it.
#pragma once

#include <cstdint>

namespace quill::runtime {

// Zero before the first attempt. Belongs to these functions from then on.
using once_word = std::uint32_t;

enum class once_answer
{
    done,      // initialised
    begin,     // the caller is to initialise, and then to call end_once
    recursive, // the caller is initialising already
};

// Waits while another thread initialises. No lock is held while the caller does.
once_answer begin_once(once_word& word) noexcept;

// With is_done false the next caller of begin_once tries again.
void end_once(once_word& word, bool is_done) noexcept;

} // namespace quill::runtime
