#include "tests/acceptance/installed/installed_fixture.h"

#include <iostream>

namespace quill::test {

void print_seen(std::string_view text)
{
    std::cout << "seen: " << text << std::endl;
}

void print_answer(std::string_view question, std::string_view text)
{
    std::cout << "answer " << question << ": " << text << std::endl;
}

installed_fixture::installed_fixture()
{
    calls.allow("viewer class::CreateInstance");
    script.answers_ole_object = true;
}

installed_fixture::~installed_fixture()
{
    // Engines release their documents by posted messages.
    wait_until([this] { return viewers.living_viewers() == 0; });
}

bool installed_fixture::wait_for_calls(DISPID method, std::size_t count)
{
    return wait_until([&] { return script.texts(method).size() >= count; });
}

std::string installed_fixture::viewer_calls() const
{
    std::string line;
    for (const std::string& call : script.texts())
        line += (line.empty() ? "" : ", ") + call;
    return line;
}

std::string installed_fixture::requests() const
{
    std::string line;
    for (const http_request& request : server.requests())
        line += (line.empty() ? "" : ", ") + request.method + " " + request.target;
    return line;
}

} // namespace quill::test
