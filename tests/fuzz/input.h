// How the bytes of an input are interpreted, and how a broken property is reported.
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

// Wide text from bytes: a byte is the UTF-16 code unit of its value; 0xFF is followed by two bytes of one
// code unit, low byte first. So corpora are readable, and every code unit can occur.
std::wstring wide_text(bytes input);

// The input's lines, at most `most` of them: the last one has the rest, line ends included.
std::vector<bytes> lines_of(bytes input, std::size_t most);
std::vector<std::wstring> wide_lines_of(bytes input, std::size_t most);

std::string narrow_text(bytes input);

// A copy that ends where its memory ends, so that every access beyond it is detected: the text alone, or with
// the terminator that a function requires.
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
    // text: up to its first zero code unit.
    explicit exact_terminated(std::wstring_view text);

    const wchar_t* c_str() const { return units_.view().data(); }
    std::wstring_view view() const { return units_.view().substr(0, units_.view().size() - 1); }

private:
    exact_copy<wchar_t> units_;
};

[[noreturn]] void report_broken_property(const char* property, const char* file, int line);

} // namespace quill::fuzz

// A property of the code under test: the fuzzer keeps an input that breaks it.
#define FUZZ_CHECK(property)                                                                                 \
    do {                                                                                                     \
        if (!(property))                                                                                     \
            quill::fuzz::report_broken_property(#property, __FILE__, __LINE__);                              \
    } while (0)
