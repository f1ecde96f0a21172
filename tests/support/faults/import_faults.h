// Faults of system functions, injected where the module calls them: in its import table.
#pragma once

#include <windows.h>

#include <cstddef>
#include <string>
#include <vector>

namespace quill::test {

// Any code that can replace an imported function.
using code_address = const void*;

// The group of all functions that allocate memory.
inline constexpr char memory_group[] = "memory";

// One way in which a function fails: a replacement with the same parameters that sets the last error and
// returns what the failing function returns.
struct fault_way
{
    const char* name;
    code_address function;
    bool stays = false; // all later calls fail too
};

// A function that can fail, with its ways. The functions of a group are counted together.
struct fallible_function
{
    const char* name;
    std::vector<fault_way> ways;
    const char* group;
};

// All imported functions that can fail where the module calls them.
const std::vector<fallible_function>& fallible_functions();

// Why an import is not among them; nullptr for an unknown name.
const char* reason_to_leave_alone(const std::string& name);
// All imports with such a reason.
std::vector<std::string> names_left_alone();

enum class fault_kind
{
    calls, // every function but those that allocate memory
    memory,
    either
};

// A second failure on the thread of the first: the distance-th call of its kind after it.
struct following_fault
{
    int distance = 0; // 0: none
    fault_kind kind = fault_kind::calls;
    std::size_t way = 0; // of the function called there, modulo the number of its ways
};

// Whether an import comes from the C or C++ runtime or the logging library and depends on their version.
bool depends_on_toolchain(const std::string& name);

// The number-th call of a function or a group in a run, and the way in which it fails.
struct fault_place
{
    std::string group;
    int call;
    std::size_t way;
    std::string way_name;
    bool stays; // the function does not recover
    following_fault next = {};

    int failures() const { return next.distance > 0 ? 2 : 1; }
};
std::string to_text(const fault_place& place);

// From its construction on, every QuillPDF.IE.dll that is loaded calls its imports through counting stubs,
// from its entry point on; calls of other modules are not counted. One at a time.
class import_faults
{
public:
    import_faults();
    ~import_faults();
    import_faults(const import_faults&) = delete;
    import_faults& operator=(const import_faults&) = delete;

    // Resets the counters. No call fails.
    void count();
    // Resets the counters; the place fails once, and then the second failure of the place.
    void fail(const fault_place& place);
    // Stops failing and counting calls.
    void stop();

    // In its scope, the module's calls of an imported function go to a replacement; they are counted and fail
    // as before.
    void stand_in(const char* function, code_address replacement);

    bool has_failed() const; // whether the place was reached
    // How many of the place's failures were reached.
    int failures() const;
    // The function or group of the second failure in the last run with a place; empty without one.
    static std::string failed_next();
    // The calls of a function or a group since count().
    static int calls(const std::string& group);
    // All places among the calls since count(), grouped by function.
    std::vector<fault_place> places() const;
    // Waits until all threads of the module since count() have ended, and dispatches messages meanwhile.
    bool wait_for_threads();

private:
    void* notice_ = nullptr;
};

// The names of all functions that a loaded module imports.
std::vector<std::string> imported_names(HMODULE module);

} // namespace quill::test
