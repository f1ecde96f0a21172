// Keeps exceptions inside: COM methods and thread routines are called by code that cannot take one.
#pragma once

#include <utility>

namespace quill {

// Returns what the callable returns, or the fallback when it throws (the document's own code throws only
// when memory runs out, which is what the fallback should say).
template <class Callable, class Result>
Result no_throw(Callable&& callable, Result fallback) noexcept
{
    try {
        return std::forward<Callable>(callable)();
    } catch (...) {
        return fallback;
    }
}

} // namespace quill
