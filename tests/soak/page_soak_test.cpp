// SharePoint pages in tabs of the system's browser engine, loaded and clicked many times in one process,
// without and with the helper object: the growth of the engine itself is the limit.
#include "tests/sharepoint_pages/library_site.h"
#include "tests/soak/resource_samples.h"
#include "tests/soak/soak_settings.h"
#include "tests/support/wait.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace quill::soak {
namespace {

constexpr std::size_t visits_of_a_tab = 8; // each loads two pages
constexpr std::size_t short_visits = 6 * visits_of_a_tab;
constexpr std::size_t warm_up_tabs = 2;
// An editor takes much longer to start than a page to load.
constexpr std::size_t tabs_for_an_editor = 2;

std::size_t tabs()
{
    return std::max<std::size_t>(
        1, static_cast<std::size_t>(number_setting(L"QUILL_SOAK_VISITS", short_visits)) / visits_of_a_tab);
}

class PageSoak : public test::LibrarySite
{
protected:
    PageSoak() { serve_library("2016"); }

    // Opens a tab, visits the library some times and closes it.
    void visit_library(test::with_helper helper, std::size_t number)
    {
        if (testing::Test::HasFailure())
            return;
        test::helper_tab tab(helper);
        for (std::size_t i = 0; i < visits_of_a_tab; ++i)
            visit(tab);
        if (helper == test::with_helper::yes && number % tabs_for_an_editor == 0)
            open_in_editor(tab);
        tab.close();
        server.forget_requests();
    }

private:
    // The library, and by a click the folder in it.
    void visit(test::helper_tab& tab)
    {
        tab.show(server.url(test::library_page));
        tab.click(L"archive");
        EXPECT_TRUE(test::wait_until([&] { return tab.is_showing(folder_); }));
    }
    // By a click and by a navigation; the tab stays at its URL.
    void open_in_editor(test::helper_tab& tab)
    {
        tab.click(L"bracket");
        tab.go_to(file(L"Typed.pdf"));
        editors_ += 2;
        EXPECT_EQ(editor.starts(editors_).size(), editors_);
        EXPECT_TRUE(tab.is_showing(folder_));
    }

    const std::wstring folder_ = server.url(std::wstring(test::library_page) +
                                            L"?RootFolder=%2Fsites%2Fworkshop%2FService%20manuals%2FArchive");
    std::size_t editors_ = 0;
};

TEST_F(PageSoak, LibrariesWithClicks)
{
    expect_flat([&] {
        sample_table bare("tabs of 16 pages through the engine, without the helper object");
        run_cycles(bare, warm_up_tabs, tabs(),
                   [&](std::size_t number) { visit_library(test::with_helper::no, number); });
        sample_table table("the same tabs with the helper object");
        run_cycles(table, warm_up_tabs, tabs(),
                   [&](std::size_t number) { visit_library(test::with_helper::yes, number); });
        return growth_beyond(bare, table, 1);
    });
    EXPECT_TRUE(pages.all_gone());
    EXPECT_TRUE(module.can_unload());
}

} // namespace
} // namespace quill::soak
