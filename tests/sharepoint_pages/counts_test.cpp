// What a tab with the helper object leaves behind: nothing.
#include "stand_ins/html_engine/identifiers.h"
#include "tests/sharepoint_pages/library_site.h"
#include "tests/support/process_resources.h"
#include "tests/support/wait.h"

#include <gmock/gmock.h>

namespace quill::test {
namespace {

// The system's own threads may have gone meanwhile.
bool holds_no_more(const process_resources& after, const process_resources& before)
{
    return after.kernel_handles <= before.kernel_handles && after.gdi_objects <= before.gdi_objects &&
           after.menus <= before.menus && after.threads <= before.threads && after.windows <= before.windows;
}

class Counts : public LibrarySite
{
protected:
    Counts() { serve_library("2013"); }

    // A tab's life: a library, a click and a cancelled navigation, an ordinary page, the end.
    void live(std::size_t starts_so_far)
    {
        helper_tab tab;
        show_and_paint(tab, server.url(library_page));
        tab.click(L"bracket");
        tab.click(L"care");
        editor.starts(starts_so_far + 2);
        show_and_paint(tab, server.url(L"/parts.html"));
        show_and_paint(tab, server.url(library_page));
        if (starts_so_far % 4 == 0)
            tab.release_helper(); // as a browser that never takes the site away
    }

private:
    // What the system makes for its first painting must not come by chance.
    static void show_and_paint(helper_tab& tab, const std::wstring& address)
    {
        tab.show(address);
        EXPECT_TRUE(wait_until([&] { return tab.browser().find_window(page_window_class) != nullptr; }));
        pump_messages();
        RedrawWindow(tab.browser().window(), nullptr, nullptr,
                     RDW_INVALIDATE | RDW_FRAME | RDW_UPDATENOW | RDW_ALLCHILDREN);
    }
};

// What leaks, leaks in every tab; what the system keeps for later it does not keep every time.
TEST_F(Counts, AreWhatTheyWereWhenTheTabIsClosed)
{
    constexpr DWORD settling_ms = 6'000; // the system's idle workers end after five seconds
    std::size_t starts = 0;
    const auto live_twice = [&] {
        live(starts);
        live(starts + 2);
        starts += 4;
    };
    live_twice(); // the system's engine sets itself up
    process_resources before;
    process_resources after;
    bool settled = false;
    for (int attempt = 0; attempt < 4 && !settled; ++attempt) {
        before = process_resources::now();
        live_twice();
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
