// System exceptions (access violations, divisions by zero, ...) in what a guarded entry calls. A system
// exception unwinds no C++ frame: a barrier that handles one skips every destructor between itself and the
// fault. Calls into the host are therefore made through call_host, which handles the fault where the call was
// made and throws system_exception from there, so that everything the entry holds is released.
// What leaks: what the host's own frames held and had written into out parameters; after a fault
// in the module's own code, or one that the crash library leaves to the browser, also what the frames between
// it and the barrier held (CrashBorder's held is released in each case).
#pragma once

#include <windows.h>

#include <unknwn.h>

#include <type_traits>

namespace quill {

inline constexpr const char* crash_border_name = "quill::CrashBorder";

namespace barrier {

// On its way to the CrashBorder around. Every other handler lets it pass.
class system_exception
{
};

// The logging of CrashBorder: a null name is replaced by CrashBorder's own.
void log_system_exception(const char* name) noexcept;

// The state of the calls into the host that are made for one guarded entry.
struct host_calls
{
    host_calls* outer;
    int (*handle_exception)(EXCEPTION_POINTERS* exception);
    bool is_behind_barrier; // a filter of call_behind_filter is around
    bool has_handled;       // a system exception
};

// Calls call(context), and end(context) when that is over: after its return, when it throws, and when a
// system exception in it is handled by any handler around. end must not throw.
void call_and_end(void (*call)(void* context), void (*end)(void* context), void* context);

// Calls call(context) behind the crash library's filter, and end(context) when that is over: after its return
// as well as when a system exception is handled here, with the whole stack to itself, or by the browser.
// Neither may throw. Returns false when a system exception was handled, here or in a call into the host.
bool call_behind_filter(void (*call)(void* context), void (*end)(void* context), void* context);

// Makes a call into the host. Throws system_exception when a system exception was handled in it, and instead
// of calling when one has been handled in a Release. Outside a guarded call nothing is handled.
void call_host(void (*call)(void* context), void* context);

template <typename Callable, typename Result = std::invoke_result_t<const Callable&>>
Result call_host(const Callable& callable)
{
    struct host_call
    {
        const Callable& callable;
        Result result{};

        static void run(void* context)
        {
            auto& self = *static_cast<host_call*>(context);
            self.result = self.callable();
        }
    };
    host_call call{callable};
    call_host(&host_call::run, &call);
    return call.result;
}

// Releases a reference to an object of the host, which may be null. A system exception in it cannot be thrown
// from a destructor: it is thrown by the next call into the host, or fails the guarded call at its end.
void release_host(IUnknown* object) noexcept;

// Throws system_exception when one has been handled in a Release.
void throw_if_handled();

// Work that must be done whatever happened before it: a call into the host may fault in it once more. The
// guarded call around fails then; without one, the fault is logged, and the work must let no exception out.
class separate_calls
{
public:
    separate_calls() noexcept;
    ~separate_calls();
    separate_calls(const separate_calls&) = delete;
    separate_calls& operator=(const separate_calls&) = delete;

    // Whether a system exception has been handled.
    bool has_handled() const noexcept { return state_.has_handled; }

private:
    host_calls state_;
};

} // namespace barrier

} // namespace quill
