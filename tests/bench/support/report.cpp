#include "tests/bench/support/report.h"

#include <windows.h>

#include <cstdio>
#include <exception>
#include <stdexcept>
#include <string_view>

namespace quill::bench {
namespace {

constexpr int all_met = 0;
constexpr int some_missed = 1;
constexpr int failed = 2;

options given;
bool is_missed = false;

std::string time_text(double nanoseconds)
{
    struct unit
    {
        double size;
        const char* name;
    };
    constexpr unit units[] = {{1e9, "s"}, {1e6, "ms"}, {1e3, "us"}, {1, "ns"}};
    for (const unit& each : units) {
        if (nanoseconds < each.size && each.size > 1)
            continue;
        char text[32];
        std::snprintf(text, sizeof text, "%.3g %s", nanoseconds / each.size, each.name);
        return nanoseconds / each.size >= 1000 ? std::to_string(static_cast<long>(nanoseconds)) : text;
    }
    return {};
}

std::string number_text(double value)
{
    char text[32];
    std::snprintf(text, sizeof text, value >= 1000 ? "%.0f" : "%.2f", value);
    return text;
}

std::string most_text(const std::optional<target>& aim)
{
    return aim ? "<= " + number_text(aim->most) : "-";
}

const char* verdict(double value, const std::optional<target>& aim)
{
    if (!aim)
        return "-";
    if (given.is_short)
        return "not judged";
    if (value <= aim->most)
        return aim->is_known_missed ? "met, though marked as missed" : "met";
    if (aim->is_known_missed)
        return "missed (known)";
    is_missed = true;
    return "MISSED";
}

void print(const std::string& what, const std::string& ours, const std::string& baseline,
           const std::string& ratio, const std::string& most, const char* result)
{
    std::printf("%-84s %10s %10s %8s %8s  %s\n", what.c_str(), ours.c_str(), baseline.c_str(), ratio.c_str(),
                most.c_str(), result);
    std::fflush(stdout);
}

void read_options(int argc, wchar_t** argv)
{
    for (int index = 1; index < argc; ++index) {
        const std::wstring_view argument = argv[index];
        if (argument == L"--short")
            given.is_short = true;
        else if (argument == L"--server" && index + 1 < argc)
            given.server = argv[++index];
        else if (argument == L"--documents" && index + 1 < argc)
            given.documents = argv[++index];
        else
            throw std::runtime_error("unknown argument");
    }
}

} // namespace

const options& current_options()
{
    return given;
}

bool is_short_run()
{
    return given.is_short;
}

void report(const std::string& what, const comparison& measured, std::optional<target> aim)
{
    print(what, time_text(measured.ours), time_text(measured.baseline), number_text(measured.ratio),
          most_text(aim), verdict(measured.ratio, aim));
}

void report_value(const std::string& what, double value, const std::string& unit, std::optional<target> limit)
{
    print(what, number_text(value) + (unit.empty() ? "" : " ") + unit, "", "", most_text(limit),
          verdict(value, limit));
}

int run(int argc, wchar_t** argv, void (*benchmarks)())
{
    SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX | SEM_NOOPENFILEERRORBOX);
    try {
        read_options(argc, argv);
        benchmarks();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "benchmark failed: %s\n", error.what());
        return failed;
    }
    return is_missed ? some_missed : all_met;
}

} // namespace quill::bench
