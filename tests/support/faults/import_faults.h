// Faults of the system's functions, at the place where the module calls them: in the table of its imports.
#pragma once

#include <windows.h>

#include <cstddef>
#include <string>
#include <vector>

namespace quill::test {

// Whatever can be jumped to in place of an imported function.
using code_address = const void*;

// The group of all functions that give memory.
inline constexpr char memory_group[] = "memory";

// One way in which a function fails: a function that takes whatever the failing one takes, sets the last
// error and answers as the failing one does.
struct fault_way
{
    const char* name;
    code_address function;
    bool stays = false; // every further call fails as well
};

// A function that can fail, with its ways. Functions of one group are counted as one.
struct fallible_function
{
    const char* name;
    std::vector<fault_way> ways;
    const char* group;
};

// Every function of the module's imports that can fail where the module calls it.
const std::vector<fallible_function>& fallible_functions();

// Why an import is none of them; null for a name that is not known.
const char* reason_to_leave_alone(const std::string& name);
// All those with a reason.
std::vector<std::string> names_left_alone();

enum class fault_kind
{
    calls, // every function but those that give memory
    memory,
    either
};

// A second failure, on the thread of the first: the distance-th call of its kind after it.
struct following_fault
{
    int distance = 0; // 0: none
    fault_kind kind = fault_kind::calls;
    std::size_t way = 0; // of the function that is met there, modulo the number of its ways
};

// Whether an import comes from the C or C++ runtime or the log's library, and not with each version of
// theirs.
bool depends_on_toolchain(const std::string& name);

// The number-th call of a function or a group in a run, and the way in which it fails.
struct fault_place
{
    std::string group;
    int call;
    std::size_t way;
    std::string way_name;
    bool stays; // what fails does not recover
    following_fault next = {};

    int failures() const { return next.distance > 0 ? 2 : 1; }
};
std::string to_text(const fault_place& place);

// From its construction on, every QuillPDF.IE.dll that is loaded calls its imports by way of a count, from
// the first instruction of its own; what the rest of the process calls is not counted. One at a time.
class import_faults
{
public:
    import_faults();
    ~import_faults();
    import_faults(const import_faults&) = delete;
    import_faults& operator=(const import_faults&) = delete;

    // Begins to count anew. Nothing fails.
    void count();
    // Begins to count anew; the place fails, once, and then what follows it.
    void fail(const fault_place& place);
    // Nothing fails from here on, and nothing is counted.
    void stop();

    // While this lives, the module's calls of an imported function go elsewhere; they are counted, and fail,
    // as before.
    void stand_in(const char* function, code_address replacement);

    bool has_failed() const; // whether the place was reached
    // How many of the place's failures were reached.
    int failures() const;
    // The function or group that failed second in the last run with a place; empty when none did.
    static std::string failed_next();
    // The calls of a function or a group since count().
    static int calls(const std::string& group);
    // All places that the calls since count() make, those of a function after one another.
    std::vector<fault_place> places() const;
    // The module's own threads of this count: waits until all have ended, delivering messages meanwhile.
    bool wait_for_threads();

private:
    void* notice_ = nullptr;
};

// The names of all functions that a module in memory imports.
std::vector<std::string> imported_names(HMODULE module);

} // namespace quill::test
