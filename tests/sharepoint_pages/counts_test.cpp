// What a tab with the helper object leaves behind: nothing.
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
        tab.show(server.url(library_page));
        tab.click(L"bracket");
        tab.click(L"care");
        editor.starts(starts_so_far + 2);
        tab.show(server.url(L"/parts.html"));
        tab.show(server.url(library_page));
        if (starts_so_far % 4 == 0)
            tab.release_helper(); // as a browser that never takes the site away
    }
};

TEST_F(Counts, AreWhatTheyWereWhenTheTabIsClosed)
{
    live(0); // the system's engine sets itself up
    live(2);
    EXPECT_TRUE(pages.all_gone());
    EXPECT_TRUE(server.wait_idle(default_deadline_ms));
    const process_resources before = process_resources::now();
    for (std::size_t starts = 4; starts < 10; starts += 2)
        live(starts);
    EXPECT_TRUE(pages.all_gone());
    EXPECT_TRUE(module.can_unload());
    EXPECT_TRUE(server.wait_idle(default_deadline_ms));
    process_resources after;
    EXPECT_TRUE(wait_until([&] {
        after = process_resources::now();
        return holds_no_more(after, before);
    })) << "before: "
        << before << "\nafter: " << after;
}

} // namespace
} // namespace quill::test
