// Opening a URL dispatches messages: what the browser and the page report meanwhile.
#include "sharepoint/sharepoint_bho.h"
#include "tests/sharepoint/aggregator_fixture.h"
#include "tests/sharepoint/recorded_launches.h"
#include "tests/support/text.h"

#include <gtest/gtest.h>

#include <utility>

namespace quill::test {
namespace {

using urls = std::vector<std::wstring>;

class ReentrantOpening : public aggregator_bench
{
protected:
    ReentrantOpening()
    {
        bench_.set_editor(L"C:\\nowhere\\editor.exe");
        aggregator_ = std::make_shared<browser_events_aggregator>();
    }

    // Once, while the default handler is being asked.
    static void meanwhile(std::function<void()> action)
    {
        while_shell_executes([action = std::move(action)] {
            while_shell_executes({});
            action();
        });
    }
    static urls opened() { return recorded_launches().default_urls; }

    // The attempt opens a URL and says whether its repeat opened nothing. On a machine that halts for longer
    // than a repeat is recognised, that says nothing, and another URL is tried.
    void expect_recognised(const std::function<bool(const std::wstring& url)>& attempt)
    {
        for (int number = 0; number < 50; ++number) {
            recorded_launches() = {};
            begin_ = GetTickCount64();
            const bool is_recognised = attempt(L"http://h/Doc" + std::to_wstring(number) + L".pdf");
            if (is_recognised || GetTickCount64() - begin_ < 100) {
                EXPECT_TRUE(is_recognised) << testing::PrintToString(opened());
                return;
            }
        }
        ADD_FAILURE() << "the machine never kept up";
    }

    ULONGLONG begin_ = 0;
    const launch_recording recording_;
};

TEST_F(ReentrantOpening, OpensARepeatOnce)
{
    expect_recognised([&](const std::wstring& url) {
        std::string last_line;
        meanwhile([&] {
            EXPECT_TRUE(navigate(L"HTTP" + url.substr(4)));
            last_line = log_.lines().back();
        });
        EXPECT_TRUE(navigate(url));
        return opened() == urls{url} &&
               last_line == "info: " + to_utf8(L"HTTP" + url.substr(4)) + " just canceled";
    });
}

TEST_F(ReentrantOpening, OpensARepeatOnceHoweverLongTheOpeningTakes)
{
    meanwhile([&] {
        pass_the_repeat_window();
        EXPECT_TRUE(navigate(L"http://h/x.pdf"));
        EXPECT_EQ(log_.lines().back(), "info: http://h/x.pdf just canceled");
    });
    EXPECT_TRUE(navigate(L"http://h/x.pdf"));
    EXPECT_EQ(opened(), urls{L"http://h/x.pdf"});
    pass_the_repeat_window();
    EXPECT_TRUE(navigate(L"http://h/x.pdf"));
    EXPECT_EQ(opened(), (urls{L"http://h/x.pdf", L"http://h/x.pdf"})) << "the opening is over";
}

TEST_F(ReentrantOpening, OpensTheOuterUrlOnceWhenAnotherOneIsOpenedInside)
{
    meanwhile([&] {
        EXPECT_TRUE(navigate(L"http://h/inner.pdf"));
        pass_the_repeat_window();
        EXPECT_TRUE(navigate(L"http://h/x.pdf"));
    });
    EXPECT_TRUE(navigate(L"http://h/x.pdf"));
    EXPECT_EQ(opened(), (urls{L"http://h/x.pdf", L"http://h/inner.pdf"}));
}

// The same through the helper object, whose section is entered at the time.
TEST_F(ReentrantOpening, OpensARepeatOfATabOnce)
{
    CComPtr<IObjectWithSite> helper;
    ASSERT_EQ(sharepoint_bho::_CreatorClass::CreateInstance(nullptr, IID_IObjectWithSite,
                                                            reinterpret_cast<void**>(&helper)),
              S_OK);
    ASSERT_EQ(helper->SetSite(browser_->unknown()), S_OK);
    expect_recognised([&](const std::wstring& url) {
        meanwhile([&] { EXPECT_EQ(browser_->before_navigate(url).cancel, VARIANT_TRUE); });
        EXPECT_EQ(browser_->before_navigate(url).cancel, VARIANT_TRUE);
        return opened() == urls{url};
    });
    EXPECT_EQ(helper->SetSite(nullptr), S_OK);
}

TEST_F(ReentrantOpening, RecognisesTheRepeatAfterALongOpening)
{
    expect_recognised([&](const std::wstring& url) {
        meanwhile([&] {
            pass_the_repeat_window();
            begin_ = GetTickCount64();
        });
        EXPECT_TRUE(navigate(url));
        EXPECT_TRUE(navigate(url));
        return opened() == urls{url};
    });
}

// One URL is remembered, and it is the one that was cancelled last.
TEST_F(ReentrantOpening, OpensAnotherUrlAndRemembersTheFirst)
{
    const std::wstring other = L"http://h/other.pdf";
    expect_recognised([&](const std::wstring& url) {
        meanwhile([&] { EXPECT_TRUE(navigate(other)); });
        EXPECT_TRUE(navigate(url));
        EXPECT_TRUE(navigate(url));
        return opened() == urls{url, other};
    });
}

TEST_F(ReentrantOpening, RemembersTheUrlWhenAPageIsCompletedMeanwhile)
{
    expect_recognised([&](const std::wstring& url) {
        meanwhile([&] { complete(); });
        EXPECT_TRUE(navigate(url));
        EXPECT_TRUE(navigate(url));
        return opened() == urls{url};
    });
}

// A page that does something when it is asked for its identity.
class telling_page : public fake_document
{
public:
    using fake_document::fake_document;
    std::function<void()> tell;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override
    {
        if (iid == IID_IUnknown && tell)
            std::exchange(tell, nullptr)();
        return fake_document::QueryInterface(iid, out);
    }
};

// The record is appended behind those that have been compared already.
TEST_F(ReentrantOpening, FindsARecordThatIsAddedDuringTheSearch)
{
    const auto first = make_fake<telling_page>(scene_, L"http://first/");
    browser_->document = first->dispatch();
    complete();
    auto& link = page_->add_to_body(list_link(L"http://h/x.pdf"));
    first->tell = [&] { aggregator_->on_document_ready(page_); };
    EXPECT_TRUE(aggregator_->on_click(page_, &link));
    EXPECT_EQ(opened(), urls{L"http://h/x.pdf"});
    EXPECT_EQ(page_->events().sinks(), 1u);
}

// Many are appended, so that the records move in memory while they are searched.
TEST_F(ReentrantOpening, SearchesOnWhenTheRecordsMove)
{
    std::vector<CComPtr<telling_page>> pages;
    for (int i = 0; i < 3; ++i) {
        pages.push_back(make_fake<telling_page>(scene_, L"http://plain/"));
        aggregator_->on_document_ready(pages.back());
    }
    complete();
    std::vector<CComPtr<fake_document>> added;
    pages[0]->tell = [&] {
        for (int i = 0; i < 100; ++i) {
            added.push_back(make_fake<fake_document>(scene_, L"http://added/"));
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
