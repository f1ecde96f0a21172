// The ways in which a call into a fake can fail. Each loop over failing calls runs once for each of them.
#pragma once

namespace quill::test {

enum class call_fault
{
    none,
    error,            // fails; an interface or string out parameter is null
    error_untouched,  // fails and leaves its out parameter as it was
    error_with_value, // fails and leaves a pointer in its out parameter that the caller does not own
    null_result,      // succeeds with a null out parameter
    untouched         // succeeds and leaves its out parameter as it was
};

// The ways in which a host fails. What it leaves in an out parameter is set on the fake itself.
inline constexpr call_fault host_faults[] = {call_fault::error, call_fault::error_untouched,
                                             call_fault::null_result, call_fault::untouched};

constexpr bool is_error(call_fault fault)
{
    return fault == call_fault::error || fault == call_fault::error_untouched ||
           fault == call_fault::error_with_value;
}

const char* to_text(call_fault fault);

} // namespace quill::test
