// Creates, places and closes the objects of a page's EMBED and OBJECT elements.
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

    // Creates and activates an object for every box whose element has a class, in page order. A box whose
    // object cannot be created stays empty.
    void open(const std::vector<laid_box>& boxes, embedded_host& host);
    void place(const std::vector<laid_box>& boxes);
    void close();
    bool is_open() const { return !objects_.empty(); }

    // UI-deactivates every object except that of `site`.
    void deactivate_ui_except(const embedded_site& site) const;

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
