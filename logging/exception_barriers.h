// Barriers around what the browser calls: no thrown exception and no system exception gets into the
// browser. An entry point runs its body as
//     return CrashBorder([&] { ...; return S_OK; }, E_FAIL, "quill::sharepoint_bho::SetSite", 58);
// The name and the line are part of the log's text: constants, not the compiler's idea of them.
#pragma once

#include "logging/system_exceptions.h"

#include <cstdint>
#include <memory>
#include <type_traits>

namespace quill {

inline constexpr const char* no_throw_name = "quill::NoThrow";
inline constexpr std::uint32_t no_throw_line = 38;

// Logs what kind of exception is being handled, and its text. Does nothing when there is none. What the
// logging itself throws, or a function of the suite, is ignored.
void log_current_exception(const char* name, std::uint32_t line) noexcept;

namespace barrier {

// The logging of NoThrow: a name that is null or empty is replaced by NoThrow's own, with its line.
void log_thrown(const char* name, std::uint32_t line) noexcept;

} // namespace barrier

// The callable's result, or fallback when it throws; the exception is logged. A system exception on its way
// to the CrashBorder around passes.
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

// Calls the callable although a system exception may have been handled before: for what must be done all the
// same. What it throws is logged; a system exception in it fails the guarded call around. Returns whether it
// threw nothing.
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
        return false; // calls has it
    }
}

// As NoThrow; in addition, a system exception (an access violation, a division by zero, ...) is given to
// the crash library, which reports it and decides: fallback is returned, or the search for a handler goes
// on in the browser, or execution resumes.
// What the entry point takes for its own protection (references to itself, its lock) belongs into held: the
// fault skips the destructors of whatever the callable has on its stack, but held.release(), which must not
// throw, is called however the callable ends.
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
                return; // call_behind_filter knows of it
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
