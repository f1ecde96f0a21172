// The result of the diagnosis: one finding for each check, and how they are written.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace quill::diagnose {

enum class state
{
    ok,
    note,   // a PDF opens all the same, in at least one zone
    problem // a PDF opens in no zone, or not by https, or it is not certain that it does
};

struct finding
{
    state result = state::ok;
    std::wstring check; // the name, always the same for the same check
    std::wstring found;
    std::wstring expected;
    std::wstring to_do; // empty: nothing
    // What the result adds if a PDF would open. Without an initializer, lists of five fields give a warning.
    std::wstring limit = {}; // NOLINT(readability-redundant-member-init)
};

using report = std::vector<finding>;

// True if no finding is a problem.
bool would_open(const report& findings);

// Four lines that end with a line feed.
std::wstring text_of(const finding& finding);

// The last lines: the numbers of findings and the result.
std::wstring summary_of(const report& findings);

// Text of the registry, of file names and of the environment as part of a line: characters that would move
// the cursor, end the line or change the direction of writing are written as "<U+000A>". Text of more than
// 400 UTF-16 code units is shortened and its length is stated.
std::wstring printable(std::wstring_view text);

// printable() in quotation marks. Those in the text are written as "<U+0022>": it must not seem to end early.
std::wstring quoted(std::wstring_view text);

// ASCII text and numbers as wide text.
std::wstring widened(std::string_view ascii);
std::wstring number_text(unsigned long long number);
std::wstring hexadecimal(unsigned long long number, std::size_t digits = 0);

// "1 file", "2 files"
std::wstring counted(unsigned long long count, std::wstring_view noun);

} // namespace quill::diagnose
