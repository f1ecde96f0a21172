// Barriers that keep C++ exceptions and system exceptions out of the browser. Every entry point that the
// browser calls runs its body in one:
//     return CrashBorder([&] { ...; return S_OK; }, E_FAIL, "quill::sharepoint_bho::SetSite", 58);
// Name and line are part of the log line's text and must not follow the source.
#pragma once

#include "logging/system_exceptions.h"

#include <cstdint>
#include <memory>
#include <type_traits>

namespace quill {

inline constexpr const char* no_throw_name = "quill::NoThrow";
inline constexpr std::uint32_t no_throw_line = 38;

// Logs the kind and the text of the exception that is being handled, if there is one. Ignores exceptions of
// the logger and of the suite's functions.
void log_current_exception(const char* name, std::uint32_t line) noexcept;

namespace barrier {

// Logs for NoThrow, whose own name and line replace a null or empty name.
void log_thrown(const char* name, std::uint32_t line) noexcept;

} // namespace barrier

// Returns the callable's result, or fallback if it throws; the exception is logged. A
// barrier::system_exception passes through to the enclosing CrashBorder.
template <typename Callable, typename Result = std::invoke_result_t<const Callable&>>
Result NoThrow(const Callable& callable, std::type_identity_t<Result> fallback,
               const char* name = no_throw_name, std::uint32_t line = no_throw_line)
{
    try {
        return callable();
    } catch (const barrier::system_exception&) {
        throw;
    } catch (...) {
        barrier::log_thrown(name, line);
    }
    return fallback;
}

// Calls the callable even if a system exception was handled before, for work that must not be skipped.
// Exceptions are logged; a system exception in it also fails the enclosing guarded call. Returns false if it
// threw.
template <typename Callable>
bool attempt(const Callable& callable, const char* name = no_throw_name,
             std::uint32_t line = no_throw_line) noexcept
{
    const barrier::separate_calls calls;
    try {
        return NoThrow(
            [&] {
                callable();
                return true;
            },
            false, name, line);
    } catch (const barrier::system_exception&) {
        return false; // calls has recorded it
    }
}

// As NoThrow, and also handles system exceptions (access violation, division by zero, ...). The crash library
// reports them and chooses: return fallback, continue the search for a handler in the browser, or resume.
// A fault skips the destructors of the callable's frames. What must be released nevertheless (a reference to
// this, a lock) belongs in held: held.release(), which must not throw, is called however the callable ends:
//     struct { CComPtr<IUnknown> self; void release() noexcept { self.Release(); } } held{GetUnknown()};
//     return CrashBorder(held, [&] { ...; return S_OK; }, E_FAIL);
template <typename Held, typename Callable, typename Result = std::invoke_result_t<const Callable&>>
Result CrashBorder(Held& held, const Callable& callable, std::type_identity_t<Result> fallback,
                   const char* name = crash_border_name, std::uint32_t line = 0)
{
    struct guarded_call
    {
        Held& held;
        const Callable& callable;
        Result result;
        const Result fallback;
        const char* name;
        std::uint32_t line;

        static void run(void* context)
        {
            auto& self = *static_cast<guarded_call*>(context);
            try {
                self.result = NoThrow(self.callable, self.fallback, self.name, self.line);
            } catch (const barrier::system_exception&) {
                return; // call_behind_filter has recorded it
            }
        }
        static void end(void* context) { static_cast<guarded_call*>(context)->held.release(); }
    };
    guarded_call call{held, callable, fallback, fallback, name, line};
    if (barrier::call_behind_filter(&guarded_call::run, &guarded_call::end, &call))
        return call.result;
    barrier::log_system_exception(name);
    return fallback;
}

namespace barrier {

struct nothing_held
{
    void release() noexcept {}
};

} // namespace barrier

template <typename Callable, typename Result = std::invoke_result_t<const Callable&>>
Result CrashBorder(const Callable& callable, std::type_identity_t<Result> fallback,
                   const char* name = crash_border_name, std::uint32_t line = 0)
{
    barrier::nothing_held nothing;
    return CrashBorder(nothing, callable, fallback, name, line);
}

} // namespace quill
