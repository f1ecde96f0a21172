#include "tests/fuzz/input.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace quill::fuzz {

std::wstring wide_text(bytes input)
{
    std::wstring text;
    text.reserve(input.size());
    for (std::size_t i = 0; i < input.size(); ++i) {
        if (input[i] == 0xFF && input.size() - i > 2) {
            text += static_cast<wchar_t>(input[i + 1] | input[i + 2] << 8);
            i += 2;
        } else {
            text += static_cast<wchar_t>(input[i]);
        }
    }
    return text;
}

std::vector<bytes> lines_of(bytes input, std::size_t most)
{
    std::vector<bytes> lines;
    while (lines.size() + 1 < most) {
        const auto end = std::find(input.begin(), input.end(), std::uint8_t{'\n'});
        if (end == input.end())
            break;
        const auto length = static_cast<std::size_t>(end - input.begin());
        lines.push_back(input.first(length));
        input = input.subspan(length + 1);
    }
    lines.push_back(input);
    return lines;
}

std::vector<std::wstring> wide_lines_of(bytes input, std::size_t most)
{
    std::vector<std::wstring> lines;
    for (const bytes line : lines_of(input, most))
        lines.push_back(wide_text(line));
    return lines;
}

std::string narrow_text(bytes input)
{
    return {input.begin(), input.end()};
}

exact_terminated::exact_terminated(std::wstring_view text)
    : units_(std::wstring(text.substr(0, text.find(L'\0'))) + L'\0')
{
}

void report_broken_property(const char* property, const char* file, int line)
{
    std::fprintf(stderr, "%s:%d: this does not hold: %s\n", file, line, property);
    std::abort();
}

} // namespace quill::fuzz
