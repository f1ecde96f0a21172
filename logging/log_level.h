// Severity of log lines, with spdlog's values.
#pragma once

namespace quill {

enum class log_level : int
{
    trace,
    debug,
    info,
    warning,
    error,
    critical,
    off
};

} // namespace quill
