// A document from a server, from IPersistMoniker::Load to the viewer's open call: each call of its moniker,
// its host and its viewer fails once, in every way, and the file is shown anyway.
#include "tests/document/document_fixture.h"
#include "tests/document/document_run.h"
#include "tests/support/fault_points.h"
#include "tests/support/http_server.h"
#include "tests/support/wait.h"

#include <gtest/gtest.h>

#include <set>

namespace quill::test {
namespace {

constexpr char naming_call[] = "loaded moniker::GetDisplayName";

class FailingHostOfADownload : public testing::TestWithParam<call_fault>
{
protected:
    FailingHostOfADownload()
    {
        server_.route("/c/d.pdf", http_response::ok(pdf_body(2'000)));
        server_.route("/c/named-by-site.pdf", http_response::ok(pdf_body(2'000)));
    }

    // A run in which the number-th call fails, none for 0. Returns the number of its calls.
    int run_failing(int number)
    {
        document_fixture fixture;
        prepare_host(fixture, activation_order::create_view_with_site);
        fixture.host.object_moniker.display_name = server_.url(L"/c/named-by-site.pdf");
        if (number)
            fixture.host.calls.fail_call_number(number, GetParam());
        fixture.host.calls.when(naming_call, [&] { naming_call_number_ = fixture.host.calls.total(); });
        server_.forget_requests();
        EXPECT_EQ(run_document_from_server(fixture, server_.url(L"/c/d.pdf")), 1) << "downloads";
        expect_shown(fixture);
        fixture.release();
        EXPECT_TRUE(server_.wait_idle(default_deadline_ms)) << "the request is not closed";
        return fixture.host.calls.total();
    }

    int naming_call_number() const { return naming_call_number_; }

private:
    // A document that gets no URL from its moniker asks its site for it.
    void expect_shown(const document_fixture& fixture) const
    {
        const std::string& failed = fixture.host.calls.failed_call();
        const bool is_nameless = failed == naming_call;
        const auto requests = server_.requests();
        ASSERT_EQ(requests.size(), 1u) << failed;
        EXPECT_EQ(requests[0].target, is_nameless ? "/c/named-by-site.pdf" : "/c/d.pdf") << failed;
        EXPECT_NE(fixture.viewer.texts(viewer_open).size(), 0u) << "not opened for the failure of " << failed;
    }

    http_server server_;
    int naming_call_number_ = 0;
};

TEST_P(FailingHostOfADownload, LeaksNothingAndGetsTheFile)
{
    const int calls = run_failing(0);
    ASSERT_GT(calls, 70) << "the scenario does not reach the host";
    const fault_calls chosen = calls_that_fail(2 * static_cast<int>(GetParam()));
    std::set<int> numbers = {naming_call_number()}; // the one that decides what is fetched, every time
    for (int number = chosen.first; number <= calls; number += chosen.step)
        numbers.insert(number);
    for (const int number : numbers) {
        SCOPED_TRACE("call " + std::to_string(number) + " of " + std::to_string(calls) + ": " +
                     to_text(GetParam()));
        expect_balance_in_loop([&] { run_failing(number); });
        if (HasFailure())
            return;
    }
    report_fault_points("a downloaded document on a host", numbers.size());
}

std::string name_of_way(const testing::TestParamInfo<call_fault>& way)
{
    return name_of(way.param);
}

INSTANTIATE_TEST_SUITE_P(Document, FailingHostOfADownload,
                         testing::Values(call_fault::error, call_fault::null_result, call_fault::untouched),
                         name_of_way);

} // namespace
} // namespace quill::test
