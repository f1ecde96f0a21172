#include "diagnose/command_line.h"

#include "diagnose/report.h"

#include <optional>

namespace quill::diagnose {
namespace {

options wrong(std::wstring error)
{
    return {command::wrong_usage, 0, std::move(error)};
}

std::optional<unsigned> days_of(std::wstring_view text)
{
    constexpr std::size_t longest = 4;
    if (text.empty() || text.size() > longest || text.front() == L'0')
        return std::nullopt;
    unsigned days = 0;
    for (const wchar_t c : text) {
        if (c < L'0' || c > L'9')
            return std::nullopt;
        days = days * 10 + static_cast<unsigned>(c - L'0');
    }
    if (days < fewest_days || days > most_days)
        return std::nullopt;
    return days;
}

} // namespace

options parse_arguments(std::span<const std::wstring> arguments)
{
    if (arguments.empty())
        return {};
    const std::wstring& first = arguments[0];
    if (first == L"--help" || first == L"-h" || first == L"/?")
        return arguments.size() == 1 ? options{command::help, 0, L""}
                                     : wrong(quoted(first) + L" takes no argument");
    if (first != L"--clean-downloads")
        return wrong(L"unknown argument " + quoted(first));
    if (arguments.size() != 2)
        return wrong(L"--clean-downloads takes one number of days");
    const auto days = days_of(arguments[1]);
    if (!days)
        return wrong(quoted(arguments[1]) + L" is no number of days from " + number_text(fewest_days) +
                     L" to " + number_text(most_days));
    return {command::clean_downloads, *days, L""};
}

std::wstring usage_text()
{
    return L"Says why a PDF does not open in the browser.\n"
           L"\n"
           L"  QuillDiagnose                          examines this computer for this user\n"
           L"  QuillDiagnose --clean-downloads DAYS   removes downloads that are older than DAYS days (" +
           number_text(fewest_days) + L" to " + number_text(most_days) +
           L")\n"
           L"  QuillDiagnose --help                   shows this text\n"
           L"\n"
           L"Exit code: 0 if a PDF would open in a 64-bit tab, or if no older download is left; 1 if not; 2 "
           L"for\n"
           L"wrong usage. Output to a file or a pipe is UTF-8 without a byte order mark.\n";
}

} // namespace quill::diagnose
