// A library with the module's logging in it, as the module has it: for loading and unloading.
#include "logging/log_stream.h"

#include <windows.h>

extern "C" __declspec(dllexport) void write_line(int level, const char* text)
{
    quill::log_stream(static_cast<quill::log_level>(level)) << text;
}
