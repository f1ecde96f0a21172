// Random calls of a document's interfaces, messages to its window and failures of its host.
#pragma once

#include "tests/soak/document_soak_fixture.h"
#include "tests/soak/random_source.h"

#include <memory>
#include <string>
#include <vector>

namespace quill::soak {

// Arguments are null, right and wrong values in turn; returned interfaces and strings are released. Pointers
// are null or valid: any other pointer breaks the protocol, and no receiver can detect that.
class random_documents
{
public:
    random_documents(document_soak_fixture& fixture, random_source& random);

    // One step; returns its description for the trace.
    const char* step();
    // Releases what is left.
    void end();

private:
    using action = void (random_documents::*)(hosted_document&);
    struct named_action
    {
        const char* name;
        action run;
    };
    static const std::vector<named_action>& actions();

    hosted_document& any() { return *documents_[random_.below(documents_.size())]; }
    HWND any_window(hosted_document& document);
    LPCRECT any_rectangle();

    // Calls, by interface; random_document_calls.cpp
    void call_ole_object(hosted_document& document);
    void call_advise(hosted_document& document);
    void call_view(hosted_document& document);
    void call_document(hosted_document& document);
    void call_in_place(hosted_document& document);
    void call_active(hosted_document& document);
    void call_command(hosted_document& document);
    void call_drawing(hosted_document& document);
    void call_control(hosted_document& document);
    void call_persistence(hosted_document& document);
    void call_data(hosted_document& document);
    void call_dispatch(hosted_document& document);
    void query(hosted_document& document);

    // Its lifetime and the actions of the host; random_document.cpp
    void verb(hosted_document& document);
    void load(hosted_document& document);
    void load_address(hosted_document& document);
    void fetch(hosted_document& document);
    void send(hosted_document& document);
    void post(hosted_document& document);
    void pump(hosted_document& document);
    void destroy_window(hosted_document& document);
    void destroy_host_windows(hosted_document& document);
    void fail_a_call(hosted_document& document);
    void disturb_a_call(hosted_document& document);
    void vary_viewer(hosted_document& document);
    void close_document(hosted_document& document);

    struct message
    {
        UINT number;
        WPARAM wparam;
        LPARAM lparam;
    };
    message any_message();

    document_soak_fixture& fixture_;
    random_source& random_;
    viewer_store viewers_;
    std::vector<std::unique_ptr<hosted_document>> documents_;
    RECT rectangle_{};
    wchar_t text_[64] = L"../x.pdf";
    std::uint32_t record_[8] = {};
};

} // namespace quill::soak
