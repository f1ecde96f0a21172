// Each WinINet call of a download fails once, or succeeds with a null result: the result is one of the
// specified ones, and everything that was opened is closed.
#include "retrieval/download/wininet_download.h"
#include "tests/retrieval/fake_document_window.h"
#include "tests/retrieval/fake_wininet.h"
#include "tests/support/balance.h"
#include "tests/support/fault_points.h"
#include "tests/support/scopes.h"

#include <gtest/gtest.h>

#include <set>

namespace quill::test {
namespace {

std::string verb_of(const std::string& call)
{
    return call.substr(0, call.find(' '));
}

// The result of the download for a call that fails.
std::uint32_t expected_result(const std::string& verb)
{
    static const std::set<std::string> needed = {"open",         "open_url", "connect",
                                                 "open_request", "send",     "read"};
    return needed.contains(verb) ? 1 : 0;
}

class WinInetFaults : public testing::TestWithParam<bool>
{
protected:
    // With a certificate error to ignore, the URL is opened step by step.
    std::uint32_t download(std::size_t failing_call, bool returns_null, std::vector<std::string>& calls)
    {
        fake_wininet wininet;
        wininet.failing_call = failing_call;
        wininet.returns_null = returns_null;
        wininet.content_length = L"8";
        wininet.available = {4, 4};
        wininet.open_url_error = GetParam() ? ERROR_INTERNET_INVALID_CA : 0;
        const std::uint32_t result = DownloadWithWinINet(
            {window.handle(), nullptr, nullptr}, L"https://h/a.pdf", path.c_str(), wininet.functions());
        calls = wininet.calls;
        return result;
    }

    fake_document_window window{{}};
    scratch_directory folder;
    std::wstring path = folder / L"a.pdf";
};

TEST_P(WinInetFaults, CloseWhatIsOpen)
{
    std::vector<std::string> calls;
    ASSERT_EQ(download(0, false, calls), 0u);
    const std::vector<std::string> all = calls;
    const auto fail_each = [&] {
        std::size_t points = 0;
        for (const bool returns_null : {false, true}) {
            for (std::size_t number = 1; number <= all.size(); ++number, ++points) {
                const std::string verb = verb_of(all[number - 1]);
                SCOPED_TRACE(verb + (returns_null ? " returns null" : " fails") + " as call " +
                             std::to_string(number));
                // The first of the two ways to open a URL fails here by itself.
                const bool is_expected = GetParam() && verb == "open_url";
                const std::uint32_t result = download(number, returns_null, calls);
                EXPECT_EQ(result, is_expected ? 1u : expected_result(verb));
            }
        }
        return points;
    };
    std::size_t points = 0;
    expect_balance([&] { points = fail_each(); });
    report_fault_points("a WinINet download", points);
}

INSTANTIATE_TEST_SUITE_P(Opened, WinInetFaults, testing::Bool(), [](const testing::TestParamInfo<bool>& way) {
    return way.param ? "StepByStep" : "AtOnce";
});

} // namespace
} // namespace quill::test
