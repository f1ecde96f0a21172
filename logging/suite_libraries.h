// Functions of the suite's closed libraries. They are looked up at run time, so that the module loads on
// machines without the suite; there, answers of the module's own take their place.
#pragma once

#include <windows.h>

#include <cstdint>

namespace quill {

// Writes a crash report and returns the verdict of an exception filter (EXCEPTION_EXECUTE_HANDLER, ...).
using handle_exception_function = int (*)(EXCEPTION_POINTERS* exception);
// The code of the PDF core's exception in flight.
using get_exception_error_code_function = int (*)();
// Writes the text of a code into buffer, which holds size characters, and returns buffer.
using get_error_string_function = wchar_t* (*)(int code, wchar_t* buffer, std::uint64_t size);

// Every pointer can be called.
struct suite_functions
{
    handle_exception_function handle_exception;                 // without the suite: run the handler
    get_exception_error_code_function get_exception_error_code; // without the suite: 0
    get_error_string_function get_error_string;                 // without the suite: an empty text
};

// Loads the libraries on the first call, from where the module or the program lies or the system keeps
// its own, never from the current directory. They stay loaded until the module is unloaded or the process
// ends. Any thread may call, also from inside the loading of a library: a thread that calls while it loads
// these libraries itself, or while they are being freed, gets the module's own functions.
const suite_functions& suite_library_functions();

} // namespace quill
