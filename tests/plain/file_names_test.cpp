#include "retrieval/file/file_names.h"

#include <gtest/gtest.h>

#include <string>

namespace quill {
namespace {

TEST(DeviceName, IsRecognisedInAnyCaseAndWithAnyExtension)
{
    for (const wchar_t* name :
         {L"CON",       L"prn",       L"Aux",       L"nul",     L"CLOCK$",    L"conin$",
          L"CONOUT$",   L"COM0",      L"com1",      L"COM9",    L"LPT0",      L"lpt9",
          L"COM\u00b9", L"lpt\u00b2", L"COM\u00b3", L"NUL.pdf", L"com1 .pdf", L"aux.tar.pdf",
          L"NUL:",      L"NUL:x",     L"nul .",     L"CON  ",   L"LPT1.  "})
        EXPECT_TRUE(is_device_name(name)) << testing::PrintToString(name);
}

TEST(DeviceName, IsTheWholeName)
{
    for (const wchar_t* name :
         {L"", L".", L" ", L"a", L"CONS", L"COM", L"COM10", L"COMA", L"LPT", L"XLPT1", L" NUL", L"NUL-1",
          L"a.nul", L".nul", L"CON$", L"COM\u2074", L"C\u00d6N", L"nu"})
        EXPECT_FALSE(is_device_name(name)) << testing::PrintToString(name);
}

TEST(CreatableName, ContainsNoReservedCharacter)
{
    constexpr std::wstring_view forbidden = L"\"*/:<>?\\|";
    for (wchar_t unit = 0; unit < 0x180; ++unit) {
        const bool is_forbidden = unit < 0x20 || forbidden.find(unit) != std::wstring_view::npos;
        EXPECT_EQ(is_creatable_name(std::wstring(L"a") + unit + L"b.pdf"), !is_forbidden) << unsigned{unit};
        EXPECT_EQ(is_creatable_name(std::wstring(1, unit)), !is_forbidden) << unsigned{unit};
    }
    EXPECT_FALSE(is_creatable_name(L""));
    EXPECT_FALSE(is_creatable_name(L"nul.pdf"));
}

TEST(DiskFile, MayBeOnADriveOrAShare)
{
    for (const wchar_t* path : {L"a.pdf",
                                L"C:\\a.pdf",
                                L"c:/x/a.pdf",
                                L"C:a.pdf",
                                L"\\a.pdf",
                                L"..\\a.pdf",
                                L"C:\\COM1\\a.pdf",
                                L"C:\\x\\COM10.pdf",
                                L"C:\\a.nul",
                                L"\\\\server\\share\\a.pdf",
                                L"//server/share/a.pdf",
                                L"\\\\server\\pipes\\a.pdf",
                                L"\\\\server\\share\\pipe\\a.pdf",
                                L"\\\\?\\C:\\a.pdf",
                                L"\\\\?\\UNC\\server\\share\\a.pdf",
                                L"\\\\?\\unc\\server\\share\\a.pdf",
                                L"\\\\.\\C:\\a.pdf",
                                L"\\??\\C:\\a.pdf",
                                L"\\\\?\\Volume{01234567-89ab-cdef-0123-456789abcdef}\\a.pdf",
                                L"C:\\",
                                L"C:",
                                L"\\\\server\\share"})
        EXPECT_TRUE(may_name_disk_file(path)) << testing::PrintToString(path);
}

TEST(DiskFile, IsNoDevice)
{
    for (const wchar_t* path : {L"COM1",
                                L"com1:",
                                L"CON",
                                L"nul.pdf",
                                L"C:\\x\\COM1",
                                L"C:\\x\\nul.pdf",
                                L"C:/x/aux .pdf",
                                L"C:NUL",
                                L"C:\\x\\NUL\\",
                                L"C:\\x\\NUL\\.",
                                L"C:\\x\\NUL. .",
                                L"\\CONIN$",
                                L"..\\LPT1",
                                L"\\\\.\\COM1",
                                L"//./COM1",
                                L"\\\\.\\COM10",
                                L"\\/.\\PhysicalDrive0",
                                L"\\\\.\\C:",
                                L"\\\\?\\C:",
                                L"\\\\.\\C:\\",
                                L"\\\\.\\C:\\..\\COM1",
                                L"\\\\.\\C:\\x\\..\\..\\COM1",
                                L"\\\\.\\C:\\x\\COM1",
                                L"\\\\?\\COM1",
                                L"\\\\?\\GLOBALROOT\\Device\\Serial0",
                                L"\\\\.\\GLOBALROOT\\Device\\HarddiskVolume1\\a.pdf",
                                L"\\\\?\\Volume{0}",
                                L"\\\\?\\Volume{0}\\",
                                L"\\\\?\\Volume{0\\}\\a.pdf",
                                L"\\\\?\\Volume{0}x\\a.pdf",
                                L"//?/Volume{0}/../COM1",
                                L"\\??\\COM1",
                                L"\\\\.",
                                L"\\\\.\\",
                                L"\\\\?",
                                L"\\\\?\\",
                                L"\\\\.\\\\C:\\a.pdf",
                                L"\\\\\\.\\COM1",
                                L"\\\\.\\unix\\dev\\zero"})
        EXPECT_FALSE(may_name_disk_file(path)) << testing::PrintToString(path);
}

TEST(DiskFile, IsNoPipeAndNoMailslot)
{
    for (const wchar_t* path :
         {L"\\\\.\\pipe\\x", L"//./PIPE/x.pdf", L"\\\\?\\pipe\\x", L"\\\\.\\mailslot\\x", L"\\??\\pipe\\x",
          L"\\\\server\\pipe\\x", L"\\\\localhost\\PIPE\\x.pdf", L"//127.0.0.1/Pipe/x",
          L"\\\\server\\\\pipe\\x", L"\\\\server\\pipe.\\x", L"\\\\server\\mailslot\\x",
          L"\\\\server\\IPC$\\x", L"\\\\server\\pipe", L"\\\\?\\UNC\\server\\pipe\\x",
          L"\\\\.\\unc/server/pipe/x", L"\\\\?\\UNC\\.\\pipe\\x", L"\\\\?\\UNC\\server\\share\\..\\pipe\\x",
          L"\\\\?\\GLOBALROOT\\Device\\NamedPipe\\x", L"\\\\.\\C:\\..\\pipe\\x"})
        EXPECT_FALSE(may_name_disk_file(path)) << testing::PrintToString(path);
}

TEST(DiskFile, HasAName)
{
    for (const wchar_t* path :
         {L"", L"\\\\", L"\\\\server", L"\\\\server\\", L"\\\\\\\\", L"\\\\?\\UNC\\server"})
        EXPECT_FALSE(may_name_disk_file(path)) << testing::PrintToString(path);
}

} // namespace
} // namespace quill
