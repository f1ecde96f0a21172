#include "sharepoint/events/html_events_sink.h"
#include "tests/sharepoint/fake_document.h"
#include "tests/support/log_capture.h"

#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <system_error>

namespace quill {
namespace {

using test::fake_document;
using test::fake_event;
using test::fake_tab;
using test::log_capture;
using test::make_fake;
using lines = std::vector<std::string>;

class recording_handler : public html_events_handler
{
public:
    std::function<bool(IHTMLDocument2*, IHTMLElement*)> click = [](auto*, auto*) { return false; };
    int clicks = 0;
    std::vector<IHTMLDocument2*> ready_documents;

    bool on_click(IHTMLDocument2* document, IHTMLElement* element) override
    {
        ++clicks;
        return click(document, element);
    }
    void on_document_ready(IHTMLDocument2* document) override { ready_documents.push_back(document); }
};

class HtmlEventsSink : public testing::Test
{
protected:
    void connect() { sink_ = html_events_sink::connect(page_, handler_); }
    void TearDown() override
    {
        if (sink_)
            sink_->disconnect();
    }

    fake_tab tab_;
    CComPtr<fake_document> page_ = make_fake<fake_document>(tab_, L"http://h/");
    CComPtr<test::fake_element> link_ = make_fake<test::fake_element>(tab_, test::list_link(L"/x.pdf"));
    CComPtr<fake_event> event_ = make_fake<fake_event>(tab_, link_);
    std::shared_ptr<recording_handler> handler_ = std::make_shared<recording_handler>();
    CComPtr<html_events_sink::object> sink_;
    log_capture log_;
};

TEST_F(HtmlEventsSink, ForwardsTheDocumentAndTheElement)
{
    connect();
    handler_->click = [&](IHTMLDocument2* document, IHTMLElement* element) {
        EXPECT_EQ(document, static_cast<IHTMLDocument2*>(page_));
        EXPECT_EQ(element, static_cast<IHTMLElement*>(link_));
        return false;
    };
    const auto result = page_->click(event_);
    EXPECT_EQ(handler_->clicks, 1);
    EXPECT_EQ(result.code, S_OK);
    EXPECT_TRUE(test::is_bool(result.value, true));
    EXPECT_TRUE(event_->is_untouched());
    EXPECT_EQ(log_.lines(), lines{"debug: CLICK!"});
}

TEST_F(HtmlEventsSink, CancelsTheClick)
{
    connect();
    handler_->click = [](auto*, auto*) { return true; };
    const auto result = page_->click(event_);
    EXPECT_EQ(result.code, S_OK);
    EXPECT_TRUE(test::is_bool(result.value, false));
    EXPECT_TRUE(test::is_bool(event_->return_value, false));
    EXPECT_EQ(event_->cancel_bubble, VARIANT_TRUE);
    EXPECT_EQ(log_.lines(), (lines{"debug: CLICK!", "info: blocking click event..."}));
}

TEST_F(HtmlEventsSink, DoesNotCancelAClickWithoutAHandler)
{
    connect();
    handler_.reset();
    const auto result = page_->click(event_);
    EXPECT_TRUE(test::is_bool(result.value, true));
    EXPECT_TRUE(event_->is_untouched());
    page_->change_ready_state(L"complete");
    EXPECT_EQ(log_.lines(), (lines{"debug: CLICK!", "info: Ready state change."}));
}

TEST_F(HtmlEventsSink, QueriesTheInterfaceOfTheEventObject)
{
    connect();
    handler_->click = [](auto*, auto*) { return true; };
    event_->is_event = false;
    const auto result = page_->click(event_);
    EXPECT_EQ(result.code, S_OK);
    EXPECT_TRUE(test::is_bool(result.value, true));
    EXPECT_EQ(handler_->clicks, 0);
    const auto logged = log_.lines();
    ASSERT_EQ(logged.size(), 2u);
    EXPECT_TRUE(
        logged[1].starts_with("error: quill::html_events_sink::on_click:37 system error(-2147467262): "))
        << logged[1];
}

TEST_F(HtmlEventsSink, ToleratesAClickWithoutAnEventObject)
{
    connect();
    EXPECT_TRUE(test::is_bool(page_->click(nullptr).value, true));
    EXPECT_EQ(sink_->on_click(nullptr), VARIANT_TRUE);
    EXPECT_EQ(handler_->clicks, 0);
    EXPECT_TRUE(log_.lines()[1].starts_with(
        "error: quill::html_events_sink::on_click:37 system error(-2147467259): "))
        << log_.lines()[1];
}

TEST_F(HtmlEventsSink, ForwardsAClickWithoutAnElement)
{
    connect();
    event_ = make_fake<fake_event>(tab_, nullptr);
    handler_->click = [](IHTMLDocument2*, IHTMLElement* element) {
        EXPECT_EQ(element, nullptr);
        return false;
    };
    EXPECT_TRUE(test::is_bool(page_->click(event_).value, true));
    EXPECT_EQ(handler_->clicks, 1);
}

TEST_F(HtmlEventsSink, DoesNotCancelAClickWhenTheHandlerThrows)
{
    connect();
    handler_->click = [](auto*, auto*) -> bool { throw std::runtime_error("x"); };
    const auto result = page_->click(event_);
    EXPECT_EQ(result.code, S_OK);
    EXPECT_TRUE(test::is_bool(result.value, true));
    EXPECT_TRUE(event_->is_untouched());
    EXPECT_EQ(log_.lines(),
              (lines{"debug: CLICK!", "error: quill::html_events_sink::on_click:37 runtime error: x"}));
}

TEST_F(HtmlEventsSink, ReportsTheCompleteDocumentOnly)
{
    connect();
    for (const wchar_t* state : {L"uninitialized", L"loading", L"loaded", L"interactive", L"Complete", L""})
        EXPECT_EQ(page_->change_ready_state(state).code, S_OK);
    EXPECT_TRUE(handler_->ready_documents.empty());
    EXPECT_EQ(page_->change_ready_state(L"complete").code, S_OK);
    EXPECT_EQ(handler_->ready_documents, std::vector{static_cast<IHTMLDocument2*>(page_)});
    EXPECT_EQ(log_.lines(), lines(7, "info: Ready state change."));
}

TEST_F(HtmlEventsSink, CatchesWhatTheReadyHandlerThrows)
{
    struct throwing_handler : recording_handler
    {
        void on_document_ready(IHTMLDocument2*) override { throw std::bad_alloc(); }
    };
    handler_ = std::make_shared<throwing_handler>();
    connect();
    EXPECT_EQ(page_->change_ready_state(L"complete").code, S_OK);
}

TEST_F(HtmlEventsSink, ThrowsTheFailureCodeOfAdvise)
{
    page_->has_events = false;
    try {
        connect();
        ADD_FAILURE() << "connected";
    } catch (const std::system_error& error) {
        EXPECT_EQ(error.code().value(), E_NOINTERFACE);
    }
}

TEST_F(HtmlEventsSink, UnadvisesWhenTheConnectionIsDestroyed)
{
    connect();
    EXPECT_EQ(page_->events().sinks(), 1u);
    const CComPtr<IDispatch> kept = page_->events().first_sink();
    sink_->disconnect();
    sink_.Release();
    EXPECT_EQ(page_->events().sinks(), 0u);

    // The engine may be firing an event already.
    handler_->click = [](auto*, auto*) { return true; };
    VARIANT argument{};
    argument.vt = VT_DISPATCH;
    argument.pdispVal = event_;
    EXPECT_TRUE(
        test::is_bool(test::fire_at(kept, DISPID_HTMLDOCUMENTEVENTS2_ONCLICK, {argument}).value, true));
    test::fire_at(kept, DISPID_HTMLDOCUMENTEVENTS2_ONREADYSTATECHANGE, {argument});
    EXPECT_EQ(handler_->clicks, 0);
    EXPECT_TRUE(handler_->ready_documents.empty());
}

TEST_F(HtmlEventsSink, ExistsUntilAHandlerReturnsThatDestroysTheConnection)
{
    connect();
    handler_->click = [&](auto*, auto*) {
        sink_->disconnect();
        sink_.Release();
        page_.Release();
        return true;
    };
    // The engine holds a reference during the call.
    const CComPtr<fake_document> page = page_;
    EXPECT_TRUE(test::is_bool(page->click(event_).value, false));
    EXPECT_EQ(event_->cancel_bubble, VARIANT_TRUE);
}

TEST_F(HtmlEventsSink, IgnoresOtherEvents)
{
    connect();
    log_.clear();
    for (const DISPID other :
         {DISPID_HTMLDOCUMENTEVENTS2_ONKEYDOWN, DISPID_HTMLDOCUMENTEVENTS2_ONMOUSEMOVE, 12345})
        page_->events().fire(other, {});
    EXPECT_TRUE(log_.lines().empty());
}

} // namespace
} // namespace quill
