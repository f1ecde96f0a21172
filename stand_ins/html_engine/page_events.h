// The page's two connection points and its events.
#pragma once

#include "stand_ins/html_engine/connection_point.h"
#include "stand_ins/html_engine/page_model.h"

#include <memory>

namespace quill {

class page_events
{
public:
    // The container is borrowed.
    HRESULT create(IConnectionPointContainer* container);
    void close();

    HRESULT find(REFIID interface_id, IConnectionPoint** point) const;

    // Fires onclick. Returns whether the default action may be performed.
    bool fire_click(const std::shared_ptr<page_model>& page, const dom_node::pointer& element) const;
    // Notifies the browser and the document's sinks of a new ready state.
    void fire_ready_state(const std::shared_ptr<page_model>& page) const;

private:
    bool fire(DISPID event, const wchar_t* type, const std::shared_ptr<page_model>& page,
              const dom_node::pointer& source) const;

    CComPtr<CComObject<connection_point>> document_events_;
    CComPtr<CComObject<connection_point>> property_changes_;
};

} // namespace quill
