// The child window that shows one rendered page with its links and scroll bars, or a message instead.
#pragma once

#include "stand_ins/viewer/document_facts.h"
#include "stand_ins/viewer/page_picture.h"

#include <atlbase.h>
#include <atlwin.h>

#include <string>
#include <vector>

namespace quill {

// Notifications to the pane's owner, which must not destroy the pane inside these calls.
class page_pane_owner
{
public:
    virtual void on_page_painted() = 0;
    virtual void on_link(const page_link& link, bool new_window) = 0;
    virtual void on_turn_page(bool forwards) = 0;
    virtual void on_step_zoom(bool upwards) = 0;
    virtual void on_key(WPARAM key) = 0;

protected:
    ~page_pane_owner() = default;
};

class page_pane : public CWindowImpl<page_pane>
{
public:
    DECLARE_WND_CLASS_EX(L"QuillPDFPage", 0, -1)

    explicit page_pane(page_pane_owner& owner);

    // Shows a page scrolled to its top, or to its bottom if the user turned back from the next page.
    void show_page(page_picture picture, bool from_bottom);
    void show_links(std::vector<page_link> links);

    // Shows a message instead of a page.
    void show_message(std::wstring message);

    // Scrolls by pixels. False if the page was already at that edge.
    bool scroll_by(int across, int down);
    int page_step() const; // pixels to scroll for Page Up and Page Down

    BOOL ProcessWindowMessage(HWND window, UINT message, WPARAM wparam, LPARAM lparam, LRESULT& result,
                              DWORD map = 0) override;

private:
    bool handle(UINT message, WPARAM wparam, LPARAM lparam, LRESULT& result);
    void paint();
    void draw(HDC dc, const RECT& area);
    void draw_message(HDC dc, RECT area);
    void update_scroll_bars();
    void on_scroll_bar(int bar, WORD request);
    void on_wheel(WPARAM wparam);
    const page_link* link_at(POINT point) const;
    SIZE area() const;

    page_pane_owner& owner_;
    page_picture picture_;
    std::vector<page_link> links_;
    std::wstring message_;
    gdi_object font_;
    POINT scroll_ = {};
    int wheel_rest_ = 0; // accumulated wheel movement of less than one step
};

} // namespace quill
