#include "browser/command_line.h"

#include <cwchar>

namespace quill {
namespace {

std::optional<std::chrono::seconds> parse_wait(const std::wstring& text)
{
    wchar_t* end = nullptr;
    const unsigned long seconds = std::wcstoul(text.c_str(), &end, 10);
    constexpr unsigned long longest = 600;
    if (text.empty() || text[0] < L'0' || text[0] > L'9' || *end != L'\0' || seconds < 1 || seconds > longest)
        return std::nullopt;
    return std::chrono::seconds(seconds);
}

} // namespace

std::optional<browser_options> parse_command_line(const std::vector<std::wstring>& arguments)
{
    browser_options options;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::wstring& argument = arguments[i];
        const std::wstring* value = i + 1 < arguments.size() ? &arguments[i + 1] : nullptr;
        if (argument == L"--exit") {
            options.exit = true;
        } else if (argument == L"--screenshot" && value != nullptr && !value->empty()) {
            options.screenshot = *value;
            ++i;
        } else if (argument == L"--wait" && value != nullptr) {
            const auto wait = parse_wait(*value);
            if (!wait)
                return std::nullopt;
            options.wait = *wait;
            ++i;
        } else if (!argument.empty() && argument[0] != L'-' && options.address.empty()) {
            options.address = argument;
        } else {
            return std::nullopt;
        }
    }
    if (options.address.empty())
        return std::nullopt;
    return options;
}

} // namespace quill
