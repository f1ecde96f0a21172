#include "tests/sharepoint/page_visit.h"

#include <gtest/gtest.h>

#include <functional>
#include <ostream>

namespace quill::test {
namespace {

class visitor
{
public:
    visitor(fake_scene& scene, IObjectWithSite* helper, bool has_element2)
        : scene_(scene), helper_(helper), browser_(make_fake<fake_browser>(scene)),
          page_(sharepoint_page(scene, L"http://h/"))
    {
        page_->head->has_element2 = has_element2;
        page_->is_head_first = has_element2;
        page_->add_to_head({.tag = L"SCRIPT", .src = L"/x.js"});
        link_ = &page_->add_to_body(list_link(L"http://h/x.pdf"));
        other_link_ = &page_->add_to_body(
            {.tag = L"A", .outer_html = L"<a onclick=\"PdfFile.OpenDocuments()\">", .href = L"/y.pdf"});
        browser_->document = page_->dispatch();
    }

    visit_record visit()
    {
        once(visit_step::attach, [&] { return event_outcome{helper_->SetSite(browser_->unknown())}; });
        twice(visit_step::other_navigation, [&] { return navigate(L"http://h/other"); });
        twice(visit_step::complete, [&] { return complete(); });
        twice(visit_step::click, [&] { return click(); });
        twice(visit_step::ready, [&] { return become_ready(); });
        twice(visit_step::navigation, [&] { return navigate(L"http://h/z.pdf"); });
        once(visit_step::quit, [&] { return quit(); });
        once(visit_step::detach, [&] { return event_outcome{helper_->SetSite(nullptr)}; });
        if (!scene_.has_failed()) {
            // A host that does not say where its connections are keeps them; they are dead by then, and end
            // with the host.
            EXPECT_EQ(browser_->events().sinks(), 0u);
            EXPECT_EQ(page_->events().sinks(), 0u);
        }
        record_.is_rewritten = other_link_->outer_html() == L"<a >";
        record_.calls = scene_.calls();
        return record_;
    }

private:
    using outcome = std::optional<event_outcome>;
    using event = std::function<outcome()>;

    void once(visit_step step, const event& fire)
    {
        const auto place = static_cast<std::size_t>(step);
        record_.calls_before[place] = scene_.calls().size();
        record_.outcomes[place] = fire();
        record_.calls_before_repeat[place] = scene_.calls().size();
    }
    void twice(visit_step step, const event& fire)
    {
        once(step, fire);
        record_.repeats[static_cast<std::size_t>(step)] = fire();
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
        const auto source = make_fake<fake_event>(scene_, link_);
        const event_result result = page_->click(source);
        const bool is_cancelled = is_bool(result.value, false);
        if (FAILED(result.code))
            EXPECT_TRUE(result.value.vt == VT_EMPTY && source->is_untouched());
        else
            EXPECT_TRUE(is_cancelled || (is_bool(result.value, true) && source->is_untouched()));
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

    fake_scene& scene_;
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

visit_record visit_page(fake_scene& scene, IObjectWithSite* helper, bool has_element2)
{
    return visitor(scene, helper, has_element2).visit();
}

} // namespace quill::test
