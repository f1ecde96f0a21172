// The two path functions that the plain code takes from the shell.
#pragma once

#include <windows.h>

extern "C" {
wchar_t* PathFindFileNameW(const wchar_t* path);
wchar_t* PathFindExtensionW(const wchar_t* path);
}
