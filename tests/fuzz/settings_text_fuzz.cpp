// Settings of administrators: the sinks and the level of the log, and the download switch. Input: one text
// for each of them.
#include "logging/logger_choice.h"
#include "retrieval/download/download_switch.h"
#include "tests/fuzz/reference_text.h"
#include "tests/fuzz/subjects.h"

#include <algorithm>
#include <map>

namespace quill::fuzz {
namespace {

void check_sinks(const std::string& text)
{
    const auto sinks = sinks_from_text(exact_copy<char>(text));
    const auto chosen = [&](log_sink sink) { return std::ranges::count(sinks, sink) == 1; };
    FUZZ_CHECK(std::ranges::is_sorted(sinks) && sinks.size() <= 3);
    FUZZ_CHECK(chosen(log_sink::file) == (text.empty() || text.find("file") != std::string::npos));
    FUZZ_CHECK(chosen(log_sink::standard_output) == (text.find("stdout") != std::string::npos));
    FUZZ_CHECK(chosen(log_sink::process_monitor) == (text.find("procmon") != std::string::npos));
}

void check_level(const std::string& text)
{
    static const std::map<std::string, log_level> levels = {
        {"trace", log_level::trace},     {"debug", log_level::debug},       {"info", log_level::info},
        {"warning", log_level::warning}, {"warn", log_level::warning},      {"error", log_level::error},
        {"err", log_level::error},       {"critical", log_level::critical},
    };
    const auto found = levels.find(text);
    FUZZ_CHECK(level_from_name(text) == (found == levels.end() ? log_level::off : found->second));
}

wininet_switch expected_switch(std::wstring_view text)
{
    const std::size_t mark = text.find(L"/b");
    if (mark == std::wstring_view::npos)
        return wininet_switch_no_number;
    text.remove_prefix(mark + 2);
    text.remove_prefix(std::min(text.find_first_not_of(L" \t\r\n\v\f"), text.size()));
    if (text.starts_with(L'-') || text.starts_with(L'+'))
        text.remove_prefix(1);
    text.remove_prefix(std::min(text.find_first_not_of(L'0'), text.size()));
    return !text.empty() && text[0] >= L'1' && text[0] <= L'9' ? wininet_switch_on : wininet_switch_zero;
}

} // namespace

void settings_text(bytes input)
{
    const std::string text = narrow_text(input);
    check_sinks(text);
    check_level(text);
    const exact_terminated wide(wide_text(input));
    const wininet_switch answer = parse_wininet_switch(wide.c_str());
    if (is_ascii(wide.view()))
        FUZZ_CHECK(answer == expected_switch(wide.view()));
}

} // namespace quill::fuzz
