// The fixture of tests with the module in the system's browser engine: an apartment, the registered module,
// the recording viewer, and a web server.
#pragma once

#include "tests/browser/engine.h"
#include "tests/browser/registered_module.h"
#include "tests/support/http_server.h"
#include "tests/support/process_resources.h"
#include "tests/support/viewer/viewer_class.h"
#include "tests/support/wait.h"

#include <gmock/gmock.h>

#include <sstream>

namespace quill::test {

class browser_fixture : public testing::Test
{
protected:
    browser_fixture()
    {
        script.calls.allow("viewer class::CreateInstance");
        script.answers_ole_object = true;
    }

    bool wait_for_calls(DISPID method, std::size_t count)
    {
        return wait_until([&] { return script.texts(method).size() >= count; });
    }
    bool wait_for_opened(std::size_t count) { return wait_for_calls(viewer_open, count); }

    // Expects that visits leak nothing. The system allocates a few GDI objects once at some later visit, a
    // leak of the module would occur at each: one pair of visits without growth disproves it.
    template <class Visit>
    void expect_flat(const Visit& visit)
    {
        constexpr int pairs = 4;
        constexpr DWORD settle_ms = 6'000; // the system's idle workers end after five seconds
        visit();                           // the system's engine initialises itself
        bool is_flat = false;
        std::ostringstream seen;
        for (int pair = 0; pair < pairs && !is_flat && !HasFatalFailure(); ++pair) {
            const process_resources before = process_resources::now();
            visit();
            visit();
            process_resources after;
            is_flat = wait_until(
                [&] {
                    after = process_resources::now();
                    return after.threads <= before.threads && after.windows <= before.windows &&
                           after.gdi_objects <= before.gdi_objects && after.menus <= before.menus;
                },
                settle_ms);
            seen << before << " to " << after << "\n";
        }
        EXPECT_TRUE(is_flat) << seen.str();
    }

    ole_apartment apartment;
    registered_module module;
    viewer_registration registration;
    call_log calls;
    viewer_script script{calls};
    viewer_class viewers{script};
    http_server server;
};

} // namespace quill::test
