// Entry point of every test program.
#include "tests/support/watchdog.h"

#include <windows.h>

#include <gmock/gmock.h>

int wmain(int argc, wchar_t** argv)
{
    // A failing assertion or an access violation ends the program: a dialog would wait forever.
    SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX | SEM_NOOPENFILEERRORBOX);
    testing::InitGoogleMock(&argc, argv);
    quill::test::start_watchdog();
    return RUN_ALL_TESTS();
}
