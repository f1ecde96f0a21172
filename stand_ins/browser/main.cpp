// quill_browser.exe: hosts the system's browser engine in a window.
#include "stand_ins/browser/browser_window.h"
#include "stand_ins/browser/command_line.h"

#include <windows.h>

#include <atlbase.h>
#include <ole2.h>

#include <cstdio>
#include <exception>
#include <string>
#include <vector>

namespace {

class browser_module : public CAtlModuleT<browser_module>
{
};

browser_module module_object;

// Runs until the window is closed.
void pump_messages(quill::browser_window& window)
{
    MSG message = {};
    while (GetMessageW(&message, nullptr, 0, 0) > 0) {
        if (window.translate_key(message))
            continue;
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
}

int run(int count, wchar_t** values)
{
    const auto options = quill::parse_command_line(std::vector<std::wstring>(values + 1, values + count));
    if (!options) {
        std::fwprintf(stderr, L"%ls", quill::browser_usage);
        return 2;
    }
    if (FAILED(OleInitialize(nullptr)))
        return 1;
    bool succeeded = false;
    {
        quill::browser_window window(*options);
        if (window.open()) {
            pump_messages(window);
            succeeded = window.succeeded();
        }
    }
    OleUninitialize();
    return succeeded ? 0 : 1;
}

} // namespace

int wmain(int count, wchar_t** values)
{
    try {
        return run(count, values);
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "quill_browser: %s\n", failure.what());
        return 1;
    }
}
