#include "logging/system_exceptions.h"

#include "logging/exception_barriers.h"
#include "logging/log_stream.h"
#include "logging/suite_libraries.h"

#include <malloc.h>

#include <functional>
#include <utility>

namespace quill::barrier {
namespace {

// The innermost guarded call of this thread; outer ones are linked from it.
constinit thread_local host_calls* current = nullptr;

// A fault in a call into the host for which the crash library chose EXCEPTION_CONTINUE_SEARCH. The system
// calls the barrier's filter next, which must not report it a second time.
constinit thread_local const EXCEPTION_RECORD* left_to_others = nullptr;

// The compiler's runtime raises C++ exceptions with codes whose last three bytes are "GCC".
bool is_thrown(DWORD code) noexcept
{
    return (code & 0x00FFFFFF) == 0x00474343;
}

int filter_host_call(const host_calls& self, EXCEPTION_POINTERS* exception, DWORD& code)
{
    code = exception->ExceptionRecord->ExceptionCode;
    if (is_thrown(code))
        return EXCEPTION_CONTINUE_SEARCH; // for the C++ handlers
    const int verdict = self.handle_exception(exception);
    if (verdict == EXCEPTION_CONTINUE_SEARCH && self.is_behind_barrier)
        left_to_others = exception->ExceptionRecord;
    return verdict;
}

int guarded_call_verdict(const host_calls& self, EXCEPTION_POINTERS* exception)
{
    if (left_to_others == exception->ExceptionRecord) {
        left_to_others = nullptr;
        return EXCEPTION_CONTINUE_SEARCH;
    }
    return self.handle_exception(exception);
}

// An overflow removes the stack's guard page; without it the next overflow would end the process.
void restore_guard_page(DWORD code)
{
    if (code == EXCEPTION_STACK_OVERFLOW)
        _resetstkoflw();
}

// Runs after a system exception in a call into the host was handled.
void note_handled(host_calls& self, DWORD code)
{
    restore_guard_page(code);
    current = &self; // the fault may have skipped the destructor of a separate_calls
    self.has_handled = true;
}

// After a call that returned: a handler in the host may have skipped the destructor of a nested
// separate_calls.
void restore(host_calls& self) noexcept
{
    current = &self;
    left_to_others = nullptr;
}

// The guarded call that encloses the frame. A handler in the browser may have skipped the code that restores
// `current`: a state at a lower address belongs to frames that no longer exist.
host_calls* enclosing(const void* frame) noexcept
{
    if (std::less<const void*>{}(current, frame))
        current = nullptr;
    return current;
}

[[noreturn, gnu::noinline]] void throw_system_exception()
{
    throw system_exception();
}

struct guarded_call
{
    void (*call)(void* context);
    void (*end)(void* context);
    void* context;
    host_calls calls;
    bool is_handled_here = false; // the filter chose call_behind_filter's own handler
    bool is_finished = false;

    static void run(void* self)
    {
        const auto& guarded = *static_cast<guarded_call*>(self);
        guarded.call(guarded.context);
    }

    // Sets current, because the fault may have skipped the destructor of a separate_calls.
    void finish()
    {
        current = &calls;
        if (!std::exchange(is_finished, true))
            end(context);
        current = calls.outer;
    }

    // During unwinding the faulting frames are still on the stack, which may be exhausted: what is handled
    // here is finished afterwards.
    static void finish_unless_handled(void* self)
    {
        auto& guarded = *static_cast<guarded_call*>(self);
        if (!guarded.is_handled_here)
            guarded.finish();
    }
};

int filter_guarded_call(guarded_call& self, EXCEPTION_POINTERS* exception, DWORD& code)
{
    code = exception->ExceptionRecord->ExceptionCode;
    const int verdict = guarded_call_verdict(self.calls, exception);
    self.is_handled_here = verdict == EXCEPTION_EXECUTE_HANDLER;
    return verdict;
}

[[gnu::noinline]] void release(IUnknown* object)
{
    try {
        object->Release();
    } catch (...) {
        log_thrown(nullptr, 0);
    }
}

void try_release(host_calls& self, IUnknown* object)
{
    DWORD code = 0;
    __try {
        release(object);
        restore(self);
    } __except (filter_host_call(self, GetExceptionInformation(), code)) {
        note_handled(self, code);
    }
}

[[gnu::noinline]] void release_outside_guarded_call(IUnknown* object)
{
    const separate_calls calls;
    try_release(*current, object);
}

} // namespace

void log_system_exception(const char* name) noexcept
{
    log_pieces(log_level::info, {"System exception in ", name ? name : crash_border_name});
}

// A separate function: with __finally and __except in one function, this compiler calls the filter twice.
[[gnu::noinline]] void call_and_end(void (*call)(void* context), void (*end)(void* context), void* context)
{
    __try {
        call(context);
    } __finally {
        end(context);
    }
}

bool call_behind_filter(void (*call)(void* context), void (*end)(void* context), void* context)
{
    // Looked up before the call: a filter runs on the stack that may have overflowed.
    guarded_call self{
        call, end, context, {enclosing(&self), suite_library_functions().handle_exception, true, false}};
    current = &self.calls;
    DWORD code = 0;
    __try {
        call_and_end(&guarded_call::run, &guarded_call::finish_unless_handled, &self);
    } __except (filter_guarded_call(self, GetExceptionInformation(), code)) {
        restore_guard_page(code);
        self.finish();
        self.calls.has_handled = true;
    }
    return !self.calls.has_handled;
}

void call_host(void (*call)(void* context), void* context)
{
    host_calls* const self = enclosing(&context);
    if (!self)
        return call(context);
    if (!self->has_handled) {
        DWORD code = 0;
        __try {
            call(context);
            restore(*self);
            return;
        } __except (filter_host_call(*self, GetExceptionInformation(), code)) {
            note_handled(*self, code);
        }
    }
    throw_system_exception();
}

void throw_if_handled()
{
    const char here = 0;
    const host_calls* const self = enclosing(&here);
    if (self && self->has_handled)
        throw_system_exception();
}

void release_host(IUnknown* object) noexcept
{
    if (!object)
        return;
    if (host_calls* const self = enclosing(&object))
        try_release(*self, object);
    else
        release_outside_guarded_call(object);
}

separate_calls::separate_calls() noexcept
    : state_{enclosing(this),
             current ? current->handle_exception : suite_library_functions().handle_exception,
             current && current->is_behind_barrier, false}
{
    current = &state_;
}

separate_calls::~separate_calls()
{
    current = state_.outer;
    if (!state_.has_handled)
        return;
    if (current)
        current->has_handled = true;
    else
        log_system_exception(nullptr);
}

} // namespace quill::barrier
