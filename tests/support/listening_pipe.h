// A named pipe with a server that records whether a client has opened it.
#pragma once

#include <windows.h>

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>

namespace quill::test {

// A client is disconnected at once: one that reads would wait forever.
class listening_pipe
{
public:
    listening_pipe()
        : pipe_(CreateNamedPipeW((L"\\\\.\\pipe\\" + name_).c_str(),
                                 PIPE_ACCESS_DUPLEX | FILE_FLAG_OVERLAPPED, PIPE_TYPE_BYTE, 1, 0, 0, 0,
                                 nullptr))
    {
        EXPECT_NE(pipe_, INVALID_HANDLE_VALUE);
        connecting_.hEvent = CreateEventW(nullptr, TRUE, FALSE, nullptr);
        EXPECT_FALSE(ConnectNamedPipe(pipe_, &connecting_));
        EXPECT_EQ(GetLastError(), DWORD{ERROR_IO_PENDING});
        server_ = std::thread([this] { turn_away(); });
    }
    ~listening_pipe()
    {
        SetEvent(end_);
        server_.join();
        // The system writes to the OVERLAPPED until the request has ended.
        CancelIoEx(pipe_, &connecting_);
        DWORD transferred = 0;
        GetOverlappedResult(pipe_, &connecting_, &transferred, TRUE);
        CloseHandle(pipe_);
        CloseHandle(connecting_.hEvent);
        CloseHandle(end_);
    }
    listening_pipe(const listening_pipe&) = delete;
    listening_pipe& operator=(const listening_pipe&) = delete;

    // The name after "\\.\pipe\".
    const std::wstring& name() const { return name_; }
    bool was_opened() const
    {
        return was_opened_ || WaitForSingleObject(connecting_.hEvent, 0) == WAIT_OBJECT_0;
    }

private:
    void turn_away()
    {
        const HANDLE events[] = {connecting_.hEvent, end_};
        if (WaitForMultipleObjects(2, events, FALSE, INFINITE) != WAIT_OBJECT_0)
            return;
        was_opened_ = true;
        DisconnectNamedPipe(pipe_);
    }

    const std::wstring name_ = L"quill test " + std::to_wstring(GetCurrentProcessId()) + L".pdf";
    const HANDLE end_ = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    OVERLAPPED connecting_{};
    HANDLE pipe_;
    std::atomic<bool> was_opened_ = false;
    std::thread server_;
};

} // namespace quill::test
