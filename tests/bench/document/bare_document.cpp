#include "tests/bench/document/bare_document.h"

#include "retrieval/download/window_messages.h"
#include "retrieval/file/pdf_check.h"
#include "retrieval/pane/status_pane_layout.h"
#include "tests/bench/document/bare_downloads.h"
#include "tests/bench/support/measure.h"
#include "tests/support/scopes.h"
#include "tests/support/viewer/viewer_class.h"
#include "tests/support/wait.h"

#include <wrl/client.h>

#include <array>
#include <stdexcept>

namespace quill::bench {
namespace {

constexpr wchar_t class_name[] = L"quill bare document";
constexpr DWORD deadline_ms = 300'000;

struct opening
{
    HWND window = nullptr;
    HWND pane = nullptr;
    std::wstring url;
    std::wstring folder; // created by the worker
    double opened_at = 0;
};

LRESULT CALLBACK procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam)
{
    auto* const document = reinterpret_cast<opening*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    switch (document ? message : WM_NULL) {
    case WM_USER_GETURLLENGTH:
        *reinterpret_cast<std::size_t*>(lparam) = document->url.size();
        return 0;
    case WM_USER_GETURL:
        document->url.copy(reinterpret_cast<wchar_t*>(lparam), wparam);
        return 0;
    case WM_USER_LOADFILE:
        ShowWindow(document->pane, SW_HIDE);
        document->opened_at = now();
        return 0;
    default:
        return DefWindowProcW(window, message, wparam, lparam);
    }
}

HWND child_window(HWND parent, DWORD style, const wchar_t* class_of)
{
    RECT area{};
    GetClientRect(parent, &area);
    return CreateWindowExW(0, class_of, L"", WS_CHILD | WS_VISIBLE | style, 0, 0, area.right, area.bottom,
                           parent, nullptr, GetModuleHandleW(nullptr), nullptr);
}

void create_windows(opening& document, HWND parent)
{
    document.window = child_window(parent, WS_CLIPCHILDREN | WS_CLIPSIBLINGS, class_name);
    SetWindowLongPtrW(document.window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(&document));
    child_window(document.window, WS_BORDER, class_name);
    document.pane = CreateWindowExW(0, L"STATIC", L"", WS_CHILD | WS_VISIBLE, 0, 0, 0, 0, document.window,
                                    nullptr, GetModuleHandleW(nullptr), nullptr);
    SetWindowPos(document.pane, nullptr, 0, 0, status_pane_size.cx, status_pane_size.cy, SWP_SHOWWINDOW);
}

Microsoft::WRL::ComPtr<IUnknown> create_viewer()
{
    CLSID class_id{};
    Microsoft::WRL::ComPtr<IUnknown> viewer;
    if (FAILED(CLSIDFromProgID(test::viewer_prog_id, &class_id)) ||
        FAILED(CoCreateInstance(class_id, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&viewer))))
        throw std::runtime_error("there is no viewer");
    return viewer;
}

DWORD WINAPI work(void* parameter)
{
    auto& document = *static_cast<opening*>(parameter);
    const auto send = [&document](UINT message, WPARAM wparam, const void* lparam) {
        DWORD_PTR unused = 0;
        SendMessageTimeoutW(document.window, message, wparam, reinterpret_cast<LPARAM>(lparam),
                            window_message_flags, window_message_timeout_ms, &unused);
    };
    std::size_t length = 0;
    send(WM_USER_GETURLLENGTH, 0, &length);
    std::wstring url(length, L'\0');
    send(WM_USER_GETURL, length, url.data());
    CreateDirectoryW(document.folder.c_str(), nullptr);
    const std::wstring path = document.folder + L"\\bare.pdf";
    try {
        download_with_urlmon(url, path);
    } catch (const std::exception&) {
        return 1; // never signalled: the pump ends at its deadline
    }
    std::array<char, pdf_check_bytes> bytes{};
    DWORD bytes_read = 0;
    const HANDLE file =
        CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
    ReadFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &bytes_read, nullptr);
    CloseHandle(file);
    send(WM_USER_SETCACHEFILE, 0, path.c_str());
    PostMessageW(document.window, WM_USER_LOADFILE, 0, 0);
    return 0;
}

} // namespace

double open_bare_document(HWND parent, const std::wstring& url, const std::wstring& folder)
{
    WNDCLASSW description{};
    description.lpfnWndProc = procedure;
    description.hInstance = GetModuleHandleW(nullptr);
    description.hbrBackground = reinterpret_cast<HBRUSH>(COLOR_WINDOW + 1);
    description.lpszClassName = class_name;
    RegisterClassW(&description); // fails from the second document on: the class is registered
    opening document;
    document.url = url;
    document.folder = folder;

    const double start = now();
    create_windows(document, parent);
    const auto viewer = create_viewer();
    const HANDLE worker = CreateThread(nullptr, 0, work, &document, 0, nullptr);
    const bool is_opened = test::wait_until([&document] { return document.opened_at != 0; }, deadline_ms);
    WaitForSingleObject(worker, INFINITE);
    CloseHandle(worker);
    DestroyWindow(document.window);
    test::pump_messages();
    test::remove_path(folder);
    if (!is_opened)
        throw std::runtime_error("a bare document does not come");
    return document.opened_at - start;
}

} // namespace quill::bench
