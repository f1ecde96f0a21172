// The objects that a page shows for its EMBED and OBJECT elements: made, placed, and taken down in good
// order.
#pragma once

#include "stand_ins/html_engine/embedded_site.h"
#include "stand_ins/html_engine/page_layout.h"

#include <vector>

namespace quill {

class embedded_objects
{
public:
    embedded_objects() = default;
    embedded_objects(const embedded_objects&) = delete;
    embedded_objects& operator=(const embedded_objects&) = delete;

    // One object for every box whose element has a class, in the page's order, active at its place. A box
    // whose object cannot be had stays empty.
    void open(const std::vector<laid_box>& boxes, embedded_host& host);
    void place(const std::vector<laid_box>& boxes);
    void close();
    bool is_open() const { return !objects_.empty(); }

    // Takes the user interface from every object but the one of that site.
    void leave_ui_to(const embedded_site& site) const;

private:
    struct embedded_object
    {
        dom_node::pointer element;
        CComPtr<IOleObject> object;
        CComPtr<CComObject<embedded_site>> site;
    };

    static bool create(const laid_box& box, embedded_host& host, embedded_object& made);
    static void activate(const embedded_object& made, const RECT& place, HWND window);
    static void close(const embedded_object& closing);

    std::vector<embedded_object> objects_;
};

} // namespace quill
