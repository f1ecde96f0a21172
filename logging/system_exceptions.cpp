#include "logging/system_exceptions.h"

#include "logging/exception_barriers.h"
#include "logging/log_stream.h"
#include "logging/suite_libraries.h"

#include <malloc.h>

#include <functional>
#include <utility>

namespace quill::barrier {
namespace {

// Those of this thread, innermost first.
constinit thread_local host_calls* current = nullptr;

// A fault in a call into the host that the crash library left to the handlers around: the barrier's filter,
// which is asked next, must not have it reported again.
constinit thread_local const EXCEPTION_RECORD* left_to_others = nullptr;

// How this compiler's runtime raises what is thrown: the last three bytes spell "GCC".
bool is_thrown(DWORD code) noexcept
{
    return (code & 0x00FFFFFF) == 0x00474343;
}

int filter_host_call(const host_calls& self, EXCEPTION_POINTERS* exception, DWORD& code)
{
    code = exception->ExceptionRecord->ExceptionCode;
    if (is_thrown(code))
        return EXCEPTION_CONTINUE_SEARCH; // for the guarded code's own handlers
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

// The stack's guard page is gone after an overflow; without it the next one would end the browser.
void restore_guard_page(DWORD code)
{
    if (code == EXCEPTION_STACK_OVERFLOW)
        _resetstkoflw();
}

// What remains to do when a system exception in a call into the host was handled.
void note_handled(host_calls& self, DWORD code)
{
    restore_guard_page(code);
    current = &self; // the fault may have cut off a separate_calls
    self.has_handled = true;
}

// After a call that returned: a handler of the host's may have cut off a separate_calls of a nested call.
void restore(host_calls& self) noexcept
{
    current = &self;
    left_to_others = nullptr;
}

// What encloses the frame. A handler of the browser's may have cut off the code that restores `current`: what
// lies below the frame is gone.
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
    bool is_handled_here = false; // by call_behind_filter's own handler, as the filter has decided
    bool is_finished = false;

    static void run(void* self)
    {
        const auto& guarded = *static_cast<guarded_call*>(self);
        guarded.call(guarded.context);
    }

    // The fault may have cut off a separate_calls.
    void finish()
    {
        current = &calls;
        if (!std::exchange(is_finished, true))
            end(context);
        current = calls.outer;
    }

    // While an exception is unwound its frames are still on the stack, which may be all there is: what is
    // handled here is finished afterwards.
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

// A function of its own: with both kinds of handler in one, this compiler has the filter asked twice.
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
    // Looked up before the call: a filter runs on the stack of whatever went wrong.
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
