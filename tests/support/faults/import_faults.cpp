#include "tests/support/faults/import_faults.h"

#include "tests/support/faults/import_table.h"
#include "tests/support/library_notice.h"
#include "tests/support/wait.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cwchar>
#include <mutex>
#include <stdexcept>

namespace quill::test {
namespace {

constexpr wchar_t module_name[] = L"QuillPDF.IE.dll";

struct group_count
{
    std::string name;
    bool is_memory = false;
    const std::vector<fault_way>* ways = nullptr;
    std::atomic<int> calls{0};
};

// An imported function, its address, and the group in which it is counted.
struct counted_import
{
    const fallible_function* function;
    group_count* group;
    code_address replacement = nullptr;
    std::atomic<code_address> original{nullptr};
};

// The state that the stubs read. Only written while the module does not run.
struct fault_state
{
    std::vector<group_count> groups;
    std::vector<counted_import> imports;
    std::atomic<bool> counting{false};
    const group_count* failing = nullptr;
    int failing_call = 0;
    std::size_t failing_way = 0;
    std::atomic<bool> failed{false};
    following_fault next;
    std::atomic<DWORD> failed_on{0}; // the thread
    std::atomic<int> calls_after{0}; // counted as next.kind says
    std::atomic<const counted_import*> failed_next{nullptr};
    std::mutex threads_lock;
    std::vector<HANDLE> threads;
    std::atomic<code_address> create_thread{nullptr};
};

fault_state& state();

// Replaces the module's CreateThread: duplicates the handle to wait for the thread.
HANDLE WINAPI create_known_thread(SECURITY_ATTRIBUTES* security, SIZE_T stack, LPTHREAD_START_ROUTINE routine,
                                  void* parameter, DWORD flags, DWORD* id)
{
    const auto create = reinterpret_cast<decltype(&CreateThread)>(
        reinterpret_cast<std::uintptr_t>(state().create_thread.load()));
    const HANDLE thread = create(security, stack, routine, parameter, flags, id);
    HANDLE own = nullptr;
    if (thread &&
        DuplicateHandle(GetCurrentProcess(), thread, GetCurrentProcess(), &own, SYNCHRONIZE, FALSE, 0)) {
        const std::lock_guard guard(state().threads_lock);
        state().threads.push_back(own);
    }
    return thread;
}

bool is_of_kind(const group_count& group, fault_kind kind)
{
    return kind == fault_kind::either || group.is_memory == (kind == fault_kind::memory);
}

// Whether this call, made after the place has failed, is the second one to fail.
bool is_next(fault_state& all, const counted_import& import)
{
    if (all.next.distance == 0 || all.failed_on != GetCurrentThreadId() ||
        !is_of_kind(*import.group, all.next.kind) || ++all.calls_after != all.next.distance)
        return false;
    all.failed_next = &import;
    return true;
}

// Called for every call of a counted import, on any thread; returns its target. Must not change the last
// error or call a function that may be counted.
code_address destination(counted_import* import) noexcept
{
    fault_state& all = state();
    if (!all.counting.load(std::memory_order_acquire))
        return import->original.load();
    const int call = ++import->group->calls;
    const std::vector<fault_way>& ways = import->function->ways;
    if (all.failing == import->group && call >= all.failing_call) {
        const fault_way& way = ways[all.failing_way];
        if (call == all.failing_call || way.stays) {
            all.failed_on = GetCurrentThreadId();
            all.failed = true;
            return way.function;
        }
    }
    if (all.failed && is_next(all, *import))
        return ways[all.next.way % ways.size()].function;
    return import->original.load();
}

void watch_module(HMODULE module)
{
    fault_state& all = state();
    for (counted_import& import : all.imports) {
        const bool makes_threads = std::string_view(import.function->name) == "CreateThread";
        const code_address original =
            redirect_import(module, import.function->name, counting_stub(&import, &destination));
        if (makes_threads && original)
            all.create_thread = original;
        import.original = makes_threads        ? reinterpret_cast<code_address>(&create_known_thread)
                          : import.replacement ? import.replacement
                                               : original;
    }
}

// Called after the imports are bound and before the entry point of the library.
void CALLBACK take_notice(ULONG reason, const library_notice* notice, void*)
{
    const std::wstring_view name(notice->base_name->Buffer, notice->base_name->Length / sizeof(wchar_t));
    if (reason == library_loaded && name == module_name)
        watch_module(static_cast<HMODULE>(notice->base));
}

// Created once: the stubs, and so the counters, remain for the lifetime of the process.
fault_state& state()
{
    static fault_state* const all = [] {
        auto* const made = new fault_state; // NOLINT: never freed, a thread of the module may outlive all
        const std::vector<fallible_function>& functions = fallible_functions();
        std::vector<std::string> names;
        for (const fallible_function& function : functions)
            if (std::find(names.begin(), names.end(), function.group) == names.end())
                names.emplace_back(function.group);
        made->groups = std::vector<group_count>(names.size());
        for (std::size_t i = 0; i < names.size(); ++i) {
            made->groups[i].name = names[i];
            made->groups[i].is_memory = names[i] == memory_group;
        }
        made->imports = std::vector<counted_import>(functions.size());
        for (std::size_t i = 0; i < functions.size(); ++i) {
            const auto group = static_cast<std::size_t>(
                std::find(names.begin(), names.end(), functions[i].group) - names.begin());
            made->imports[i].function = &functions[i];
            made->imports[i].group = &made->groups[group];
            made->groups[group].ways = &functions[i].ways;
        }
        return made;
    }();
    return *all;
}

void restart(const fault_place* place)
{
    fault_state& all = state();
    all.counting = false;
    all.failed = false;
    all.failing = nullptr;
    all.next = {};
    all.failed_on = 0;
    all.calls_after = 0;
    for (group_count& group : all.groups) {
        group.calls = 0;
        if (place && group.name == place->group)
            all.failing = &group;
    }
    if (place) {
        if (!all.failing)
            throw std::runtime_error("no such function: " + place->group);
        all.failing_call = place->call;
        all.failing_way = place->way;
        all.next = place->next;
        all.failed_next = nullptr;
    }
    all.counting.store(true, std::memory_order_release);
}

void forget_threads()
{
    const std::lock_guard guard(state().threads_lock);
    for (const HANDLE thread : state().threads)
        CloseHandle(thread);
    state().threads.clear();
}

} // namespace

std::string to_text(const fault_place& place)
{
    std::string text = "call " + std::to_string(place.call) + " of " + place.group + ": " + place.way_name;
    if (place.failures() > 1)
        text += "; then " +
                std::string(place.next.kind == fault_kind::memory ? "request for memory " : "call ") +
                std::to_string(place.next.distance) + " after it, way " + std::to_string(place.next.way);
    return text;
}

import_faults::import_faults()
{
    state(); // created here and not under the loader lock
    const auto listen = system_function<register_function>("LdrRegisterDllNotification");
    if (!listen || listen(0, take_notice, nullptr, &notice_) != 0)
        throw std::runtime_error("the loader does not say what it loads");
}

import_faults::~import_faults()
{
    stop();
    forget_threads();
    for (counted_import& import : state().imports)
        import.replacement = nullptr;
    const auto stop_listening = system_function<unregister_function>("LdrUnregisterDllNotification");
    EXPECT_EQ(stop_listening(notice_), 0);
}

void import_faults::count()
{
    forget_threads();
    restart(nullptr);
}

void import_faults::fail(const fault_place& place)
{
    forget_threads();
    restart(&place);
}

void import_faults::stop()
{
    state().counting = false;
}

void import_faults::stand_in(const char* function, code_address replacement)
{
    for (counted_import& import : state().imports)
        if (std::string_view(import.function->name) == function)
            import.replacement = replacement;
}

int import_faults::calls(const std::string& group)
{
    for (const group_count& each : state().groups)
        if (each.name == group)
            return each.calls;
    throw std::runtime_error("no such function: " + group);
}

bool import_faults::has_failed() const
{
    return state().failed;
}

int import_faults::failures() const
{
    return has_failed() + !failed_next().empty();
}

std::string import_faults::failed_next()
{
    const counted_import* const import = state().failed_next;
    return import ? import->group->name : "";
}

std::vector<fault_place> import_faults::places() const
{
    std::vector<fault_place> all;
    for (const group_count& group : state().groups)
        for (int call = 1; call <= group.calls; ++call)
            for (std::size_t way = 0; way < group.ways->size(); ++way)
                all.push_back({group.name, call, way, (*group.ways)[way].name, (*group.ways)[way].stays});
    return all;
}

bool import_faults::wait_for_threads()
{
    return wait_until([] {
        const std::lock_guard guard(state().threads_lock);
        return std::all_of(state().threads.begin(), state().threads.end(),
                           [](HANDLE thread) { return WaitForSingleObject(thread, 0) == WAIT_OBJECT_0; });
    });
}

} // namespace quill::test
