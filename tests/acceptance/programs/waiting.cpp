// waiting.exe: prints a line and waits until it is ended. It takes the place of a test program in runs that
// are broken off, because Wine's server sometimes ends when programs with windows and threads are killed.
#include <windows.h>

#include <cstdio>

int main()
{
    std::puts("waiting");
    std::fflush(stdout);
    Sleep(INFINITE);
}
