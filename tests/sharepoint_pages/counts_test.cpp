// Resources of the process before and after a tab with the helper object.
#include "stand_ins/html_engine/identifiers.h"
#include "tests/sharepoint_pages/library_site.h"
#include "tests/support/process_resources.h"
#include "tests/support/wait.h"

#include <gmock/gmock.h>

namespace quill::test {
namespace {

// Threads of the system may have ended meanwhile.
bool holds_no_more(const process_resources& after, const process_resources& before)
{
    return after.kernel_handles <= before.kernel_handles && after.gdi_objects <= before.gdi_objects &&
           after.menus <= before.menus && after.threads <= before.threads && after.windows <= before.windows;
}

class Counts : public LibrarySite
{
protected:
    Counts() { serve_library("2013"); }

    // Opens a tab, a library, a click, a cancelled navigation and an ordinary page, and closes the tab.
    void open_and_close_tab(std::size_t starts_so_far)
    {
        helper_tab tab;
        show_and_paint(tab, server.url(library_page));
        tab.click(L"bracket");
        tab.click(L"care");
        editor.starts(starts_so_far + 2);
        show_and_paint(tab, server.url(L"/parts.html"));
        show_and_paint(tab, server.url(library_page));
        if (starts_so_far % 4 == 0)
            tab.release_helper(); // a browser that does not call SetSite(nullptr)
    }

private:
    // Paints in each run, because the first painting allocates resources in the system.
    static void show_and_paint(helper_tab& tab, const std::wstring& url)
    {
        tab.show(url);
        EXPECT_TRUE(wait_until([&] { return tab.browser().find_window(page_window_class) != nullptr; }));
        pump_messages();
        RedrawWindow(tab.browser().window(), nullptr, nullptr,
                     RDW_INVALIDATE | RDW_FRAME | RDW_UPDATENOW | RDW_ALLCHILDREN);
    }
};

// A leak occurs in each tab; what the system caches it does not allocate each time.
TEST_F(Counts, AreRestoredWhenTheTabIsClosed)
{
    constexpr DWORD settling_ms = 6'000; // idle worker threads of the system end after five seconds
    std::size_t starts = 0;
    const auto open_and_close_two_tabs = [&] {
        open_and_close_tab(starts);
        open_and_close_tab(starts + 2);
        starts += 4;
    };
    open_and_close_two_tabs(); // includes the set-up of the system's engine
    process_resources before;
    process_resources after;
    bool settled = false;
    for (int attempt = 0; attempt < 4 && !settled; ++attempt) {
        before = process_resources::now();
        open_and_close_two_tabs();
        EXPECT_TRUE(pages.all_gone());
        EXPECT_TRUE(module.can_unload());
        settled = wait_until(
            [&] {
                after = process_resources::now();
                return holds_no_more(after, before);
            },
            settling_ms);
    }
    EXPECT_TRUE(settled) << "before: " << before << "\nafter: " << after;
}

} // namespace
} // namespace quill::test
