#include "stand_ins/html_engine/embedded_objects.h"

#include "stand_ins/html_engine/embedded_class.h"

#include <atlctl.h>

#include <utility>

namespace quill {

bool embedded_objects::create(const laid_box& box, embedded_host& host, embedded_object& made)
{
    const auto class_id = embedded_class(*box.element);
    if (!class_id || FAILED(CoCreateInstance(*class_id, nullptr, CLSCTX_INPROC_SERVER, IID_IOleObject,
                                             reinterpret_cast<void**>(&made.object))))
        return false;
    if (!made.object || FAILED(create_object(made.site)))
        return false;
    made.element = box.element;
    made.site->attach(host);
    made.site->set_place(box.place);
    return true;
}

// The page does not pass a URL: the object gets its position and finds its element itself.
void embedded_objects::activate(const embedded_object& made, const RECT& place, HWND window)
{
    made.object->SetClientSite(made.site);
    if (const CComQIPtr<IPersistStreamInit> persistence(made.object); persistence)
        persistence->InitNew();
    SIZEL pixels = {place.right - place.left, place.bottom - place.top};
    SIZEL extent{};
    AtlPixelToHiMetric(&pixels, &extent);
    made.object->SetExtent(DVASPECT_CONTENT, &extent);
    made.object->DoVerb(OLEIVERB_INPLACEACTIVATE, nullptr, made.site, 0, window, &place);
}

void embedded_objects::open(const std::vector<laid_box>& boxes, embedded_host& host)
{
    for (const auto& box : boxes) {
        embedded_object made;
        if (!create(box, host, made))
            continue;
        objects_.push_back(made);
        activate(made, box.place, host.page_window());
    }
}

void embedded_objects::place(const std::vector<laid_box>& boxes)
{
    for (const auto& box : boxes) {
        for (const auto& known : objects_) {
            if (known.element != box.element)
                continue;
            known.site->set_place(box.place);
            if (const CComQIPtr<IOleInPlaceObject> placed(known.object); placed)
                placed->SetObjectRects(&box.place, &box.place);
        }
    }
}

void embedded_objects::close(const embedded_object& closing)
{
    if (const CComQIPtr<IOleInPlaceObject> placed(closing.object); placed)
        placed->InPlaceDeactivate();
    closing.object->Close(OLECLOSE_NOSAVE);
    closing.object->SetClientSite(nullptr);
    closing.site->detach();
}

void embedded_objects::close()
{
    const auto closing = std::move(objects_);
    objects_.clear();
    for (const auto& object : closing)
        close(object);
}

void embedded_objects::deactivate_ui_except(const embedded_site& site) const
{
    const auto objects = objects_;
    for (const auto& other : objects) {
        if (other.site == static_cast<const CComObject<embedded_site>*>(&site))
            continue;
        if (const CComQIPtr<IOleInPlaceObject> placed(other.object); placed)
            placed->UIDeactivate();
    }
}

} // namespace quill
