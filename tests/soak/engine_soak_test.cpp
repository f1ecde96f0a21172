// Documents in the system's own browser engine, many times in one process, compared with a document object
// that does nothing: the engine's own growth is measured, and the module adds nothing to it.
#include "tests/soak/engine_soak_fixture.h"
#include "tests/soak/resource_samples.h"
#include "tests/soak/soak_settings.h"
#include "tests/support/wait.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <functional>

namespace quill::soak {
namespace {

constexpr std::size_t short_visits = 30;
constexpr std::size_t warm_up_visits = 3;
constexpr DWORD patience_ms = 8'000;

std::size_t visits()
{
    return static_cast<std::size_t>(number_setting(L"QUILL_SOAK_VISITS", short_visits));
}

class EngineSoak : public engine_soak_fixture
{
protected:
    EngineSoak()
    {
        server.route("/trivial.bin", test::http_response::ok(test::pdf_body(6'000), trivial_type));
        server.route("/plan.pdf", test::http_response::ok(test::pdf_body(6'000)));
    }

    // One opening and closing; counts the documents that are never shown.
    void visit(const wchar_t* target, const std::function<bool()>& shown, std::size_t& missed)
    {
        {
            test::engine browser;
            browser.open(server.url(target));
            if (!test::wait_until(shown, patience_ms)) {
                ++missed;
                std::printf("never shown: %ls, %zu requests\n", target, server.requests().size());
                print_last_lines();
            }
        }
        server.forget_requests();
    }
    // A document that does nothing, with one bare download in place of the module's worker.
    void visit_trivial(std::size_t& missed)
    {
        const std::size_t before = trivial.shown();
        visit(L"/trivial.bin", [&] { return trivial.shown() > before; }, missed);
        run_bare_download(download_path::urlmon, server.url(L"/plan.pdf"), files / L"bare.pdf");
        server.forget_requests();
    }
    // The class object keeps each viewer that it has created, so each visit has a class object of its own.
    void visit_document(std::size_t& missed)
    {
        viewer_store viewers;
        viewers.calls.allow("viewer class::CreateInstance");
        viewers.script.answers_ole_object = true;
        visit(L"/plan.pdf", [&] { return viewers.opened() > 0; }, missed);
    }
};

TEST_F(EngineSoak, Documents)
{
    std::size_t bare_missed = 0;
    std::size_t missed = 0;
    expect_flat([&] {
        sample_table bare("a trivial document through the engine");
        sample_table table("documents through the engine");
        run_cycles(bare, warm_up_visits, visits(), [&](std::size_t) { visit_trivial(bare_missed); });
        run_cycles(table, warm_up_visits, visits(), [&](std::size_t) { visit_document(missed); });
        return growth_beyond(bare, table, 1);
    });
    std::printf("never shown: %zu of the trivial ones, %zu of the module's\n", bare_missed, missed);
    EXPECT_EQ(trivial.living(), 0);
    EXPECT_TRUE(test::wait_until([&] { return module.can_unload(); })) << "an object keeps the module loaded";
    EXPECT_EQ(missed, 0u);
}

} // namespace
} // namespace quill::soak
