#include "stand_ins/browser/command_line.h"

#include <cwchar>

namespace quill {
namespace {

constexpr unsigned long longest_wait = 600;
constexpr unsigned long most_documents = 99;

// nullopt unless text is a number from 1 to `largest`.
std::optional<unsigned long> parse_number(const std::wstring& text, unsigned long largest)
{
    wchar_t* end = nullptr;
    const unsigned long number = std::wcstoul(text.c_str(), &end, 10);
    if (text.empty() || text[0] < L'0' || text[0] > L'9' || *end != L'\0' || number < 1 || number > largest)
        return std::nullopt;
    return number;
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
            const auto wait = parse_number(*value, longest_wait);
            if (!wait)
                return std::nullopt;
            options.wait = std::chrono::seconds(*wait);
            ++i;
        } else if (argument == L"--documents" && value != nullptr) {
            const auto documents = parse_number(*value, most_documents);
            if (!documents)
                return std::nullopt;
            options.documents = *documents;
            ++i;
        } else if (argument == L"--page") {
            options.page = true;
        } else if (argument == L"--click" && value != nullptr && !value->empty()) {
            options.click = *value;
            ++i;
        } else if (argument == L"--helpers") {
            options.helpers = true;
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
