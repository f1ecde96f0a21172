// Polling for the document or page that the window must show, the click and the screenshot.
#include "stand_ins/browser/browser_window.h"
#include "stand_ins/browser/print_line.h"
#include "stand_ins/browser/shown_page.h"
#include "stand_ins/common/window_picture.h"

#include <utility>

namespace quill {
namespace {

// The last segment of a URL's path, for the title.
std::wstring name_of(const std::wstring& address)
{
    const std::wstring path = address.substr(0, address.find_first_of(L"?#"));
    const std::size_t slash = path.find_last_of(L"/\\");
    const std::wstring name = slash == std::wstring::npos ? path : path.substr(slash + 1);
    return name.empty() ? address : name;
}

} // namespace

// Polled because the control may stop firing events as soon as a document has queried for the shell browser
// service.
void browser_window::follow_address()
{
    const std::wstring address = control_.address();
    if (address.empty() || address == last_address_)
        return;
    last_address_ = address;
    if (GetFocus() != address_.m_hWnd)
        ::SetWindowTextW(address_, address.c_str());
    ::SetWindowTextW(m_hWnd, (name_of(address) + L" - Quill Browser").c_str());
}

// The state of the expected document or page.
shown_document browser_window::current_document()
{
    if (!options_.page)
        return summarise(find_shown_documents(content_), options_.documents);
    shown_document page;
    if (const CComPtr<IHTMLDocument2> complete = complete_page_of(control_.browser())) {
        page.state = viewer_state::shown;
        page.text = title_of(complete);
    }
    return page;
}

void browser_window::click_first()
{
    const CComPtr<IHTMLDocument2> page = complete_page_of(control_.browser());
    if (!page)
        return;
    clicked_ = true;
    print_line(stdout, L"clicking on " + options_.click);
    if (!click_on(page, options_.click))
        end_watch(false, L"the page has no element " + options_.click);
}

void browser_window::watch()
{
    follow_address();
    if (!watching_)
        return;
    const bool waits_for_click = !options_.click.empty() && !clicked_;
    const shown_document document = waits_for_click ? shown_document() : current_document();
    if (document.state == viewer_state::shown)
        end_watch(true, document.text);
    else if (document.state == viewer_state::failed)
        end_watch(false, document.text);
    else if (GetTickCount64() > deadline_)
        end_watch(false,
                  (options_.page || waits_for_click ? L"no page appeared in " : L"no document appeared in ") +
                      std::to_wstring(options_.wait.count()) + L" s");
    else if (waits_for_click)
        click_first();
}

void browser_window::end_watch(bool shown, const std::wstring& why)
{
    if (!std::exchange(watching_, false))
        return;
    on_status(why);
    print_line(shown ? stdout : stderr, (shown ? L"shown: " : L"not shown: ") + why);
    succeeded_ = shown;
    if (!options_.screenshot.empty()) {
        RedrawWindow(m_hWnd, nullptr, nullptr, RDW_INVALIDATE | RDW_UPDATENOW | RDW_ALLCHILDREN);
        const bool saved = save_window_picture(m_hWnd, options_.screenshot);
        print_line(saved ? stdout : stderr,
                   (saved ? L"picture of the window: " : L"the picture could not be saved: ") +
                       options_.screenshot);
        succeeded_ = succeeded_ && saved;
    }
    if (options_.exit)
        ::PostMessageW(m_hWnd, WM_CLOSE, 0, 0);
}

} // namespace quill
