// Message maps: a class lists its handlers, and ProcessWindowMessage finds the one for a message. A handler
// that sets bHandled to FALSE passes the message on to the following entries.
#pragma once

#include <windows.h>

namespace ATL {

class CMessageMap
{
public:
    // TRUE if a handler processed the message; lResult is then its result.
    virtual BOOL ProcessWindowMessage(HWND hWnd, UINT uMsg, WPARAM wParam, LPARAM lParam, LRESULT& lResult,
                                      DWORD dwMsgMapID = 0) = 0;

protected:
    ~CMessageMap() = default;
};

} // namespace ATL

#define BEGIN_MSG_MAP(theClass)                                                                              \
public:                                                                                                      \
    BOOL ProcessWindowMessage(HWND hWnd, UINT uMsg, WPARAM wParam, LPARAM lParam, LRESULT& lResult,          \
                              DWORD dwMsgMapID = 0) override                                                 \
    {                                                                                                        \
        BOOL bHandled = TRUE;                                                                                \
        static_cast<void>(bHandled), static_cast<void>(hWnd), static_cast<void>(uMsg);                       \
        static_cast<void>(wParam), static_cast<void>(lParam), static_cast<void>(lResult);                    \
        switch (dwMsgMapID) {                                                                                \
        case 0:

#define ALT_MSG_MAP(msgMapID)                                                                                \
    break;                                                                                                   \
    case msgMapID:

#define ATL_MESSAGE_ENTRY_(condition, call)                                                                  \
    if (condition) {                                                                                         \
        bHandled = TRUE;                                                                                     \
        lResult = call;                                                                                      \
        if (bHandled)                                                                                        \
            return TRUE;                                                                                     \
    }

#define MESSAGE_HANDLER(msg, func) ATL_MESSAGE_ENTRY_(uMsg == msg, func(uMsg, wParam, lParam, bHandled))

#define MESSAGE_RANGE_HANDLER(msgFirst, msgLast, func)                                                       \
    ATL_MESSAGE_ENTRY_(uMsg >= msgFirst && uMsg <= msgLast, func(uMsg, wParam, lParam, bHandled))

#define ATL_COMMAND_ENTRY_(condition, func)                                                                  \
    ATL_MESSAGE_ENTRY_(uMsg == WM_COMMAND && (condition),                                                    \
                       func(HIWORD(wParam), LOWORD(wParam), reinterpret_cast<HWND>(lParam), bHandled))

#define COMMAND_HANDLER(id, code, func)                                                                      \
    ATL_COMMAND_ENTRY_(id == LOWORD(wParam) && code == HIWORD(wParam), func)

#define COMMAND_ID_HANDLER(id, func) ATL_COMMAND_ENTRY_(id == LOWORD(wParam), func)

#define COMMAND_CODE_HANDLER(code, func) ATL_COMMAND_ENTRY_(code == HIWORD(wParam), func)

#define CHAIN_MSG_MAP_ALT(theChainClass, msgMapID)                                                           \
    if (theChainClass::ProcessWindowMessage(hWnd, uMsg, wParam, lParam, lResult, msgMapID))                  \
        return TRUE;

#define CHAIN_MSG_MAP(theChainClass) CHAIN_MSG_MAP_ALT(theChainClass, 0)

#define CHAIN_MSG_MAP_MEMBER(theChainMember)                                                                 \
    if (theChainMember.ProcessWindowMessage(hWnd, uMsg, wParam, lParam, lResult, 0))                         \
        return TRUE;

#define END_MSG_MAP()                                                                                        \
    break;                                                                                                   \
    default:                                                                                                 \
        break;                                                                                               \
        }                                                                                                    \
        return FALSE;                                                                                        \
        }
