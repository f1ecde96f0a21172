// What the two environment variables of the logger ask for, as values.
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

// The sinks that QUILL_LOG_SINKS asks for, in the order in which they get each line. Words are searched
// anywhere in the text and case matters; an empty text asks for the file.
std::vector<log_sink> sinks_from_text(std::string_view text);

// The level that QUILL_LOG_LEVEL names. Case matters; a text that is no level's name means off.
log_level level_from_name(const std::string& name);

} // namespace quill
