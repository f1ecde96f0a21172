// Long text on a console, of which older systems take a part only in one call.
#include "diagnose/output.h"
#include "tests/support/faults/replaced_import.h"

#include <gtest/gtest.h>

namespace quill::test {
namespace {

std::wstring on_console;
constexpr DWORD most = 8191;

BOOL WINAPI get_mode(HANDLE, DWORD* mode)
{
    *mode = 0;
    return TRUE;
}

BOOL WINAPI write_console(HANDLE, const void* text, DWORD count, DWORD* written, void*)
{
    if (count > most)
        return FALSE;
    on_console.append(static_cast<const wchar_t*>(text), count);
    *written = count;
    return TRUE;
}

TEST(ConsoleOutput, IsCompleteIfItIsLong)
{
    std::wstring text;
    for (wchar_t c = 0x100; c < 0x100 + 2 * most; ++c)
        text += c;
    on_console.clear();
    bool is_complete = false;
    {
        const replaced_import<decltype(GetConsoleMode)> mode("GetConsoleMode", get_mode);
        const replaced_import<decltype(WriteConsoleW)> write("WriteConsoleW", write_console);
        diagnose::output out(STD_OUTPUT_HANDLE);
        out.write(text + L"\n");
        is_complete = out.is_complete();
    }
    EXPECT_TRUE(is_complete);
    EXPECT_TRUE(on_console == text + L"\r\n") << on_console.size();
}

} // namespace
} // namespace quill::test
