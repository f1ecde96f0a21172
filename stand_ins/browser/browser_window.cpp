#include "stand_ins/browser/browser_window.h"

#include "stand_ins/browser/print_line.h"

#include <shellapi.h>
#include <shlwapi.h>
#include <windowsx.h>

#include <array>
#include <utility>

namespace quill {
namespace {

constexpr int bar_height = 44; // pixels
constexpr int status_height = 24;
constexpr int button_width = 34;
constexpr int gap = 8;
constexpr int address_height = 18;
constexpr SIZE usual_size = {1240, 1004};

constexpr COLORREF bar_color = RGB(237, 240, 243);
constexpr COLORREF edge_color = RGB(200, 205, 211);
constexpr COLORREF button_color = RGB(222, 227, 232);
constexpr COLORREF pressed_color = RGB(200, 207, 214);
constexpr COLORREF text_color = RGB(40, 46, 54);
constexpr COLORREF faint_color = RGB(150, 157, 165);

constexpr UINT_PTR watch_timer = 1;
constexpr UINT watch_interval_ms = 50;

enum control_id : int
{
    id_back = 101,
    id_forward,
    id_reload,
    id_address
};

struct bar_button
{
    int id;
    const wchar_t* label;
};
constexpr std::array<bar_button, 3> bar_buttons = {
    {{id_back, L"\u2039"}, {id_forward, L"\u203A"}, {id_reload, L"\u21BB"}}};

void fill(HDC dc, const RECT& area, COLORREF color)
{
    SetDCBrushColor(dc, color);
    FillRect(dc, &area, static_cast<HBRUSH>(GetStockObject(DC_BRUSH)));
}

HWND create_child(HWND parent, const wchar_t* window_class, const wchar_t* text, DWORD style, int id)
{
    return CreateWindowExW(0, window_class, text, WS_CHILD | WS_VISIBLE | style, 0, 0, 0, 0, parent,
                           reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)), nullptr, nullptr);
}

} // namespace

browser_window::browser_window(browser_options options) : options_(std::move(options)) {}

bool browser_window::open()
{
    RECT work = {0, 0, usual_size.cx, usual_size.cy};
    SystemParametersInfoW(SPI_GETWORKAREA, 0, &work, 0);
    RECT place = {work.left, work.top, std::min(work.right, work.left + usual_size.cx),
                  std::min(work.bottom, work.top + usual_size.cy)};
    if (Create(nullptr, place, L"Quill Browser", WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN) == nullptr) {
        print_line(stderr, L"the window could not be made");
        return false;
    }
    ShowWindow(SW_SHOW);
    const HRESULT hr = control_.open(content_, *this);
    if (FAILED(hr)) {
        print_line(stderr, L"the browser control could not be opened: " + hexadecimal(hr));
        DestroyWindow();
        return false;
    }
    if (options_.helpers && !load_helpers())
        return false;
    watching_ = true;
    deadline_ = GetTickCount64() + static_cast<ULONGLONG>(std::chrono::milliseconds(options_.wait).count());
    ::SetTimer(m_hWnd, watch_timer, watch_interval_ms, nullptr);
    go_to(options_.address);
    return true;
}

bool browser_window::create_children()
{
    for (const bar_button& button : bar_buttons)
        create_child(m_hWnd, L"BUTTON", button.label, BS_OWNERDRAW, button.id);
    address_ = create_child(m_hWnd, L"EDIT", L"", WS_TABSTOP | ES_AUTOHSCROLL, id_address);
    content_ = create_child(m_hWnd, L"STATIC", L"", WS_CLIPCHILDREN, 0);
    ::SendMessageW(address_, WM_SETFONT, reinterpret_cast<WPARAM>(font_.get()), FALSE);
    ::SendMessageW(address_, EM_SETMARGINS, EC_LEFTMARGIN | EC_RIGHTMARGIN, MAKELPARAM(gap, gap));
    return address_.m_hWnd != nullptr && content_.m_hWnd != nullptr;
}

void browser_window::lay_out()
{
    RECT client = {};
    GetClientRect(&client);
    int left = gap;
    constexpr int height = bar_height - 2 * gap;
    for (const bar_button& button : bar_buttons) {
        ::MoveWindow(GetDlgItem(m_hWnd, button.id), left, gap, button_width, height, TRUE);
        left += button_width + gap / 2;
    }
    left += gap / 2;
    // An edit control aligns its text at the top, so the control is as high as its text and this window draws
    // the box around it.
    address_box_ = {left, gap, std::max<LONG>(left, client.right - gap), gap + height};
    address_.MoveWindow(left + 2, gap + (height - address_height) / 2,
                        std::max<int>(0, address_box_.right - left - 4), address_height);
    content_.MoveWindow(0, bar_height, client.right,
                        std::max<int>(0, client.bottom - bar_height - status_height));
    control_.resize();
}

void browser_window::paint()
{
    PAINTSTRUCT state = {};
    const HDC dc = ::BeginPaint(m_hWnd, &state);
    RECT client = {};
    GetClientRect(&client);
    fill(dc, {0, 0, client.right, bar_height}, bar_color);
    fill(dc, {0, bar_height - 1, client.right, bar_height}, edge_color);
    fill(dc, address_box_, edge_color);
    RECT inside = address_box_;
    InflateRect(&inside, -1, -1);
    fill(dc, inside, RGB(255, 255, 255));
    RECT status = {0, client.bottom - status_height, client.right, client.bottom};
    fill(dc, status, bar_color);
    fill(dc, {0, status.top, client.right, status.top + 1}, edge_color);
    status.left += gap;
    const HGDIOBJ old = SelectObject(dc, small_font_.get());
    SetBkMode(dc, TRANSPARENT);
    SetTextColor(dc, text_color);
    DrawTextW(dc, status_.c_str(), -1, &status, DT_VCENTER | DT_SINGLELINE | DT_NOPREFIX | DT_END_ELLIPSIS);
    SelectObject(dc, old);
    ::EndPaint(m_hWnd, &state);
}

void browser_window::draw_button(const DRAWITEMSTRUCT& item) const
{
    std::array<wchar_t, 8> label = {};
    GetWindowTextW(item.hwndItem, label.data(), static_cast<int>(label.size()));
    fill(item.hDC, item.rcItem, (item.itemState & ODS_SELECTED) != 0 ? pressed_color : button_color);
    const HGDIOBJ old = SelectObject(item.hDC, symbol_font_.get());
    SetBkMode(item.hDC, TRANSPARENT);
    SetTextColor(item.hDC, (item.itemState & ODS_DISABLED) != 0 ? faint_color : text_color);
    RECT place = item.rcItem;
    DrawTextW(item.hDC, label.data(), -1, &place, DT_CENTER | DT_VCENTER | DT_SINGLELINE | DT_NOPREFIX);
    SelectObject(item.hDC, old);
}

void browser_window::on_command(int id)
{
    switch (id) {
    case id_back:
        control_.go_back();
        break;
    case id_forward:
        control_.go_forward();
        break;
    case id_reload:
        control_.reload();
        break;
    default:
        break;
    }
}

void browser_window::go_to(const std::wstring& address)
{
    print_line(stdout, L"opening " + address);
    const HRESULT hr = control_.navigate(address);
    if (FAILED(hr))
        end_watch(false, L"the browser does not take the address: " + hexadecimal(hr));
}

// Loads the helper objects as a browser does for each tab.
bool browser_window::load_helpers()
{
    CComObject<tab_browser>* tab = nullptr;
    HRESULT hr = CComObject<tab_browser>::CreateInstance(&tab);
    tab_ = tab;
    if (SUCCEEDED(hr))
        hr = tab_->open(control_.browser());
    if (FAILED(hr)) {
        print_line(stderr, L"no tab for the helper objects: " + hexadecimal(hr));
        DestroyWindow();
        return false;
    }
    const std::size_t count = helpers_.load(static_cast<IWebBrowser2*>(tab_));
    print_line(stdout, L"helper objects loaded: " + std::to_wstring(count));
    return true;
}

void browser_window::close_control()
{
    if (tab_) {
        tab_->quit();
        helpers_.unload();
        tab_->close();
        tab_.Release();
    }
    control_.close();
}

bool browser_window::translate_key(MSG& message)
{
    if (message.message == WM_KEYDOWN && message.hwnd == address_.m_hWnd && message.wParam == VK_RETURN) {
        std::wstring address(static_cast<std::size_t>(GetWindowTextLengthW(address_)), L'\0');
        GetWindowTextW(address_, address.data(), static_cast<int>(address.size() + 1));
        if (!address.empty()) {
            go_to(address);
            control_.focus();
        }
        return true;
    }
    return control_.translate_key(message);
}

void browser_window::on_title(const std::wstring& title)
{
    if (!title.empty())
        ::SetWindowTextW(m_hWnd, (title + L" - Quill Browser").c_str());
}

void browser_window::on_status(const std::wstring& text)
{
    status_ = text;
    RECT client = {};
    GetClientRect(&client);
    const RECT status = {0, client.bottom - status_height, client.right, client.bottom};
    ::InvalidateRect(m_hWnd, &status, FALSE);
}

void browser_window::on_navigate(const std::wstring& address)
{
    on_status(L"Opening " + address);
    ::SetWindowTextW(address_, address.c_str());
}

void browser_window::on_failure(const std::wstring& address, long status)
{
    end_watch(false, address + L" cannot be opened: " + hexadecimal(status));
}

void browser_window::on_new_window(const std::wstring& address)
{
    std::array<wchar_t, MAX_PATH> program = {};
    GetModuleFileNameW(nullptr, program.data(), static_cast<DWORD>(program.size()));
    const std::wstring arguments = L"\"" + address + L"\"";
    ShellExecuteW(m_hWnd, L"open", program.data(), arguments.c_str(), nullptr, SW_SHOWNORMAL);
}

void browser_window::on_command_state(bool back, bool enabled)
{
    EnableWindow(GetDlgItem(m_hWnd, back ? id_back : id_forward), enabled);
}

bool browser_window::handle(UINT message, WPARAM wparam, LPARAM lparam, LRESULT& result)
{
    switch (message) {
    case WM_CREATE:
        result = create_children() ? 0 : -1;
        return true;
    case WM_SIZE:
        lay_out();
        return true;
    case WM_PAINT:
        paint();
        return true;
    case WM_ERASEBKGND:
        result = 1;
        return true;
    case WM_DRAWITEM:
        draw_button(*reinterpret_cast<const DRAWITEMSTRUCT*>(lparam));
        return true;
    case WM_COMMAND:
        on_command(LOWORD(wparam));
        return true;
    case WM_TIMER:
        watch();
        return true;
    case WM_CLOSE:
        close_control();
        DestroyWindow();
        return true;
    case WM_DESTROY:
        close_control();
        PostQuitMessage(0);
        return true;
    default:
        return false;
    }
}

BOOL browser_window::ProcessWindowMessage(HWND, UINT message, WPARAM wparam, LPARAM lparam, LRESULT& result,
                                          DWORD)
{
    result = 0;
    return handle(message, wparam, lparam, result) ? TRUE : FALSE;
}

} // namespace quill
