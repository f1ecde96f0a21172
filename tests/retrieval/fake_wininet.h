// A scripted WinINet: returns what a test specifies, records every call with its arguments, and tracks the
// open handles.
#pragma once

#include "retrieval/download/wininet_functions.h"

#include <windows.h>

#include <deque>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace quill::test {

// One at a time. Handles are numbered from 1 in the order of their creation; calls show them as "#1".
class fake_wininet
{
public:
    struct read_step
    {
        DWORD bytes; // bytes returned, at most as many as requested
        BOOL result = TRUE;
    };

    fake_wininet();
    ~fake_wininet();
    fake_wininet(const fake_wininet&) = delete;
    fake_wininet& operator=(const fake_wininet&) = delete;

    const wininet_functions& functions() const { return functions_; }

    // The script. Errors: 0 for success, otherwise the GetLastError() of the failure.
    DWORD open_error = 0;
    DWORD open_url_error = 0;
    DWORD connect_error = 0;
    DWORD open_request_error = 0;
    DWORD send_error = 0;
    bool options_fail = false;
    DWORD initial_flags = 0;        // the value of option 31 of every handle
    std::wstring content_length;    // empty: the header is absent
    std::deque<DWORD> available;    // one for each query; then 0
    std::deque<read_step> reads;    // one for each read; then everything that is requested
    std::function<void()> on_read;  // called after every read
    std::function<void()> on_close; // called before every close

    // The call of this number, counted from 1, fails, or it succeeds with a null result.
    std::size_t failing_call = 0;
    bool returns_null = false;

    // The record.
    std::vector<std::string> calls;
    std::vector<std::string> open_handles() const;

private:
    static HINTERNET make_handle(const char* kind, DWORD error);
    // Whether this call is the one that fails.
    static bool note(std::string call);
    static std::string name(HINTERNET handle);

    static HINTERNET WINAPI open(LPCWSTR agent, DWORD type, LPCWSTR proxy, LPCWSTR bypass, DWORD flags);
    static BOOL WINAPI query_option(HINTERNET handle, DWORD option, LPVOID buffer, LPDWORD size);
    static BOOL WINAPI set_option(HINTERNET handle, DWORD option, LPVOID buffer, DWORD size);
    static HINTERNET WINAPI open_url(HINTERNET session, LPCWSTR url, LPCWSTR headers, DWORD length,
                                     DWORD flags, DWORD_PTR context);
    static HINTERNET WINAPI connect(HINTERNET session, LPCWSTR host, INTERNET_PORT port, LPCWSTR user,
                                    LPCWSTR password, DWORD service, DWORD flags, DWORD_PTR context);
    static HINTERNET WINAPI open_request(HINTERNET connection, LPCWSTR verb, LPCWSTR object, LPCWSTR version,
                                         LPCWSTR referrer, LPCWSTR* types, DWORD flags, DWORD_PTR context);
    static BOOL WINAPI send_request(HINTERNET request, LPCWSTR headers, DWORD length, LPVOID optional,
                                    DWORD optional_length);
    static BOOL WINAPI query_info(HINTERNET request, DWORD info, LPVOID buffer, LPDWORD size, LPDWORD index);
    static BOOL WINAPI query_data_available(HINTERNET request, LPDWORD count, DWORD flags, DWORD_PTR context);
    static BOOL WINAPI read_file(HINTERNET request, LPVOID buffer, DWORD size, LPDWORD read);
    static BOOL WINAPI close_handle(HINTERNET handle);

    static fake_wininet* current_;
    wininet_functions functions_;
    std::map<HINTERNET, std::string> handles_;
    std::uintptr_t last_handle_ = 0;
};

} // namespace quill::test
