#include "logging/logger_choice.h"

#include <windows.h>

#include <spdlog/common.h>

namespace quill {

std::vector<log_sink> sinks_from_text(std::string_view text)
{
    const auto names = [text](std::string_view word) { return text.find(word) != std::string_view::npos; };
    std::vector<log_sink> sinks;
    if (text.empty() || names("file"))
        sinks.push_back(log_sink::file);
    if (names("stdout"))
        sinks.push_back(log_sink::standard_output);
    if (names("procmon"))
        sinks.push_back(log_sink::process_monitor);
    return sinks;
}

log_level level_from_name(const std::string& name)
{
    return static_cast<log_level>(spdlog::level::from_str(name));
}

} // namespace quill
