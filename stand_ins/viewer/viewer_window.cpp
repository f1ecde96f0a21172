#include "stand_ins/viewer/viewer_window.h"

#include <shlwapi.h>
#include <windowsx.h>

#include <algorithm>
#include <memory>
#include <utility>

namespace quill {
namespace {

constexpr UINT_PTR poll_timer = 1;
constexpr UINT poll_interval_ms = 20;

// Posted by the window to itself: the host may destroy the viewer inside a request, so no function of the
// pane may be on the stack.
constexpr UINT message_follow_link = WM_APP + 1;
constexpr UINT message_command = WM_APP + 2; // wParam: a strip_command
constexpr UINT message_report = WM_APP + 3;

constexpr int key_step = 48; // pixels

bool control_is_down()
{
    return GetKeyState(VK_CONTROL) < 0;
}

} // namespace

viewer_window::viewer_window() : pane_(*this)
{
    _pAtlModule->Lock();
}

viewer_window::~viewer_window()
{
    _pAtlModule->Unlock();
}

viewer_window* viewer_window::create(HWND parent, const RECT& place)
{
    std::unique_ptr<viewer_window> window(new viewer_window());
    RECT bounds = place;
    constexpr DWORD style = WS_CHILD | WS_VISIBLE | WS_CLIPCHILDREN | WS_CLIPSIBLINGS;
    if (window->Create(parent, bounds, nullptr, style) == nullptr)
        return nullptr;
    window->owns_itself_ = true;
    return window.release();
}

void viewer_window::OnFinalMessage(HWND)
{
    if (owns_itself_)
        delete this;
}

bool viewer_window::open(const std::wstring& path)
{
    const file_handle file(CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_DELETE,
                                       nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file)
        return false;
    file_name_ = PathFindFileNameW(path.c_str());
    view_ = {};
    state_ = viewer_state::empty;
    renderer_.open(path);
    pane_.show_message(L"Opening " + file_name_);
    ask_for(view_);
    return true;
}

void viewer_window::go_to_page(std::size_t page)
{
    ask_for({page, view_.zoom});
}

void viewer_window::set_zoom(double zoom)
{
    ask_for({view_.page, clamped_zoom(zoom)});
}

void viewer_window::print()
{
    host_.log(L"viewer: " + file_name_ + L", there is no printer here, failed: ", true);
}

void viewer_window::ask_for(const page_view& view, bool from_bottom)
{
    if (file_name_.empty() || state_ == viewer_state::failed)
        return;
    view_ = view;
    if (!renderer_.pages().empty())
        view_.page = std::min(view_.page, renderer_.pages().size() - 1);
    from_bottom_ = from_bottom;
    has_picture_ = false;
    set_state(viewer_state::working, L"page " + std::to_wstring(view_.page + 1));
    renderer_.request(view_);
    ::SetTimer(m_hWnd, poll_timer, poll_interval_ms, nullptr);
}

void viewer_window::poll_renderer()
{
    switch (renderer_.poll()) {
    case document_renderer::poll_result::none:
        break;
    case document_renderer::poll_result::pages:
        view_.page = std::min(view_.page, renderer_.pages().size() - 1);
        break;
    case document_renderer::poll_result::picture:
        has_picture_ = true;
        pane_.show_page(renderer_.take_picture(), from_bottom_);
        break;
    case document_renderer::poll_result::links:
        pane_.show_links(renderer_.links());
        break;
    case document_renderer::poll_result::failure:
        pane_.show_message(renderer_.failure());
        set_state(viewer_state::failed, renderer_.failure());
        PostMessageW(message_report, 0, 0);
        break;
    }
    if (!renderer_.busy() && m_hWnd != nullptr)
        ::KillTimer(m_hWnd, poll_timer);
}

void viewer_window::set_state(viewer_state state, std::wstring status)
{
    state_ = state;
    status_ = std::move(status);
    // The text is set first: another process that reads the state then reads the text.
    ::SetWindowTextW(m_hWnd, status_.c_str());
    ::SetPropW(m_hWnd, viewer_state_property, reinterpret_cast<HANDLE>(static_cast<LONG_PTR>(state)));
    RECT strip = {0, 0, 0, strip_height};
    strip.right = MAXSHORT;
    ::InvalidateRect(m_hWnd, &strip, FALSE);
}

void viewer_window::on_page_painted()
{
    // The previous page may be repainted while the requested one is being rendered.
    if (state_ != viewer_state::working || !has_picture_)
        return;
    set_state(viewer_state::shown, strip_status(view_, renderer_.pages().size()));
    PostMessageW(message_report, 0, 0);
}

void viewer_window::on_link(const page_link& link, bool new_window)
{
    if (link.target.empty()) {
        ask_for({link.page, view_.zoom});
        return;
    }
    link_ = link.target;
    PostMessageW(message_follow_link, new_window ? 1 : 0, 0);
}

void viewer_window::on_turn_page(bool forwards)
{
    if (forwards && view_.page + 1 < renderer_.pages().size())
        ask_for({view_.page + 1, view_.zoom});
    else if (!forwards && view_.page > 0)
        ask_for({view_.page - 1, view_.zoom}, true);
}

void viewer_window::on_step_zoom(bool upwards)
{
    set_zoom(stepped_zoom(view_.zoom, upwards));
}

void viewer_window::on_key(WPARAM key)
{
    const int screenful = pane_.page_step();
    switch (key) {
    case VK_NEXT:
        if (!pane_.scroll_by(0, screenful))
            on_turn_page(true);
        break;
    case VK_PRIOR:
        if (!pane_.scroll_by(0, -screenful))
            on_turn_page(false);
        break;
    case VK_DOWN:
        pane_.scroll_by(0, key_step);
        break;
    case VK_UP:
        pane_.scroll_by(0, -key_step);
        break;
    case VK_RIGHT:
        pane_.scroll_by(key_step, 0);
        break;
    case VK_LEFT:
        pane_.scroll_by(-key_step, 0);
        break;
    case VK_HOME:
        go_to_page(0);
        break;
    case VK_END:
        if (!renderer_.pages().empty())
            go_to_page(renderer_.pages().size() - 1);
        break;
    case VK_ADD:
    case VK_OEM_PLUS:
        on_step_zoom(true);
        break;
    case VK_SUBTRACT:
    case VK_OEM_MINUS:
        on_step_zoom(false);
        break;
    case 'S':
        if (control_is_down())
            PostMessageW(message_command, static_cast<WPARAM>(strip_command::save_as), 0);
        break;
    case 'P':
        if (control_is_down())
            print();
        break;
    default:
        break;
    }
}

void viewer_window::execute(strip_command command)
{
    switch (command) {
    case strip_command::previous_page:
        if (view_.page > 0)
            go_to_page(view_.page - 1);
        break;
    case strip_command::next_page:
        go_to_page(view_.page + 1);
        break;
    case strip_command::zoom_out:
    case strip_command::zoom_in:
        on_step_zoom(command == strip_command::zoom_in);
        break;
    case strip_command::save_as:
        host_.save_as();
        break;
    case strip_command::none:
        break;
    }
}

void viewer_window::lay_out()
{
    RECT client = {};
    ::GetClientRect(m_hWnd, &client);
    ::MoveWindow(pane_.m_hWnd, 0, strip_height, client.right, std::max<LONG>(0, client.bottom - strip_height),
                 TRUE);
}

bool viewer_window::handle(UINT message, WPARAM wparam, LPARAM lparam, LRESULT& result)
{
    switch (message) {
    case WM_CREATE: {
        RECT place = {};
        if (pane_.Create(m_hWnd, place, nullptr, WS_CHILD | WS_VISIBLE | WS_HSCROLL | WS_VSCROLL) == nullptr)
            result = -1;
        return true;
    }
    case WM_SIZE:
        lay_out();
        return true;
    case WM_PAINT:
        strip_.paint(m_hWnd, file_name_, state_ == viewer_state::failed ? L"not shown" : status_);
        return true;
    case WM_ERASEBKGND:
        result = 1;
        return true;
    case WM_TIMER:
        poll_renderer();
        return true;
    case WM_SETFOCUS:
        ::SetFocus(pane_.m_hWnd);
        return true;
    case WM_KEYDOWN:
        on_key(wparam);
        return true;
    case WM_LBUTTONUP:
        execute(strip_command_at({GET_X_LPARAM(lparam), GET_Y_LPARAM(lparam)}));
        return true;
    case WM_DESTROY:
        ::RemovePropW(m_hWnd, viewer_state_property);
        return false;
    case message_follow_link: {
        // Copied: the host may destroy this object inside the call.
        const std::wstring link = link_;
        host_.open_link(link, wparam != 0);
        return true;
    }
    case message_command:
        execute(static_cast<strip_command>(wparam));
        return true;
    case message_report:
        host_.log(L"viewer " + std::to_wstring(host_.instance()) + L": " + file_name_ + L", " + status_ +
                      L", failed: ",
                  state_ == viewer_state::failed);
        return true;
    default:
        return false;
    }
}

BOOL viewer_window::ProcessWindowMessage(HWND, UINT message, WPARAM wparam, LPARAM lparam, LRESULT& result,
                                         DWORD)
{
    result = 0;
    return handle(message, wparam, lparam, result) ? TRUE : FALSE;
}

} // namespace quill
