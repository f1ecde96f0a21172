// The calls that the viewers of a test receive and the results that they return; shared by all viewers of one
// class object.
#pragma once

#include "tests/support/fakes/call_log.h"
#include "tests/support/viewer/recorded_call.h"

#include <map>
#include <string>
#include <vector>

namespace quill::test {

// The automation methods of the viewer that the document calls.
enum viewer_method : DISPID
{
    viewer_open = 1,
    viewer_go_to_page = 4,
    viewer_set_zoom = 9,
    viewer_print = 12,
    viewer_first_setup = 15,
    viewer_second_setup = 16,
    viewer_get_window = 19,
    viewer_notify_links = 23,
    viewer_notify_save_as = 24,
};

// The interface through which the document calls its viewer; used as an IDispatch.
inline constexpr GUID viewer_interface_id = {
    0xe7c40b19, 0x2a6d, 0x4f85, {0xb3, 0xe2, 0x91, 0x0d, 0x5c, 0x7a, 0x4f, 0x38}};

// Names in `calls`: "viewer::1" and so on for the methods, "viewer class::CreateInstance".
class viewer_script
{
public:
    explicit viewer_script(call_log& calls);
    viewer_script(const viewer_script&) = delete;
    viewer_script& operator=(const viewer_script&) = delete;
    ~viewer_script();

    call_log& calls;

    // The interfaces that a viewer offers besides IDispatch.
    bool answers_viewer_interface = true;
    bool answers_ole_object = false;

    // The window that viewer_get_window returns, nullptr included.
    HWND window = nullptr;

    // What a call that fails leaves in its result, without a reference.
    IUnknown* failure_leaves = nullptr;

    std::vector<recorded_call> received;

    // The next and later calls of the method return `result` with `value` (copied).
    void answer(DISPID method, HRESULT result, const VARIANT& value);
    void answer_bool(DISPID method, VARIANT_BOOL value);
    void answer_i4(DISPID method, long value);

    // The received calls as text, oldest first; only those of `method` unless it is 0.
    std::vector<std::string> texts(DISPID method = 0) const;
    void forget_calls() { received.clear(); }

    // For the viewers: checks every argument of the call, records it and returns its result.
    HRESULT invoke(DISPID id, REFIID iid, LCID locale, WORD flags, const DISPPARAMS* parameters,
                   VARIANT* result);

private:
    struct planned_answer
    {
        HRESULT result = S_OK;
        VARIANT value{};
    };

    HRESULT usual_answer(DISPID id, VARIANT* result) const;

    std::map<DISPID, planned_answer> answers_;
};

} // namespace quill::test
