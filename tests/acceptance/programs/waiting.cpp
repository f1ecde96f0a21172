// waiting.exe: prints a line and waits until it is ended. It takes the place of a test program in runs that
// are broken off: after some programs with windows and threads were killed, Wine's session did not respond
// any more.
#include <windows.h>

#include <cstdio>

int main()
{
    std::puts("waiting");
    std::fflush(stdout);
    Sleep(INFINITE);
}
