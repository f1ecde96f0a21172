// Values of the environment variables QUILL_LOG_SINKS and QUILL_LOG_LEVEL. Used by the set-up of the logger.
#pragma once

#include "logging/log_stream.h"

#include <string>
#include <string_view>
#include <vector>

namespace quill {

enum class log_sink
{
    file,
    standard_output,
    process_monitor
};

// The sinks in the order in which they get each line. Names are found anywhere in the text and are
// case-sensitive; an empty text selects the file.
std::vector<log_sink> sinks_from_text(std::string_view text);

// Case-sensitive; off for text that names no level.
log_level level_from_name(const std::string& name);

} // namespace quill
