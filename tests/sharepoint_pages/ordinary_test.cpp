// Ordinary pages are the same with and without the helper object.
#include "stand_ins/html_engine/identifiers.h"
#include "tests/browser/html_page_access.h"
#include "tests/browser/page_sink.h"
#include "tests/sharepoint_pages/library_site.h"
#include "tests/support/text.h"
#include "tests/support/wait.h"

#include <gmock/gmock.h>
#include <shellapi.h>

#include <algorithm>

namespace quill::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const wchar_t* ordinary_pages[] = {L"/documents.html", L"/parts.html",     L"/saved-copy.html",
                                             L"/frames.html",    L"/contents.html",  L"/order.html",
                                             L"/broken.html",    L"/downloads.html", L"/missing"};

// The observable results of one visit.
struct visit
{
    std::vector<std::string> events;   // of the browser
    std::vector<std::string> clicks;   // as the pages' own sinks received them
    std::vector<std::string> requests; // that the server got
    std::vector<std::wstring> pages;   // markup of each
    double longest_event = 0;          // seconds that the browser waited in the helper object for one event
    double total = 0;                  // from the first event to the last
};

// Wine's engine passes a URL that it fails to bind to the scheme's application if the scheme has a "URL
// Protocol", and a refused connection fails early on a busy machine. During its lifetime the engine finds no
// application, while other programs still do.
class engine_without_applications
{
public:
    engine_without_applications() { EXPECT_EQ(delete_value(), ERROR_SUCCESS); }
    ~engine_without_applications()
    {
        constexpr wchar_t empty[] = L"";
        EXPECT_EQ(RegSetKeyValueW(HKEY_LOCAL_MACHINE, scheme, name, REG_SZ, empty, sizeof empty),
                  ERROR_SUCCESS);
    }
    engine_without_applications(const engine_without_applications&) = delete;
    engine_without_applications& operator=(const engine_without_applications&) = delete;

private:
    static constexpr const wchar_t* scheme = L"Software\\Classes\\http";
    static constexpr const wchar_t* name = L"URL Protocol";

    static LSTATUS delete_value()
    {
        const LSTATUS status = RegDeleteKeyValueW(HKEY_LOCAL_MACHINE, scheme, name);
        return status == ERROR_FILE_NOT_FOUND ? ERROR_SUCCESS : status;
    }
};

class OrdinaryPages : public LibrarySite
{
protected:
    OrdinaryPages()
    {
        server.route("/moved", http_response::redirect("/documents.html"));
        server.route("/ordered.pdf", http_response::ok("<title>Ordered</title>", "text/html"));
        server.route("/drawings.zip",
                     http_response::ok(std::string(50'000, 'z'), "application/octet-stream"));
        serve_short_page("/parts/3.html");
        for (const char* path : {"/parts/1.pdf", "/bracket.pdf", "/care.pdf"})
            serve_short_page(
                path); // its content is not tested; the end of a page's loading can be waited for
    }

    // Clicks an element and waits for the page of its link.
    void click(helper_tab& tab, visit& taken, const wchar_t* id, const wchar_t* target)
    {
        page_sink sink;
        sink.advise(tab.page());
        tab.click(id);
        sink.unadvise();
        EXPECT_TRUE(wait_until([&] { return tab.is_showing(server.url(target)); })) << to_utf8(target);
        for (const auto& event : sink.events())
            if (event.id == event_click)
                taken.clicks.push_back(to_utf8(event.type + L" " + event.source));
    }

    visit take(with_helper helper)
    {
        visit taken;
        requests_so_far();
        helper_tab tab(helper);
        for (const wchar_t* target : ordinary_pages) {
            tab.show(server.url(target));
            taken.pages.push_back(tab.markup());
        }
        tab.show(server.url(L"/moved"), server.url(L"/documents.html"));
        taken.pages.push_back(tab.markup());
        // The first server does not respond, and the second content has no viewer.
        for (const std::wstring& url : {refused_, server.url(L"/drawings.zip")}) {
            tab.go_to(url);
            EXPECT_TRUE(wait_until([&] { return tab.after.count(DISPID_NAVIGATEERROR, url) == 1; }));
        }
        tab.show(server.url(L"/parts.html"));
        click(tab, taken, L"part1", L"/parts/1.pdf");
        tab.show(server.url(L"/parts.html"));
        click(tab, taken, L"part3", L"/parts/3.html");
        tab.show(server.url(L"/saved-copy.html"));
        click(tab, taken, L"bracket", L"/bracket.pdf");
        tab.show(server.url(L"/saved-copy.html"));
        click(tab, taken, L"care", L"/care.pdf");
        tab.show(server.url(L"/order.html"));
        tab.post_to(server.url(L"/ordered.pdf"), "part=2291-B&quantity=4&send=Order");
        EXPECT_TRUE(wait_until([&] { return tab.is_showing(server.url(L"/ordered.pdf")); }));
        taken.requests = requests_at_the_end(tab);
        tab.close();

        taken.events = tab.after.lines();
        EXPECT_EQ(tab.before.lines(), taken.events);
        taken.longest_event = longest_delay(tab);
        if (!taken.events.empty())
            taken.total = tab.after.entries().back().at - tab.before.entries().front().at;
        return taken;
    }

    void open_with_default_handler() const
    {
        ShellExecuteW(nullptr, L"open", refused_.c_str(), nullptr, nullptr, SW_SHOWNORMAL);
    }

private:
    const engine_without_applications no_applications_;
    const std::wstring refused_ = http_server::refused_url(L"/parts.pdf");
};

TEST_F(OrdinaryPages, AreTheSameWithAndWithoutTheHelperObject)
{
    const visit without = take(with_helper::no);
    visit with = take(with_helper::yes);
    EXPECT_EQ(with.events, without.events);
    EXPECT_EQ(with.clicks, without.clicks);
    EXPECT_EQ(with.requests, without.requests);
    EXPECT_EQ(with.pages, without.pages);
    EXPECT_GT(without.events.size(), 50u);
    EXPECT_THAT(without.clicks, ElementsAre("click part1", "click part3", "click bracket", "click care"));
    EXPECT_THAT(editor.starts(0), IsEmpty());
    open_with_default_handler();
    EXPECT_EQ(editor.starts(1).size(), 1u); // a start is recorded

    // No event spends more than a fraction of a page's loading time in the helper object. The machine may be
    // busy in one run, but not in each.
    const auto pages_shown =
        std::count_if(without.events.begin(), without.events.end(), [](const auto& line) {
            return line.starts_with(std::to_string(DISPID_DOCUMENTCOMPLETE));
        });
    const double bound = without.total / static_cast<double>(pages_shown) / 4;
    for (int again = 0; again < 3 && with.longest_event >= bound; ++again)
        with = take(with_helper::yes);
    EXPECT_LT(with.longest_event, bound);
}

} // namespace
} // namespace quill::test
