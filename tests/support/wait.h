// Waiting for what another thread or the message queue brings, with a deadline instead of a guess.
#pragma once

#include <windows.h>

namespace quill::test {

inline constexpr DWORD default_deadline_ms = 30'000;

// Delivers the messages that wait for the calling thread.
inline void pump_messages()
{
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
}

// Pumps the calling thread's messages until condition() is true; false when the deadline passes first.
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
