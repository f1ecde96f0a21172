// What a fuzzer's bytes stand for, and how a property that does not hold is reported.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace quill::fuzz {

using bytes = std::span<const std::uint8_t>;

// Wide text out of bytes: a byte is the unit of its value, but 0xFF makes one unit of the two bytes behind
// it, low byte first. So corpora are readable, and every unit can occur.
std::wstring wide_text(bytes input);

// The input's lines, at most `most` of them: the last one has the rest, line ends included.
std::vector<bytes> lines_of(bytes input, std::size_t most);
std::vector<std::wstring> wide_lines_of(bytes input, std::size_t most);

std::string narrow_text(bytes input);

// A copy that ends where its memory ends, so that every step beyond it is seen: the text alone, or with the
// terminator that a function wants.
template <class Unit>
class exact_copy
{
public:
    explicit exact_copy(std::basic_string_view<Unit> text)
        : units_(std::make_unique<Unit[]>(text.size())), size_(text.size())
    {
        text.copy(units_.get(), size_);
    }

    std::basic_string_view<Unit> view() const { return {units_.get(), size_}; }
    operator std::basic_string_view<Unit>() const { return view(); }

private:
    std::unique_ptr<Unit[]> units_;
    std::size_t size_;
};

class exact_terminated
{
public:
    // text: up to its first zero unit.
    explicit exact_terminated(std::wstring_view text);

    const wchar_t* c_str() const { return units_.view().data(); }
    std::wstring_view view() const { return units_.view().substr(0, units_.view().size() - 1); }

private:
    exact_copy<wchar_t> units_;
};

[[noreturn]] void report_broken_property(const char* property, const char* file, int line);

} // namespace quill::fuzz

// A property of the code under test: the fuzzer keeps the input that breaks it.
#define FUZZ_CHECK(property)                                                                                 \
    do {                                                                                                     \
        if (!(property))                                                                                     \
            quill::fuzz::report_broken_property(#property, __FILE__, __LINE__);                              \
    } while (0)
