// The C library's wide-character functions for a wchar_t of 16 bits; that of the build machine has 32.
// Hidden, so that the machine's libraries keep using their own; plain loops, so that the sanitizers check
// every access.
#include <cerrno>
#include <climits>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cwchar>
#include <cwctype>
#include <string>

#pragma GCC visibility push(hidden)

extern "C" {

// C++ overloads these two functions, and which overloads are declared depends on the compiler; the symbols of
// the C library do not.
wchar_t* find_unit(const wchar_t* text, wchar_t unit, std::size_t count) noexcept __asm__("wmemchr");
wchar_t* find_part(const wchar_t* text, const wchar_t* part) noexcept __asm__("wcsstr");

std::size_t wcslen(const wchar_t* text) noexcept
{
    std::size_t length = 0;
    while (text[length] != L'\0')
        ++length;
    return length;
}

int wmemcmp(const wchar_t* left, const wchar_t* right, std::size_t count) noexcept
{
    for (std::size_t i = 0; i < count; ++i) {
        if (left[i] != right[i])
            return left[i] < right[i] ? -1 : 1;
    }
    return 0;
}

int wcscmp(const wchar_t* left, const wchar_t* right) noexcept
{
    for (; *left != L'\0' && *left == *right; ++left)
        ++right;
    return *left == *right ? 0 : *left < *right ? -1 : 1;
}

wchar_t* wmemcpy(wchar_t* to, const wchar_t* from, std::size_t count) noexcept
{
    for (std::size_t i = 0; i < count; ++i)
        to[i] = from[i];
    return to;
}

wchar_t* wmemmove(wchar_t* to, const wchar_t* from, std::size_t count) noexcept
{
    if (to <= from)
        return wmemcpy(to, from, count);
    while (count-- > 0)
        to[count] = from[count];
    return to;
}

wchar_t* wmemset(wchar_t* to, wchar_t unit, std::size_t count) noexcept
{
    for (std::size_t i = 0; i < count; ++i)
        to[i] = unit;
    return to;
}

wchar_t* find_unit(const wchar_t* text, wchar_t unit, std::size_t count) noexcept
{
    for (std::size_t i = 0; i < count; ++i) {
        if (text[i] == unit)
            return const_cast<wchar_t*>(text + i);
    }
    return nullptr;
}

wchar_t* find_part(const wchar_t* text, const wchar_t* part) noexcept
{
    const std::size_t length = wcslen(part);
    for (;; ++text) {
        std::size_t i = 0;
        while (i < length && text[i] == part[i])
            ++i;
        if (i == length)
            return const_cast<wchar_t*>(text);
        if (*text == L'\0')
            return nullptr;
    }
}

// The numbers that plain code reads are ASCII: the rest of the text ends them.
long wcstol(const wchar_t* text, wchar_t** end, int base) noexcept
{
    std::string narrow;
    for (const wchar_t* unit = text; *unit != L'\0' && *unit < 0x80; ++unit)
        narrow += static_cast<char>(*unit);
    char* narrow_end = nullptr;
    const long value = std::strtol(narrow.c_str(), &narrow_end, base);
    if (end)
        *end = const_cast<wchar_t*>(text + (narrow_end - narrow.c_str()));
    // A long has 32 bits on the product's system.
    return value > INT_MAX ? INT_MAX : value < INT_MIN ? INT_MIN : value;
}

int vswprintf(wchar_t* text, std::size_t capacity, const wchar_t* format, va_list arguments) noexcept
{
    std::string narrow_format;
    for (; *format != L'\0'; ++format)
        narrow_format += static_cast<char>(*format);
    char narrow[1024];
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored                                                                               \
    "-Wformat-nonliteral" // the caller's format, which the compiler has checked there
    const int length = std::vsnprintf(narrow, sizeof narrow, narrow_format.c_str(), arguments);
#pragma GCC diagnostic pop
    std::size_t written = 0;
    for (; written + 1 < capacity && static_cast<int>(written) < length; ++written)
        text[written] = static_cast<wchar_t>(static_cast<unsigned char>(narrow[written]));
    if (capacity > 0)
        text[written] = L'\0';
    return static_cast<int>(written) == length ? length : -1;
}

int swprintf(wchar_t* text, std::size_t capacity, const wchar_t* format, ...) noexcept
{
    va_list arguments;
    va_start(arguments, format);
    const int length = vswprintf(text, capacity, format, arguments);
    va_end(arguments);
    return length;
}

} // extern "C"

#pragma GCC visibility pop
