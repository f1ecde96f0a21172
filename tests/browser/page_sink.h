// Receives the document events of a page by dispatch identifiers, as the sink of an add-on does.
#pragma once

#include "tests/support/fakes/event_sink.h"

#include <windows.h>

#include <mshtml.h>

#include <functional>
#include <string>
#include <vector>

namespace quill::test {

class page_sink final : public event_sink
{
public:
    page_sink();

    struct event
    {
        DISPID id = 0;
        std::wstring type;
        std::wstring source; // identifier of the element, empty for none
    };
    const std::vector<event>& events() const { return events_; }
    int count(DISPID id) const;

    // Called for every click; returns the result of the event.
    std::function<VARIANT_BOOL(IHTMLEventObj* event)> on_click;

    STDMETHODIMP Invoke(DISPID id, REFIID, LCID, WORD flags, DISPPARAMS* parameters, VARIANT* result,
                        EXCEPINFO*, UINT*) override;

private:
    std::vector<event> events_;
};

} // namespace quill::test
