// Calls into the host's objects from guarded code: call_host(browser, &IWebBrowser2::Stop). A system
// exception in the host is handled there and thrown on (logging/system_exceptions.h).
#pragma once

#include "logging/system_exceptions.h"

#include <oaidl.h>

#include <type_traits>

namespace quill {

namespace host_call {

// A call that failed, or did not return, has handed out nothing that could be released.
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

// A parameter that is a pointer to a pointer or to a variant is an out parameter.
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
