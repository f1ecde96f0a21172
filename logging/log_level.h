// How much a line of the log matters. The values are spdlog's.
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
