#include "diagnose/path_place.h"

#include <gtest/gtest.h>

namespace quill::diagnose {
namespace {

TEST(PathPlace, OfDevicesIsNotLocal)
{
    for (const wchar_t* path : {L"\\\\.\\COM1", L"\\\\.\\pipe\\x", L"//./NUL", L"\\\\.", L"\\\\?",
                                L"\\\\?\\GLOBALROOT\\Device\\Null", L"\\??\\C:\\a.dll", L"\\\\.\\C:\\a.dll",
                                L"NUL", L"C:\\folder\\com1", L"C:\\folder\\COM9.dll", L"C:/folder/lpt1 .x",
                                L"C:\\CON:", L"C:\\aux.a.dll", L"C:\\COM\u00B2", L"CONIN$"})
        EXPECT_EQ(place_of(path), path_place::device) << path;
}

TEST(PathPlace, OfOtherComputersIsNotLocal)
{
    for (const wchar_t* path :
         {L"\\\\server\\share\\a.dll", L"//server/share/a.dll", L"\\\\", L"\\\\?\\UNC\\server\\share",
          L"\\\\?\\unc\\s", L"\\\\.x\\share", L"\\/server\\share"})
        EXPECT_EQ(place_of(path), path_place::share) << path;
}

TEST(PathPlace, OnlyAnAbsolutePathDependsOnNoCurrentFolder)
{
    for (const wchar_t* path : {L"C:\\", L"C:\\a", L"c:/a", L"\\\\server\\share", L"\\\\?\\C:\\a"})
        EXPECT_TRUE(is_absolute(path));
    for (const wchar_t* path : {L"", L"a", L"a\\b", L".", L"..\\a", L"C:", L"C:a", L"\\a", L"/a"})
        EXPECT_FALSE(is_absolute(path));
}

TEST(PathPlace, OfOtherPathsIsLocal)
{
    for (const wchar_t* path :
         {L"C:\\folder\\a.dll", L"\\\\?\\C:\\a.dll", L"a.dll", L"", L"\\a.dll", L"C:\\COM1\\a.dll",
          L"C:\\COM10", L"C:\\COM0.dll", L"C:\\nulls.dll", L"C:\\folder\\", L"C:\\folder\\xCOM1"})
        EXPECT_EQ(place_of(path), path_place::local) << path;
}

} // namespace
} // namespace quill::diagnose
