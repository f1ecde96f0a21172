#include "logging/exception_barriers.h"

#include "logging/log_stream.h"
#include "logging/pdfcore_exception.h"
#include "logging/suite_libraries.h"

#include <exception>
#include <new>
#include <stdexcept>
#include <system_error>
#include <type_traits>

namespace quill {
namespace {

// The buffer size in characters that the PDF core expects.
constexpr std::uint64_t error_text_size = 2047;

// The result of a function of the suite, or fallback if it throws. A system exception passes through to the
// enclosing barrier.
template <typename Callable, typename Result = std::invoke_result_t<const Callable&>>
Result call_suite(const Callable& function, Result fallback)
{
    try {
        return barrier::call_host(function);
    } catch (const barrier::system_exception&) {
        throw;
    } catch (...) {
        return fallback; // not logged: another exception is being logged
    }
}

void log_pdfcore_exception(const char* name, std::uint32_t line)
{
    const suite_functions& suite = suite_library_functions();
    wchar_t text[error_text_size + 1] = {};
    const int text_code = call_suite(suite.get_exception_error_code, 0);
    call_suite([&] { return suite.get_error_string(text_code, text, error_text_size); }, text);
    const int code =
        call_suite(suite.get_exception_error_code, 0); // called again, even if the line is not logged
    QUILL_LOG(log_level::debug) << name << ":" << line << " pdfcore exception: " << code << " " << text;
}

void log_error(const char* name, std::uint32_t line, const char* kind, const char* text)
{
    QUILL_LOG(log_level::error) << name << ":" << line << kind << text;
}

// Derived classes before their bases: the first handler that matches names the kind.
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

} // namespace

void log_current_exception(const char* name, std::uint32_t line) noexcept
{
    // A fault in the suite must fail the guarded call without unwinding out of the caller's catch handler.
    const barrier::separate_calls calls;
    try {
        if (const std::exception_ptr exception = std::current_exception())
            rethrow_and_log(exception, name, line);
    } catch (...) {
        return; // a failure to log cannot be logged
    }
}

void barrier::log_thrown(const char* name, std::uint32_t line) noexcept
{
    const bool named = name && *name;
    log_current_exception(named ? name : no_throw_name, named ? line : no_throw_line);
}

} // namespace quill
