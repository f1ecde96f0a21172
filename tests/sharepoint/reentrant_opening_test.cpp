// Opening a URL may dispatch messages: events of the browser and of the page that arrive meanwhile.
#include "sharepoint/sharepoint_bho.h"
#include "tests/sharepoint/aggregator_fixture.h"
#include "tests/sharepoint/recorded_launches.h"

#include <gtest/gtest.h>

#include <utility>

namespace quill::test {
namespace {

using urls = std::vector<std::wstring>;

constexpr wchar_t other_url[] = L"http://h/other.pdf";

class ReentrantOpening : public aggregator_fixture
{
protected:
    ReentrantOpening()
    {
        editors_.set_editor(L"C:\\nowhere\\editor.exe");
        make_aggregator();
    }

    // Runs the action once, inside the call that starts the default handler.
    static void during_opening(std::function<void()> action)
    {
        while_shell_executes([action = std::move(action)] {
            while_shell_executes({});
            action();
        });
    }
    static urls opened() { return recorded_launches().default_urls; }

    const launch_recording recording_;
};

TEST_F(ReentrantOpening, OpensARepeatedUrlOnce)
{
    during_opening([&] {
        EXPECT_TRUE(navigate(L"HTTP://H/DOC.PDF"));
        EXPECT_EQ(log_.lines().back(), "info: HTTP://H/DOC.PDF just canceled");
    });
    EXPECT_TRUE(navigate(pdf_url));
    EXPECT_EQ(opened(), urls{pdf_url});
}

TEST_F(ReentrantOpening, OpensARepeatedUrlOnceWhenOpeningTakesLongerThanTheInterval)
{
    during_opening([&] {
        advance_clock(60'000);
        EXPECT_TRUE(navigate(pdf_url));
        EXPECT_EQ(log_.lines().back(), "info: http://h/Doc.pdf just canceled");
    });
    EXPECT_TRUE(navigate(pdf_url));
    EXPECT_EQ(opened(), urls{pdf_url});
    advance_clock(100);
    EXPECT_TRUE(navigate(pdf_url));
    EXPECT_EQ(opened(), (urls{pdf_url, pdf_url})) << "the URL is no longer being opened";
}

TEST_F(ReentrantOpening, OpensTheOuterUrlOnceWhenAnotherUrlIsOpenedInside)
{
    during_opening([&] {
        EXPECT_TRUE(navigate(other_url));
        advance_clock(100);
        EXPECT_TRUE(navigate(pdf_url));
    });
    EXPECT_TRUE(navigate(pdf_url));
    EXPECT_EQ(opened(), (urls{pdf_url, other_url}));
}

// Through the helper object, whose sink holds its lock at the time.
TEST_F(ReentrantOpening, OpensARepeatedUrlOfATabOnce)
{
    CComPtr<IObjectWithSite> helper;
    ASSERT_EQ(sharepoint_bho::_CreatorClass::CreateInstance(nullptr, IID_IObjectWithSite,
                                                            reinterpret_cast<void**>(&helper)),
              S_OK);
    ASSERT_EQ(helper->SetSite(browser_->unknown()), S_OK);
    during_opening([&] { EXPECT_EQ(browser_->before_navigate(pdf_url).cancel, VARIANT_TRUE); });
    EXPECT_EQ(browser_->before_navigate(pdf_url).cancel, VARIANT_TRUE);
    EXPECT_EQ(opened(), urls{pdf_url});
    EXPECT_EQ(helper->SetSite(nullptr), S_OK);
}

TEST_F(ReentrantOpening, CountsTheIntervalFromTheEndOfOpening)
{
    during_opening([] { advance_clock(60'000); });
    EXPECT_TRUE(navigate(pdf_url));
    advance_clock(99);
    EXPECT_TRUE(navigate(pdf_url));
    EXPECT_EQ(opened(), urls{pdf_url});
    advance_clock(100);
    EXPECT_TRUE(navigate(pdf_url));
    EXPECT_EQ(opened(), (urls{pdf_url, pdf_url}));
}

TEST_F(ReentrantOpening, RemembersTheUrlThatWasCancelledLast)
{
    during_opening([&] { EXPECT_TRUE(navigate(other_url)); });
    EXPECT_TRUE(navigate(pdf_url));
    EXPECT_TRUE(navigate(pdf_url));
    EXPECT_EQ(opened(), (urls{pdf_url, other_url}));
    EXPECT_TRUE(navigate(other_url));
    EXPECT_EQ(opened(), (urls{pdf_url, other_url, other_url}));
}

TEST_F(ReentrantOpening, RecognisesARepeatWhenAPageIsCompletedDuringOpening)
{
    during_opening([&] { complete(); });
    EXPECT_TRUE(navigate(pdf_url));
    EXPECT_TRUE(navigate(pdf_url));
    EXPECT_EQ(opened(), urls{pdf_url});
}

TEST_F(ReentrantOpening, OpensARepeatedUrlOnceAfterAPageWasCompletedInside)
{
    during_opening([&] {
        complete();
        EXPECT_TRUE(navigate(pdf_url));
    });
    EXPECT_TRUE(navigate(pdf_url));
    EXPECT_EQ(opened(), urls{pdf_url});
}

// A page that runs an action once when its IUnknown is queried.
class interrupting_page : public fake_document
{
public:
    using fake_document::fake_document;
    std::function<void()> action;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override
    {
        if (iid == IID_IUnknown && action)
            std::exchange(action, nullptr)();
        return fake_document::QueryInterface(iid, out);
    }
};

// The new record is appended after those that have been compared.
TEST_F(ReentrantOpening, FindsARecordThatIsAddedDuringTheSearch)
{
    const auto first = make_fake<interrupting_page>(tab_, L"http://first/");
    browser_->document = first->dispatch();
    complete();
    auto& link = page_->add_to_body(list_link(L"http://h/x.pdf"));
    first->action = [&] { aggregator_->on_document_ready(page_); };
    EXPECT_TRUE(aggregator_->on_click(page_, &link));
    EXPECT_EQ(opened(), urls{L"http://h/x.pdf"});
    EXPECT_EQ(page_->events().sinks(), 1u);
}

// Enough pages are added to reallocate the vector of records during the search.
TEST_F(ReentrantOpening, ContinuesTheSearchWhenTheRecordsAreReallocated)
{
    std::vector<CComPtr<interrupting_page>> pages;
    for (int i = 0; i < 3; ++i) {
        pages.push_back(make_fake<interrupting_page>(tab_, L"http://plain/"));
        aggregator_->on_document_ready(pages.back());
    }
    complete();
    std::vector<CComPtr<fake_document>> added;
    pages[0]->action = [&] {
        for (int i = 0; i < 100; ++i) {
            added.push_back(make_fake<fake_document>(tab_, L"http://added/"));
            aggregator_->on_document_ready(added.back());
        }
    };
    auto& link = page_->add_to_body(list_link(L"http://h/x.pdf"));
    EXPECT_TRUE(aggregator_->on_click(page_, &link));
    EXPECT_EQ(opened(), urls{L"http://h/x.pdf"});
    EXPECT_EQ(page_->events().sinks(), 1u);
    for (const auto& page : added)
        EXPECT_EQ(page->events().sinks(), 1u);
}

} // namespace
} // namespace quill::test
