// The document object in a host: downloads on both paths, the pauses of the host meanwhile, a small document.
#include "tests/bench/document/bare_downloads.h"
#include "tests/bench/document/document_session.h"
#include "tests/bench/document/pane_window.h"
#include "tests/bench/document/pause_probe.h"
#include "tests/bench/support/report.h"

#include <gtest/gtest.h>
#include <ole2.h>

#include <functional>
#include <optional>
#include <stdexcept>
#include <vector>

namespace quill::bench {
namespace {

constexpr wchar_t switch_key[] = L"SOFTWARE\\Quill\\DocStudio\\14\\Settings\\Preferences\\kBrowserPlugin";
constexpr wchar_t switch_value[] = L"kIEBrowserPluginWinINet";

std::size_t large_size()
{
    return is_short_run() ? 4'000'000 : 100'000'000;
}

int large_rounds()
{
    return is_short_run() ? 1 : 10;
}

// For lines without a target.
int few_rounds()
{
    return is_short_run() ? 1 : 4;
}

// A new URL each time, so that the system's cache is not used.
std::wstring url_of(std::size_t size)
{
    static int number = 0;
    return current_options().server + L"/" + std::to_wstring(size) + L".pdf?run=" + std::to_wstring(++number);
}

// Selects WinINet for the documents in its scope.
class wininet_switch_scope
{
public:
    wininet_switch_scope() { key_.set_string(switch_value, L"/b 1"); }

private:
    test::registry_key_scope key_{HKEY_CURRENT_USER, switch_key};
};

void whole_downloads(document_session& session)
{
    const auto document = [&] { return session.open(url_of(large_size())); };
    report("100 MB, default download : URLDownloadToFileW alone",
           compare_medians(
               document, [&] { return session.run_bare(url_of(large_size()), download_with_urlmon); },
               large_rounds()),
           1.05);

    const auto with_wininet = [&] {
        const wininet_switch_scope wininet;
        return session.open(url_of(large_size()));
    };
    const pane_window shown(session.view_window(), session.library());
    const auto bare = [&](HWND report_to) {
        return [&session, report_to] {
            return session.run_bare(url_of(large_size()), [report_to](const auto& url, const auto& path) {
                download_with_wininet(url, path, report_to);
            });
        };
    };
    report("100 MB, WinINet download : query, read, write, poll and report",
           compare_medians(with_wininet, bare(shown.handle()), large_rounds()), 1.1);
    // Each read of 8 KB is reported to the document window, which shows it before the next read: 12,000
    // messages between threads that the bare loop does not send.
    report("100 MB, WinINet download : query, read and write alone",
           compare_medians(with_wininet, bare(nullptr), few_rounds()), target::known_missed(1.05));
    report("100 MB, WinINet download : default download",
           compare_medians(with_wininet, document, few_rounds()));
}

// Each report paints the pane once; the reports take most of the time of a WinINet download.
void pane_repaints(document_session& session)
{
    pane_window shown(session.view_window(), session.library());
    report("status pane, one repaint : a double-buffered repaint with nothing in it",
           compare_shortest(
               [&](std::size_t times) {
                   for (std::size_t i = 0; i < times; ++i)
                       shown.repaint(static_cast<std::uint32_t>(i % 100));
               },
               [&](std::size_t times) {
                   for (std::size_t i = 0; i < times; ++i)
                       shown.repaint_with_nothing();
               }));
}

// The longest pause of the host during an action.
timed_run pause_in(const std::function<void()>& work)
{
    return [work] {
        const pause_probe probe;
        work();
        return probe.longest();
    };
}

void pauses(document_session& session)
{
    const DWORD idle_ms = is_short_run() ? 50 : 1000;
    const auto idle = pause_in([&, idle_ms] { session.idle(idle_ms); });
    const auto bare = pause_in([&] { session.run_bare(url_of(large_size()), download_with_urlmon); });
    const auto document = pause_in([&] { session.open(url_of(large_size())); });
    const comparison to_idle = compare_medians(document, idle, large_rounds());
    report("longest pause of the host in a 100 MB download : idle", to_idle);
    report("longest pause of the host : in URLDownloadToFileW alone",
           compare_medians(document, bare, few_rounds()));
    report_value("longest pause of the host beyond an idle one's", (to_idle.ours - to_idle.baseline) / 1e6,
                 "ms", 50.0);
}

void small_document(document_session& session)
{
    constexpr double most_for_a_document = 4; // window, viewer and worker in addition to the download
    constexpr std::size_t small_size = 100'000;
    const int rounds = is_short_run() ? 3 : 61;
    const comparison measured =
        compare_medians([&] { return session.open(url_of(small_size)); },
                        [&] { return session.run_bare(url_of(small_size), download_with_urlmon); }, rounds);
    report("100 KB, Load to the viewer's open : URLDownloadToFileW alone", measured, most_for_a_document);
    report_value("100 KB, our own share (the difference)", (measured.ours - measured.baseline) / 1e6, "ms");
    const comparison of_calls =
        compare_medians([&] { return session.open(url_of(small_size)); },
                        [&] { return session.open_bare(url_of(small_size)); }, rounds);
    // The specified work of each opening: three windows, a thread, four messages, a folder, a check of the
    // file.
    report("100 KB, Load to the viewer's open : bare windows, thread, messages, download", of_calls, 1.25);
    report_value("100 KB, beyond these calls", (of_calls.ours - of_calls.baseline) / 1e6, "ms");
}

void benchmarks()
{
    if (current_options().server.empty())
        throw std::runtime_error("--server is missing");
    if (FAILED(OleInitialize(nullptr)))
        throw std::runtime_error("OLE does not start");
    {
        document_session session;
        small_document(session);
        pauses(session);
        whole_downloads(session);
        pane_repaints(session);
    }
    OleUninitialize();
    if (testing::UnitTest::GetInstance()->ad_hoc_test_result().Failed())
        throw std::runtime_error("the host was not treated as it should be");
}

} // namespace
} // namespace quill::bench

int wmain(int argc, wchar_t** argv)
{
    return quill::bench::run(argc, argv, quill::bench::benchmarks);
}
