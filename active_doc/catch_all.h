// Keeps exceptions out of the host: COM methods and window procedures must not throw.
#pragma once

#include <utility>

namespace quill {

// Returns the callable's result, or the fallback if it throws. The document's code throws std::bad_alloc
// only, so COM methods pass E_OUTOFMEMORY:
//     return catch_all([&]() -> HRESULT { ...; return S_OK; }, E_OUTOFMEMORY);
template <class Callable, class Result>
Result catch_all(Callable&& callable, Result fallback) noexcept
{
    try {
        return std::forward<Callable>(callable)();
    } catch (...) {
        return fallback;
    }
}

} // namespace quill
