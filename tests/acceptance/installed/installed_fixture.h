// The fixture of the acceptance kit's program: the installed module in the system's browser engine, the
// recording viewer, and a web server. Nothing is registered here: the browser must find what the installer
// has registered.
#pragma once

#include "tests/browser/engine.h"
#include "tests/support/http_server.h"
#include "tests/support/viewer/viewer_class.h"
#include "tests/support/wait.h"

#include <gmock/gmock.h>

#include <string>
#include <string_view>

namespace quill::test {

// Lines that the acceptance report takes over. The text has no line end.
void print_seen(std::string_view text);
void print_answer(std::string_view question, std::string_view text);

class installed_fixture : public testing::Test
{
protected:
    installed_fixture();
    ~installed_fixture() override;

    bool wait_for_calls(DISPID method, std::size_t count);
    // The calls of all viewers, in one line.
    std::string viewer_calls() const;
    // The requests so far, in one line.
    std::string requests() const;

    ole_apartment apartment;
    viewer_registration registration;
    call_log calls;
    viewer_script script{calls};
    viewer_class viewers{script};
    http_server server;
};

} // namespace quill::test
