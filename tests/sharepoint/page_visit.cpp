#include "tests/sharepoint/page_visit.h"

#include "platform/unique_handle.h"
#include "tests/sharepoint/recorded_launches.h"

#include <gmock/gmock.h>

#include <functional>
#include <ostream>
#include <thread>

namespace quill::test {
namespace {

class visitor
{
public:
    visitor(fake_tab& tab, IObjectWithSite* helper, bool has_element2, const wchar_t* href)
        : tab_(tab), helper_(helper), browser_(make_fake<fake_browser>(tab)),
          page_(sharepoint_page(tab, L"http://h/"))
    {
        page_->head->has_element2 = has_element2;
        page_->is_head_first = has_element2;
        page_->add_to_head({.tag = L"SCRIPT", .src = L"/x.js"});
        link_ = &page_->add_to_body(list_link(href));
        other_link_ = &page_->add_to_body(
            {.tag = L"A", .outer_html = L"<a onclick=\"PdfFile.OpenDocuments()\">", .href = L"/y.pdf"});
        browser_->document = page_->dispatch();
    }

    visit_record visit()
    {
        recorded_launches() = {};
        once(visit_step::attach, [&] { return event_outcome{helper_->SetSite(browser_->unknown())}; });
        twice(visit_step::other_navigation, [&] { return navigate(L"http://h/other"); });
        twice(visit_step::complete, [&] { return complete(); });
        twice(visit_step::click, [&] { return click(); });
        twice(visit_step::ready, [&] { return become_ready(); });
        const ULONGLONG begin = GetTickCount64();
        twice(visit_step::navigation, [&] { return navigate(L"http://h/z.pdf"); });
        record_.may_open_twice = GetTickCount64() - begin >= 100;
        once(visit_step::quit, [&] { return quit(); });
        once(visit_step::detach, [&] { return event_outcome{helper_->SetSite(nullptr)}; });
        if (!tab_.has_failed() && !tab_.has_interrupted()) {
            EXPECT_EQ(browser_->events().sinks(), 0u);
            EXPECT_EQ(page_->events().sinks(), 0u);
        }
        record_.opened = recorded_launches().urls();
        record_.is_rewritten = other_link_->outer_html() == L"<a >";
        record_.calls = tab_.calls();
        return record_;
    }

private:
    using outcome = std::optional<event_outcome>;
    using event = std::function<outcome()>;

    void once(visit_step step, const event& fire)
    {
        const auto place = static_cast<std::size_t>(step);
        record_.calls_before[place] = tab_.calls().size();
        record_.reference_calls_before[place] = tab_.reference_calls();
        record_.outcomes[place] = fire_counting(fire, record_.opened_in[place]);
        record_.reference_calls_before_repeat[place] = tab_.reference_calls();
        record_.calls_before_repeat[place] = tab_.calls().size();
    }
    void twice(visit_step step, const event& fire)
    {
        once(step, fire);
        const auto place = static_cast<std::size_t>(step);
        record_.repeats[place] = fire_counting(fire, record_.opened_in_repeat[place]);
    }
    outcome fire_counting(const event& fire, std::size_t& opened)
    {
        const std::size_t before = recorded_launches().urls().size();
        const bool had_interrupted = tab_.has_interrupted();
        const outcome result = fire();
        opened = recorded_launches().urls().size() - before;
        if (!had_interrupted && tab_.has_interrupted())
            expect_lock_is_free();
        return result;
    }

    // An event on another thread waits for the sink's lock. The fakes are not thread-safe, so this one waits
    // too.
    void expect_lock_is_free()
    {
        if (browser_->events().sinks() != 1)
            return;
        const unique_handle has_returned(CreateEventW(nullptr, TRUE, FALSE, nullptr));
        std::thread other([browser = browser_.p, returned = has_returned.get()] {
            EXPECT_EQ(browser->before_navigate(L"http://h/other").code, S_OK);
            SetEvent(returned);
        });
        if (WaitForSingleObject(has_returned.get(), 10'000) == WAIT_OBJECT_0) {
            other.join();
            return;
        }
        other.detach();
        FAIL() << "the sink's lock is held after the fault";
    }

    outcome navigate(const wchar_t* url)
    {
        if (browser_->events().sinks() != 1)
            return std::nullopt;
        const navigation_result result = browser_->before_navigate(url);
        return event_outcome{result.code, result.cancel == VARIANT_TRUE};
    }
    outcome complete()
    {
        if (browser_->events().sinks() != 1)
            return std::nullopt;
        return event_outcome{browser_->document_complete(L"http://h/")};
    }
    outcome click()
    {
        if (page_->events().sinks() != 1)
            return std::nullopt;
        const auto source = make_fake<fake_event>(tab_, link_);
        const event_result result = page_->click(source);
        // A failure is returned as true; the engine evaluates the event's own return value.
        const bool is_cancelled = is_bool(result.value, false) || !source->is_untouched();
        if (FAILED(result.code))
            EXPECT_TRUE(result.value.vt == VT_EMPTY && source->is_untouched());
        else if (!tab_.has_interrupted())
            EXPECT_TRUE(is_bool(result.value, false) ||
                        (is_bool(result.value, true) && source->is_untouched()));
        return event_outcome{result.code, is_cancelled};
    }
    outcome become_ready()
    {
        if (page_->events().sinks() != 1)
            return std::nullopt;
        return event_outcome{page_->change_ready_state(L"complete").code};
    }
    outcome quit()
    {
        if (browser_->events().sinks() != 1)
            return std::nullopt;
        browser_->quit();
        return event_outcome{};
    }

    fake_tab& tab_;
    IObjectWithSite* const helper_;
    const CComPtr<fake_browser> browser_;
    const CComPtr<fake_document> page_;
    fake_element* link_ = nullptr;
    fake_element* other_link_ = nullptr;
    visit_record record_;
};

} // namespace

void PrintTo(const event_outcome& outcome, std::ostream* out)
{
    *out << "code " << std::hex << outcome.code << std::dec << (outcome.is_cancelled ? ", cancelled" : "");
}

visit_record visit_page(fake_tab& tab, IObjectWithSite* helper, bool has_element2, const wchar_t* href)
{
    return visitor(tab, helper, has_element2, href).visit();
}

void expect_opened_what_was_cancelled(const visit_record& visit, std::size_t unrecorded)
{
    const auto is_cancelled = [](const std::optional<event_outcome>& outcome) {
        return outcome && outcome->is_cancelled;
    };
    const auto click = static_cast<std::size_t>(visit_step::click);
    const auto navigation = static_cast<std::size_t>(visit_step::navigation);
    std::vector<std::wstring> expected;
    for (const auto* const outcomes : {&visit.outcomes, &visit.repeats})
        if (is_cancelled((*outcomes)[click]))
            expected.emplace_back(L"http://h/x.pdf");
    // A repeated navigation is opened once.
    if (is_cancelled(visit.outcomes[navigation]) || is_cancelled(visit.repeats[navigation]))
        expected.emplace_back(L"http://h/z.pdf");
    if (visit.may_open_twice && visit.opened.size() > expected.size())
        expected.emplace_back(L"http://h/z.pdf");
    if (visit.opened.size() + unrecorded == expected.size() && unrecorded != 0) {
        EXPECT_THAT(expected, testing::IsSupersetOf(visit.opened));
        return;
    }
    EXPECT_EQ(visit.opened, expected);
}

} // namespace quill::test
