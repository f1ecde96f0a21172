#include "diagnose/report.h"

#include <algorithm>

namespace quill::diagnose {
namespace {

constexpr std::size_t longest_text = 400;

std::wstring_view word_of(state result)
{
    switch (result) {
    case state::ok:
        return L"OK      ";
    case state::note:
        return L"NOTE    ";
    case state::problem:
        break;
    }
    return L"PROBLEM ";
}

constexpr bool is_between(wchar_t c, unsigned first, unsigned last)
{
    return c >= first && c <= last;
}

// Control characters, line separators, characters that control the direction of writing, and other invisible
// ones.
constexpr bool is_unprintable(wchar_t c)
{
    return c < 0x20 || is_between(c, 0x7F, 0x9F) || c == 0xAD || c == 0x61C || c == 0x180E ||
           is_between(c, 0x200B, 0x200F) || is_between(c, 0x2028, 0x202E) || is_between(c, 0x2060, 0x206F) ||
           c == 0xFEFF || is_between(c, 0xFFF9, 0xFFFB);
}

std::wstring escaped(wchar_t c)
{
    return L"<U+" + hexadecimal(c, 4) + L">";
}

std::size_t count_of(const report& findings, state result)
{
    return static_cast<std::size_t>(std::ranges::count(findings, result, &finding::result));
}

} // namespace

bool would_open(const report& findings)
{
    return !findings.empty() && count_of(findings, state::problem) == 0;
}

std::wstring text_of(const finding& finding)
{
    std::wstring text(word_of(finding.result));
    text += finding.check + L"\n";
    text += L"    found:    " + finding.found + L"\n";
    text += L"    expected: " + finding.expected + L"\n";
    text += L"    to do:    " + (finding.to_do.empty() ? std::wstring(L"nothing") : finding.to_do) + L"\n";
    return text;
}

std::wstring summary_of(const report& findings)
{
    std::wstring text = counted(count_of(findings, state::problem), L"problem") + L", " +
                        counted(count_of(findings, state::note), L"note") + L", " +
                        number_text(count_of(findings, state::ok)) + L" OK\n";
    if (would_open(findings)) {
        text += L"RESULT: a PDF would open in a 64-bit tab";
        for (const finding& finding : findings)
            text += finding.limit;
        return text + L"\n";
    }
    text += L"RESULT: a PDF would not open, or it is not certain that it would, because of:\n";
    for (const finding& finding : findings) {
        if (finding.result == state::problem)
            text += L"    " + finding.check + L"\n";
    }
    return text;
}

std::wstring printable(std::wstring_view text)
{
    std::wstring result;
    for (const wchar_t c : text.substr(0, longest_text)) {
        if (is_unprintable(c))
            result += escaped(c);
        else
            result += c;
    }
    if (text.size() > longest_text)
        result += L"... (" + number_text(text.size()) + L" characters)";
    return result;
}

std::wstring quoted(std::wstring_view text)
{
    std::wstring result = L"\"";
    for (const wchar_t c : printable(text))
        result += c == L'"' ? escaped(c) : std::wstring(1, c);
    return result + L"\"";
}

std::wstring widened(std::string_view ascii)
{
    return {ascii.begin(), ascii.end()};
}

std::wstring number_text(unsigned long long number)
{
    return widened(std::to_string(number));
}

std::wstring hexadecimal(unsigned long long number, std::size_t digits)
{
    constexpr std::wstring_view all_digits = L"0123456789ABCDEF";
    std::wstring text;
    do {
        text.insert(text.begin(), all_digits[number % 16]);
        number /= 16;
    } while (number != 0 || text.size() < digits);
    return text;
}

std::wstring counted(unsigned long long count, std::wstring_view noun)
{
    return number_text(count) + L" " + std::wstring(noun) + (count == 1 ? L"" : L"s");
}

} // namespace quill::diagnose
