// Turns system exceptions (access violations, divisions by zero, ...) of the host into C++ exceptions. A
// system exception unwinds no C++ frame: a barrier that handles one skips every destructor between itself and
// the fault. Guarded entries therefore call the host through call_host, which handles the fault at the call
// and throws system_exception, so that everything the entry holds is released:
//     return CrashBorder(
//         [&] {
//             const DWORD attributes = barrier::call_host([&] { return GetFileAttributesW(path); });
//             ...;
//             return S_OK;
//         },
//         E_FAIL);
// What leaks is what the host's own frames held and had written to out parameters. After a fault in the
// module's own code, or one that the crash library leaves to the browser, what the frames between it and the
// barrier held leaks too; CrashBorder's held is released in each case.
#pragma once

#include <windows.h>

#include <unknwn.h>

#include <type_traits>

namespace quill {

inline constexpr const char* crash_border_name = "quill::CrashBorder";

namespace barrier {

// Caught by the enclosing CrashBorder only. Every other handler must rethrow it.
class system_exception
{
};

// Logs for CrashBorder, whose own name replaces a null name.
void log_system_exception(const char* name) noexcept;

// The state of the calls into the host of one guarded entry.
struct host_calls
{
    host_calls* outer;
    int (*handle_exception)(EXCEPTION_POINTERS* exception);
    bool is_behind_barrier; // inside call_behind_filter
    bool has_handled;       // has handled a system exception
};

// Calls call(context) and then end(context): after a return, an exception, or a system exception that an
// enclosing handler handles. end must not throw.
void call_and_end(void (*call)(void* context), void (*end)(void* context), void* context);

// Calls call(context) inside the crash library's exception filter and then end(context): after a return, or a
// system exception that is handled here or by the browser. If it is handled here, the faulting frames have
// left the stack when end runs. Neither may throw. Returns false if a system exception was handled here or in
// a call into the host.
bool call_behind_filter(void (*call)(void* context), void (*end)(void* context), void* context);

// Calls the host. Throws system_exception if the call raises a system exception, or, without calling, if an
// earlier Release raised one. Outside a guarded call system exceptions are not handled.
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

// Releases an object of the host; object may be null. For destructors, so it does not throw: a system
// exception is thrown by the next call into the host, or fails the guarded call at its end.
void release_host(IUnknown* object) noexcept;

// Throws system_exception if a Release has raised one.
void throw_if_handled();

// While it exists, the host can be called again after a system exception, for work that must not be skipped.
// A further fault fails the enclosing guarded call. Without one the fault is logged, and the work must not
// throw.
class separate_calls
{
public:
    separate_calls() noexcept;
    ~separate_calls();
    separate_calls(const separate_calls&) = delete;
    separate_calls& operator=(const separate_calls&) = delete;

    // Whether a system exception was handled since the constructor.
    bool has_handled() const noexcept { return state_.has_handled; }

private:
    host_calls state_;
};

} // namespace barrier

} // namespace quill
