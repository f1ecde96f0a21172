// Calls methods of the host's objects from the event sinks and what they call:
//     call_host(browser, &IWebBrowser2::get_TopLevelContainer, &top_level);
// A system exception in the host is thrown as a C++ exception (logging/system_exceptions.h).
#pragma once

#include "logging/system_exceptions.h"

#include <oaidl.h>

#include <type_traits>

namespace quill {

namespace host_call {

// Clears an out parameter whose value must not be released: the call failed or did not return.
template <class T>
void forget_out(T** out) noexcept
{
    *out = nullptr;
}
inline void forget_out(VARIANT* out) noexcept
{
    out->vt = VT_EMPTY;
}
template <class T>
void forget_out(const T&) noexcept
{
}

} // namespace host_call

// Parameters of type T** and VARIANT* are treated as out parameters and cleared unless the call succeeds.
template <class Result, class Interface, class... Parameters>
Result call_host(std::type_identity_t<Interface>* object,
                 Result (STDMETHODCALLTYPE Interface::*method)(Parameters...),
                 std::type_identity_t<Parameters>... arguments)
{
    try {
        const Result result = barrier::call_host([&] { return (object->*method)(arguments...); });
        if constexpr (std::is_same_v<Result, HRESULT>)
            if (FAILED(result))
                (host_call::forget_out(arguments), ...);
        return result;
    } catch (const barrier::system_exception&) {
        (host_call::forget_out(arguments), ...);
        throw;
    }
}

} // namespace quill
