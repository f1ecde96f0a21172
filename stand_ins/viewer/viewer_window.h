// The viewer's window: a strip of buttons above the pane with the page. Shows one document at a time and
// implements the automation methods.
#pragma once

#include "stand_ins/common/viewer_state.h"
#include "stand_ins/viewer/document_renderer.h"
#include "stand_ins/viewer/host_requests.h"
#include "stand_ins/viewer/page_pane.h"
#include "stand_ins/viewer/viewer_layout.h"
#include "stand_ins/viewer/viewer_strip.h"

#include <atlbase.h>
#include <atlwin.h>

#include <string>

namespace quill {

class viewer_window : public CWindowImpl<viewer_window>, private page_pane_owner
{
public:
    DECLARE_WND_CLASS_EX(viewer_window_class, 0, -1)

    ~viewer_window();

    // Creates the window as a child of `parent`; null on failure. The object deletes itself after its window
    // is destroyed, which a host may do inside a request, so the pointer is valid only until then.
    static viewer_window* create(HWND parent, const RECT& place);

    // False if the file cannot be read. Whether it can be rendered is determined later.
    bool open(const std::wstring& path);
    void go_to_page(std::size_t page);
    void set_zoom(double zoom);
    void print();
    void set_host(const host_requests& host) { host_ = host; }

    BOOL ProcessWindowMessage(HWND window, UINT message, WPARAM wparam, LPARAM lparam, LRESULT& result,
                              DWORD map = 0) override;
    void OnFinalMessage(HWND window) override;

private:
    viewer_window();

    bool handle(UINT message, WPARAM wparam, LPARAM lparam, LRESULT& result);
    void lay_out();
    void poll_renderer();
    void ask_for(const page_view& view, bool from_bottom = false);
    void execute(strip_command command);
    void set_state(viewer_state state, std::wstring status);

    void on_page_painted() override;
    void on_link(const page_link& link, bool new_window) override;
    void on_turn_page(bool forwards) override;
    void on_step_zoom(bool upwards) override;
    void on_key(WPARAM key) override;

    viewer_strip strip_;
    page_pane pane_;
    document_renderer renderer_;
    host_requests host_;
    std::wstring file_name_;
    std::wstring status_;
    page_view view_;
    bool from_bottom_ = false; // the user turned back from the next page
    bool has_picture_ = false; // the pane shows the page in view_
    bool owns_itself_ = false;
    viewer_state state_ = viewer_state::empty;
    std::wstring link_; // the clicked link, for message_follow_link
};

} // namespace quill
