#include "tests/soak/resource_samples.h"

#include "tests/support/task_memory.h"
#include "tests/support/wait.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <iomanip>
#include <sstream>

namespace quill::soak {
namespace {

constexpr DWORD settle_ms = 6'000; // the system's idle workers end after five seconds

// Blocks in use on every heap of the process, so that a leak shows to the byte.
void measure_heaps(sample& line)
{
    HANDLE heaps[64] = {};
    const DWORD count = std::min<DWORD>(GetProcessHeaps(64, heaps), 64);
    for (DWORD i = 0; i < count; ++i) {
        PROCESS_HEAP_ENTRY entry{};
        HeapLock(heaps[i]);
        while (HeapWalk(heaps[i], &entry)) {
            if (entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) {
                line.heap_bytes += entry.cbData;
                ++line.heap_blocks;
            }
        }
        HeapUnlock(heaps[i]);
    }
}

// Committed private memory of the process. Read from its memory map, since not every system maintains the
// counter.
std::uint64_t private_bytes()
{
    std::uint64_t total = 0;
    MEMORY_BASIC_INFORMATION region{};
    for (std::uintptr_t address = 0;
         VirtualQuery(reinterpret_cast<const void*>(address), &region, sizeof region) != 0;
         address = reinterpret_cast<std::uintptr_t>(region.BaseAddress) + region.RegionSize) {
        if (region.State == MEM_COMMIT && region.Type == MEM_PRIVATE)
            total += region.RegionSize;
    }
    return total;
}

bool is_settled(const test::process_resources& now, const test::process_resources& wanted)
{
    return now.kernel_handles <= wanted.kernel_handles && now.threads <= wanted.threads &&
           now.gdi_objects <= wanted.gdi_objects && now.windows <= wanted.windows &&
           now.menus <= wanted.menus;
}

void add_growth(growth_report& report, const std::string& what, double before, double after, double limit)
{
    if (after > before + limit) {
        std::ostringstream text;
        text << std::fixed << std::setprecision(0) << what << " grew from " << before << " to " << after
             << ", the limit is " << limit << " more";
        report.push_back(text.str());
    }
}

// The growth of a count; negative if it fell.
template <class Count>
double growth(const sample_table& table, std::size_t index, const Count& count)
{
    return static_cast<double>(count(table.lines().back())) -
           static_cast<double>(count(table.lines()[index]));
}

bool is_of_this_process(HWND window)
{
    DWORD process = 0;
    GetWindowThreadProcessId(window, &process);
    return process == GetCurrentProcessId();
}

BOOL CALLBACK count_own(HWND window, LPARAM count)
{
    *reinterpret_cast<DWORD*>(count) += is_of_this_process(window);
    return TRUE;
}

BOOL CALLBACK count_own_tree(HWND window, LPARAM count)
{
    if (is_of_this_process(window)) {
        count_own(window, count);
        EnumChildWindows(window, count_own, count);
    }
    return TRUE;
}

// Windows of all threads of this process, invisible ones included.
DWORD all_windows()
{
    DWORD count = 0;
    EnumWindows(count_own_tree, reinterpret_cast<LPARAM>(&count));
    for (HWND unseen = FindWindowExW(HWND_MESSAGE, nullptr, nullptr, nullptr); unseen;
         unseen = FindWindowExW(HWND_MESSAGE, unseen, nullptr, nullptr))
        count += is_of_this_process(unseen);
    return count;
}

} // namespace

sample take_sample(std::size_t done)
{
    sample line;
    line.done = done;
    line.counts = test::process_resources::now();
    line.user_objects = GetGuiResources(GetCurrentProcess(), GR_USEROBJECTS);
    if (line.user_objects == 0)
        line.user_objects = line.counts.menus + all_windows();
    line.task_memory = test::outstanding_task_memory();
    line.private_bytes = private_bytes();
    measure_heaps(line);
    return line;
}

void sample_table::add(std::size_t done, bool settled)
{
    test::pump_messages();
    if (settled && lines_.size() > 1)
        test::wait_until([&] { return is_settled(test::process_resources::now(), lines_[1].counts); },
                         settle_ms);
    lines_.push_back(take_sample(done));
}

double sample_table::heap_bytes_each(std::size_t index) const
{
    // The steepest slope to any later line: a thread of the system that ends before the last line frees more
    // than some downloads leave.
    const sample& before = lines_[index];
    double steepest = 0;
    for (std::size_t later = index + 1; later < lines_.size(); ++later) {
        const sample& after = lines_[later];
        const double growth = static_cast<double>(after.heap_bytes) - static_cast<double>(before.heap_bytes);
        steepest = std::max(steepest, growth / static_cast<double>(after.done - before.done));
    }
    return steepest;
}

void sample_table::print() const
{
    std::printf("%s\n%8s %8s %6s %6s %8s %8s %6s %10s %12s %13s\n", title_.c_str(), "done", "handles", "GDI",
                "USER", "threads", "windows", "task", "blocks", "heap bytes", "private bytes");
    for (const sample& line : lines_)
        std::printf("%8zu %8lu %6lu %6lu %8lu %8lu %6ld %10llu %12llu %13llu\n", line.done,
                    line.counts.kernel_handles, line.counts.gdi_objects, line.user_objects,
                    line.counts.threads, line.counts.windows, line.task_memory,
                    static_cast<unsigned long long>(line.heap_blocks),
                    static_cast<unsigned long long>(line.heap_bytes),
                    static_cast<unsigned long long>(line.private_bytes));
    std::fflush(stdout);
}

growth_report sample_table::growth_beyond(std::size_t index, const growth_limits& limits) const
{
    if (index + 1 >= lines_.size())
        return {"the run has ended before its last cycle"};
    const sample& before = lines_[index];
    const sample& after = lines_.back();
    growth_report report;
    const auto check = [&](const char* what, auto count, double limit) {
        add_growth(report, what, static_cast<double>(count(before)), static_cast<double>(count(after)),
                   limit);
    };
    const auto cycles = static_cast<double>(after.done - before.done);
    check(
        "kernel handles", [](const sample& line) { return line.counts.kernel_handles; },
        limits.kernel_handles);
    check("GDI objects", [](const sample& line) { return line.counts.gdi_objects; }, limits.gdi_objects);
    check("USER objects", [](const sample& line) { return line.user_objects; }, 0);
    check("menus", [](const sample& line) { return line.counts.menus; }, 0);
    check("threads", [](const sample& line) { return line.counts.threads; }, limits.threads);
    check("windows", [](const sample& line) { return line.counts.windows; }, 0);
    check(
        "strings and task memory", [](const sample& line) { return line.task_memory; },
        static_cast<double>(limits.task_memory));
    check(
        "heap blocks", [](const sample& line) { return line.heap_blocks; },
        static_cast<double>(limits.heap_blocks));
    // A download that urlmon leaks, which it does under load, is a string and up to 2 KB.
    const auto leaked_downloads = static_cast<double>(std::max(after.task_memory - before.task_memory, 0L));
    check(
        "heap bytes", [](const sample& line) { return line.heap_bytes; },
        cycles * static_cast<double>(limits.heap_bytes_each) + 2'048 * leaked_downloads);
    check(
        "private bytes", [](const sample& line) { return line.private_bytes; },
        cycles * static_cast<double>(limits.private_bytes_each) + (1 << 20));
    return report;
}

known_growth growth_since(const sample_table& table, std::size_t index)
{
    return {growth(table, index, [](const sample& line) { return line.counts.kernel_handles; }),
            growth(table, index, [](const sample& line) { return line.task_memory; }),
            growth(table, index, [](const sample& line) { return line.heap_blocks; }),
            growth(table, index, [](const sample& line) { return line.heap_bytes; })};
}

growth_report growth_beyond(const sample_table& bare, const sample_table& table, std::size_t index,
                            const known_growth& known)
{
    if (index + 1 >= table.lines().size())
        return {"the run has ended before its last cycle"};
    // The resources of a thread of the system, which may or may not exist at the moment. Under load urlmon
    // leaks one download in some dozens: a string, its URL, and up to eight blocks. Wine 10 keeps a block of
    // up to 24 KB in every third download, which short runs do not average; one block for each is caught.
    const auto cycles = static_cast<double>(table.lines().back().done - table.lines()[index].done);
    constexpr double handles = 4, threads = 2, private_bytes = 4 << 20;
    const auto strings = [](const sample& line) { return line.task_memory; };
    const double kept =
        std::max(growth(table, index, strings) - growth(bare, index, strings) - known.task_memory, 0.0);
    const double task_memory = 4 + cycles / 25, blocks = 24 + 8 * kept, bytes = 65'536 + 2'048 * kept;
    growth_report report;
    const auto check = [&](const char* what, double slack, const auto& count) {
        add_growth(report, what, static_cast<double>(count(table.lines()[index])),
                   static_cast<double>(count(table.lines().back())),
                   std::max(growth(bare, index, count), 0.0) + slack);
    };
    check("kernel handles", handles + known.kernel_handles,
          [](const sample& line) { return line.counts.kernel_handles; });
    check("GDI objects", handles, [](const sample& line) { return line.counts.gdi_objects; });
    check("USER objects", handles, [](const sample& line) { return line.user_objects; });
    check("menus", 0, [](const sample& line) { return line.counts.menus; });
    check("windows", 0, [](const sample& line) { return line.counts.windows; });
    check("threads", threads, [](const sample& line) { return line.counts.threads; });
    check("strings and task memory", task_memory + known.task_memory, strings);
    check("heap blocks", blocks + known.heap_blocks, [](const sample& line) { return line.heap_blocks; });
    check("heap bytes", bytes + known.heap_bytes, [](const sample& line) { return line.heap_bytes; });
    check("private bytes", private_bytes, [](const sample& line) { return line.private_bytes; });
    return report;
}

void expect_flat(const std::function<growth_report()>& measure)
{
    constexpr int measurements = 3;
    for (int number = 1; number <= measurements; ++number) {
        const growth_report report = measure();
        if (report.empty() || testing::Test::HasFailure())
            return;
        for (const std::string& growth : report)
            std::printf("measurement %d of %d: %s\n", number, measurements, growth.c_str());
        std::fflush(stdout);
    }
    ADD_FAILURE() << "something grew in each of " << measurements << " measurements";
}

growth_limits growth_of(const sample_table& table, std::size_t index)
{
    growth_limits limits;
    const sample& before = table.lines()[index];
    const sample& after = table.lines().back();
    if (after.heap_blocks > before.heap_blocks)
        limits.heap_blocks += after.heap_blocks - before.heap_blocks;
    limits.heap_bytes_each += static_cast<std::uint64_t>(std::max(table.heap_bytes_each(index), 0.0));
    if (after.counts.kernel_handles > before.counts.kernel_handles)
        limits.kernel_handles = after.counts.kernel_handles - before.counts.kernel_handles;
    return limits;
}

} // namespace quill::soak
