#include "tests/document/document_log.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <utility>

namespace quill::test {
namespace {

// The module reads these through its C runtime, which has its own copy of the environment.
bool switch_log_on()
{
    return _putenv_s("QUILL_LOG_LEVEL", "trace") == 0 && _putenv_s("QUILL_LOG_SINKS", "file") == 0;
}

std::string named(std::string text, const std::string& address)
{
    if (address.empty())
        return text;
    const std::string own = "ACTIVEDOC " + address;
    if (text.rfind(own, 0) == 0)
        return "@" + text.substr(own.size());
    if (text.rfind("~" + own, 0) == 0)
        return "~@" + text.substr(own.size() + 1);
    return text;
}

} // namespace

document_log::document_log() : thread_(std::to_string(GetCurrentThreadId()))
{
    [[maybe_unused]] static const bool on = switch_log_on();
}

std::vector<log_line> document_log::all() const
{
    auto lines = folder_.lines();
    for (const auto& line : lines)
        EXPECT_NE(line.level, "malformed") << line.text;
    return lines;
}

std::vector<std::string> document_log::take(const std::string& document_address)
{
    const auto lines = all();
    std::vector<std::string> own;
    for (std::size_t index = taken_; index < lines.size(); ++index) {
        if (lines[index].thread == thread_)
            own.push_back(named(lines[index].text, document_address));
    }
    taken_ = lines.size();
    return own;
}

std::vector<std::string> document_log::take_without(const std::string& document_address,
                                                    const std::string& part)
{
    return without(take(document_address), part);
}

void document_log::skip()
{
    taken_ = all().size();
}

std::vector<std::string> document_log::worker_lines() const
{
    std::vector<std::string> lines;
    for (const auto& line : all()) {
        if (line.thread != thread_)
            lines.push_back(line.text);
    }
    return lines;
}

bool document_log::worker_wrote(const std::string& beginning) const
{
    for (const auto& line : worker_lines()) {
        if (line.rfind(beginning, 0) == 0)
            return true;
    }
    return false;
}

std::string pointer_text(const void* pointer)
{
    char text[32];
    std::snprintf(text, sizeof text, "0x%llx",
                  static_cast<unsigned long long>(reinterpret_cast<std::uintptr_t>(pointer)));
    return text;
}

std::vector<std::string> without(std::vector<std::string> lines, const std::string& part)
{
    std::erase_if(lines, [&](const std::string& line) { return line.find(part) != std::string::npos; });
    return lines;
}

} // namespace quill::test
