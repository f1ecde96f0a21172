// Documents through the system's own browser engine, many times in one process, beside a document object that
// does nothing: what the engine keeps by itself is measured, the module adds nothing to it.
#include "soak/samples.h"
#include "soak/settings.h"
#include "soak/trivial_document.h"
#include "tests/browser/engine.h"
#include "tests/browser/registered_module.h"
#include "tests/support/http_server.h"
#include "tests/support/log_file.h"
#include "tests/support/viewer/viewer_class.h"
#include "tests/support/wait.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <functional>

namespace quill::soak {
namespace {

constexpr std::size_t short_visits = 6;
constexpr std::size_t warm_up_visits = 3;
constexpr DWORD patience_ms = 8'000;
constexpr double test_records_each = 2048; // of its viewers and of the download

std::size_t visits()
{
    return static_cast<std::size_t>(number_setting(L"QUILL_SOAK_VISITS", short_visits));
}

class EngineSoak : public testing::Test
{
protected:
    EngineSoak()
    {
        script.calls.allow("viewer class::CreateInstance");
        script.answers_ole_object = true;
        server.route("/trivial.bin", test::http_response::ok(test::pdf_body(6'000), trivial_type));
        server.route("/plan.pdf", test::http_response::ok(test::pdf_body(6'000)));
    }

    // One opening and closing; counts those that never show anything.
    void visit(const wchar_t* target, const std::function<std::size_t()>& shown, std::size_t& missed)
    {
        const std::size_t before = shown();
        {
            test::engine browser;
            browser.open(server.url(target));
            if (!test::wait_until([&] { return shown() > before; }, patience_ms)) {
                ++missed;
                report_miss(target);
            }
        }
        server.forget_requests();
        script.forget_calls();
    }
    // At which step an opening stopped: who asked the server, and the module's last lines.
    void report_miss(const wchar_t* target)
    {
        std::printf("never shown: %ls, %zu requests\n", target, server.requests().size());
        const auto lines = log.lines();
        for (std::size_t i = lines.size() > 12 ? lines.size() - 12 : 0; i < lines.size(); ++i)
            std::printf("  %s %s\n", lines[i].time.c_str(), lines[i].text.c_str());
        std::fflush(stdout);
    }

    test::ole_apartment apartment;
    test::log_folder_scope log;
    test::environment_scope level{L"QUILL_LOG_LEVEL", L"trace"};
    test::registered_module module;
    test::viewer_registration registration;
    test::call_book book;
    test::viewer_script script{book};
    test::viewer_class viewers{script};
    trivial_documents trivial;
    test::http_server server;
};

TEST_F(EngineSoak, Documents)
{
    std::size_t bare_missed = 0;
    std::size_t missed = 0;
    sample_table bare("a trivial document through the engine");
    sample_table table("documents through the engine");
    run_lives(bare, warm_up_visits, visits(),
              [&](std::size_t) { visit(L"/trivial.bin", [this] { return trivial.shown(); }, bare_missed); });
    std::size_t opened = 0;
    const auto count_opened = [&] {
        opened += script.texts(test::viewer_open).size();
        script.forget_calls();
        return opened;
    };
    run_lives(table, warm_up_visits, visits(),
              [&](std::size_t) { visit(L"/plan.pdf", count_opened, missed); });
    std::printf("never shown: %zu of the trivial ones, %zu of the module's\n", bare_missed, missed);
    std::printf("still alive: %ld trivial ones; the module %s\n", trivial.living(),
                module.can_unload() ? "can unload" : "is held");
    EXPECT_EQ(viewers.living_viewers(), 0);
    expect_no_steeper_than(bare, table, 1, test_records_each);
    EXPECT_LE(missed, bare_missed + 1 + visits() / 50);
}

} // namespace
} // namespace quill::soak
