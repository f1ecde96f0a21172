// Functions of the suite's libraries, which the exception barriers use. They are looked up at run time,
// because the module must load without the suite; default functions then take their place.
#pragma once

#include <windows.h>

#include <cstdint>

namespace quill {

// Writes a crash report and returns the value of an exception filter (EXCEPTION_EXECUTE_HANDLER, ...).
using handle_exception_function = int (*)(EXCEPTION_POINTERS* exception);
// The error code of the PDF core exception that is being handled.
using get_exception_error_code_function = int (*)();
// Writes the text of an error code to buffer, which holds size characters, and returns buffer.
using get_error_string_function = wchar_t* (*)(int code, wchar_t* buffer, std::uint64_t size);

// No pointer is null.
struct suite_functions
{
    handle_exception_function handle_exception;                 // default: EXCEPTION_EXECUTE_HANDLER
    get_exception_error_code_function get_exception_error_code; // default: 0
    get_error_string_function get_error_string;                 // default: an empty text
};

// The first call loads the libraries from the folder of the module, that of the program or the system's,
// never from the current directory. They are freed when the module is unloaded, and not when the process
// ends. Any thread may call, also inside a DllMain. A thread that is itself loading the libraries, and every
// thread while they are being freed, gets the default functions.
const suite_functions& suite_library_functions();

} // namespace quill
