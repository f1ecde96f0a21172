#include "logging/exception_barriers.h"

#include "logging/log_stream.h"
#include "logging/pdfcore_exception.h"
#include "logging/suite_libraries.h"

#include <malloc.h>

#include <exception>
#include <new>
#include <stdexcept>
#include <system_error>

namespace quill {
namespace {

// What the PDF core is told of the text's buffer, in characters. The core was always told this number.
constexpr std::uint64_t error_text_size = 2047;

void log_pdfcore_exception(const char* name, std::uint32_t line)
{
    const suite_functions& suite = suite_library_functions();
    wchar_t text[error_text_size + 1] = {};
    suite.get_error_string(suite.get_exception_error_code(), text, error_text_size);
    const auto code = suite.get_exception_error_code(); // asked for again, whoever reads the line
    QUILL_LOG(log_level::debug) << name << ":" << line << " pdfcore exception: " << code << " " << text;
}

void log_error(const char* name, std::uint32_t line, const char* kind, const char* text)
{
    QUILL_LOG(log_level::error) << name << ":" << line << kind << text;
}

// The order of the handlers is part of the behaviour: the special kinds come before their bases.
void rethrow_and_log(const std::exception_ptr& exception, const char* name, std::uint32_t line)
{
    try {
        std::rethrow_exception(exception);
    } catch (const pdfcore_exception&) {
        log_pdfcore_exception(name, line);
    } catch (const std::system_error& error) {
        QUILL_LOG(log_level::error) << name << ":" << line << " system error(" << error.code().value()
                                    << "): " << error.what();
    } catch (const std::invalid_argument& error) {
        log_error(name, line, " invalid argument: ", error.what());
    } catch (const std::runtime_error& error) {
        log_error(name, line, " runtime error: ", error.what());
    } catch (const std::logic_error& error) {
        log_error(name, line, " logic error: ", error.what());
    } catch (const std::bad_alloc& error) {
        log_error(name, line, " bad_alloc: ", error.what());
    } catch (const std::exception& error) {
        log_error(name, line, " std exception: ", error.what());
    } catch (...) {
        log_error(name, line, " unknown exception", nullptr);
    }
}

int filter_exception(handle_exception_function handle_exception, EXCEPTION_POINTERS* exception, DWORD& code)
{
    code = exception->ExceptionRecord->ExceptionCode;
    return handle_exception(exception);
}

} // namespace

void log_current_exception(const char* name, std::uint32_t line) noexcept
{
    if (const std::exception_ptr exception = std::current_exception())
        rethrow_and_log(exception, name, line);
}

namespace barrier {

void log_thrown(const char* name, std::uint32_t line) noexcept
{
    const bool named = name && *name;
    log_current_exception(named ? name : no_throw_name, named ? line : no_throw_line);
}

void log_system_exception(const char* name) noexcept
{
    log_pieces(log_level::info, {"System exception in ", name ? name : crash_border_name});
}

bool call_behind_filter(void (*call)(void* context), void* context)
{
    // Looked up before the call: a filter runs on the stack of whatever went wrong.
    // NOLINTNEXTLINE(clang-analyzer-deadcode.DeadStores): the analyzer does not look into filters.
    const handle_exception_function handle_exception = suite_library_functions().handle_exception;
    DWORD code = 0;
    __try {
        call(context);
        return true;
    } __except (filter_exception(handle_exception, GetExceptionInformation(), code)) {
        // The stack's guard page is gone; without it the next overflow would end the browser.
        if (code == EXCEPTION_STACK_OVERFLOW)
            _resetstkoflw();
    }
    return false;
}

} // namespace barrier

} // namespace quill
