// Thread-safe one-time initialisation: the common part of the guards of function-local statics and of
// pthread_once.
#pragma once

#include <cstdint>

namespace quill::runtime {

// Zero-initialised; afterwards accessed by these functions only.
using once_word = std::uint32_t;

enum class once_result
{
    done,      // already initialised
    begin,     // the caller must initialise and then call end_once
    recursive, // the calling thread is already initialising
};

// Waits while another thread initialises. Holds no lock on return.
once_result begin_once(once_word& word) noexcept;

// Ends an initialisation. If is_done is false, the next call of begin_once returns `begin` again.
void end_once(once_word& word, bool is_done) noexcept;

} // namespace quill::runtime
