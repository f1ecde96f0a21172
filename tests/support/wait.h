// Waits for conditions that other threads or the message queue bring about, with a deadline.
#pragma once

#include <windows.h>

namespace quill::test {

inline constexpr DWORD default_deadline_ms = 30'000;

// Dispatches the pending messages of the calling thread.
inline void pump_messages()
{
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
}

// Dispatches messages until condition() is true; false if the deadline passes first.
template <typename Condition>
bool wait_until(const Condition& condition, DWORD deadline_ms = default_deadline_ms)
{
    constexpr DWORD look_again_ms = 10;
    const ULONGLONG end = GetTickCount64() + deadline_ms;
    for (;;) {
        if (condition())
            return true;
        if (GetTickCount64() >= end)
            return false;
        MsgWaitForMultipleObjectsEx(0, nullptr, look_again_ms, QS_ALLINPUT, MWMO_INPUTAVAILABLE);
        pump_messages();
    }
}

} // namespace quill::test
