// Runs the logging steps that its arguments name. A separate process, because the logger is set up once for
// each. An argument is "verb" or "verb=operand".
#include "logging/global_logger.h"
#include "logging/log_stream.h"
#include "logging/procmon_sink.h"
#include "platform/mutex.h"

#include <windows.h>

#include <spdlog/sinks/rotating_file_sink.h>
#include <spdlog/sinks/stdout_sinks.h>
#include <spdlog/spdlog.h>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <functional>
#include <map>
#include <string>
#include <system_error>
#include <vector>

namespace {

using quill::log_level;
using quill::log_stream;
using quill::platform::MutexImpl;

const std::map<std::string, log_level> levels = {
    {"trace", log_level::trace},     {"debug", log_level::debug}, {"info", log_level::info},
    {"warning", log_level::warning}, {"error", log_level::error}, {"critical", log_level::critical},
};

// Prints the kind of error that the set-up throws, or "set up".
void print_set_up_error()
{
    const char* kind = "set up";
    std::string message;
    try {
        quill::global_logger();
    } catch (const std::system_error& error) {
        kind = "system error";
        message = error.what();
    } catch (const std::runtime_error& error) {
        kind = "runtime error";
        message = error.what();
    } catch (const std::exception& error) {
        kind = "exception";
        message = error.what();
    }
    std::printf("%s: %s\n", kind, message.c_str());
}

const char* name_of(const spdlog::sinks::sink* sink)
{
    if (dynamic_cast<const spdlog::sinks::rotating_file_sink<MutexImpl>*>(sink))
        return "file";
    if (dynamic_cast<const spdlog::sinks::stdout_sink_mt*>(sink))
        return "stdout";
    if (dynamic_cast<const quill::spdlog_sinks::procmon_sink<MutexImpl>*>(sink))
        return "procmon";
    return "other";
}

void print_logger()
{
    const auto logger = quill::global_logger().logger;
    std::printf("%s %d", logger->name().c_str(), static_cast<int>(logger->level()));
    for (const auto& sink : logger->sinks())
        std::printf(" %s", name_of(sink.get()));
    std::printf(", null %s, global %d\n", spdlog::get("null") ? "registered" : "unknown",
                static_cast<int>(spdlog::get_level()));
}

void register_own_logger(const std::string& path)
{
    const std::wstring wide(path.begin(), path.end());
    spdlog::register_logger(std::make_shared<spdlog::logger>(
        "quill", std::make_shared<spdlog::sinks::rotating_file_sink_mt>(wide, 1 << 20, 1)));
}

// Logs that many numbered lines of 1 MiB.
void fill(const std::string& count)
{
    const std::string megabyte(1 << 20, 'm');
    for (int i = 1; i <= std::atoi(count.c_str()); ++i)
        log_stream(log_level::info) << i << " " << megabyte.c_str();
}

void log_from_threads(const std::string& count)
{
    std::vector<HANDLE> threads;
    for (int i = 0; i < std::atoi(count.c_str()); ++i)
        threads.push_back(CreateThread(
            nullptr, 0,
            [](void*) -> DWORD {
                for (int line = 0; line < 100; ++line)
                    log_stream(log_level::info) << "thread " << GetCurrentThreadId() << " line " << line;
                return 0;
            },
            nullptr, 0, nullptr));
    for (const HANDLE thread : threads) {
        WaitForSingleObject(thread, INFINITE);
        CloseHandle(thread);
    }
}

void set_variable(const std::string& assignment)
{
    const std::size_t equals = assignment.find('=');
    SetEnvironmentVariableA(assignment.substr(0, equals).c_str(), assignment.substr(equals + 1).c_str());
}

// The log file of this process; prefix is the folder and the beginning of the name.
std::string own_log_file(const std::string& path_before_process_id)
{
    return path_before_process_id + "-" + std::to_string(GetCurrentProcessId()) + ".log";
}

// Writes text to the log file of this process before the logger opens it.
void seed(const std::string& path)
{
    if (std::FILE* file = std::fopen(own_log_file(path).c_str(), "wb")) {
        std::fputs("seeded\r\n", file);
        std::fclose(file);
    }
}

// Logs a line of one letter, and a second one that brings the file to the given size. The operand is
// "path|size".
void top_up(const std::string& operand)
{
    const std::size_t mark = operand.find('|');
    std::FILE* const file = std::fopen(own_log_file(operand.substr(0, mark)).c_str(), "rb");
    if (!file)
        return;
    std::fseek(file, 0, SEEK_END);
    const long first_line = std::ftell(file);
    std::fclose(file);
    const long text = std::atol(operand.c_str() + mark + 1) - first_line - (first_line - 1);
    log_stream(log_level::info) << std::string(static_cast<std::size_t>(text), 't').c_str();
}

// Logs after the logger was destroyed: an object constructed before it is destroyed after it.
struct late_line
{
    bool is_wanted = false;
    ~late_line()
    {
        if (!is_wanted)
            return;
        QUILL_LOG(log_level::critical) << "too late";
        quill::log_pieces(log_level::critical, {"too late"});
    }
} late;

// Creates a folder with the name of this process's log file.
void block(const std::string& path)
{
    CreateDirectoryA(own_log_file(path).c_str(), nullptr);
}

} // namespace

int main(int argc, char** argv)
{
    const std::map<std::string, std::function<void(const std::string&)>> verbs = {
        {"set-up", [](const std::string&) { print_set_up_error(); }},
        {"logger", [](const std::string&) { print_logger(); }},
        {"own-logger", register_own_logger},
        {"fill", fill},
        {"threads", log_from_threads},
        {"env", set_variable},
        {"seed", seed},
        {"top-up", top_up},
        {"block", block},
        {"late", [](const std::string&) { late.is_wanted = true; }},
        {"remove", [](const std::string& path) { DeleteFileA(path.c_str()); }},
        {"pieces",
         [](const std::string& text) {
             quill::log_pieces(log_level::info, {"<", text.c_str(), nullptr, ">"});
         }},
    };
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        const std::size_t equals = argument.find('=');
        const std::string verb = argument.substr(0, equals);
        const std::string operand = equals == std::string::npos ? "" : argument.substr(equals + 1);
        if (const auto level = levels.find(verb); level != levels.end())
            QUILL_LOG(level->second) << operand.c_str();
        else if (const auto found = verbs.find(verb); found != verbs.end())
            found->second(operand);
        else
            return 2;
    }
    return 0;
}
