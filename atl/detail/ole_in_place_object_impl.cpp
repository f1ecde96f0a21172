#include "atl/detail/ole_in_place_object_impl.h"

#include "atl/detail/in_place_context.h"
#include "atl/detail/rect_size.h"

namespace ATL {
namespace {

bool HasRegion(HWND window) noexcept
{
    RECT box;
    return GetWindowRgnBox(window, &box) != ERROR;
}

} // namespace

void ReleaseActiveObject(IOleInPlaceSite* site) noexcept
{
    InPlaceContext where;
    where.Ask(site);
    if (where.document)
        where.document->SetActiveObject(nullptr, nullptr);
    if (where.frame)
        where.frame->SetActiveObject(nullptr, nullptr);
}

void PlaceControlWindow(HWND window, const RECT& position, const RECT& clip) noexcept
{
    RECT visible{};
    HRGN region = nullptr;
    if (IntersectRect(&visible, &position, &clip) && !EqualRect(&visible, &position)) {
        OffsetRect(&visible, detail::extent(position.left, 0), detail::extent(position.top, 0));
        region = CreateRectRgnIndirect(&visible);
    }
    // Setting none where there is none would only repaint the whole window.
    if (region || HasRegion(window)) {
        // The system owns the region once it is set.
        if (!SetWindowRgn(window, region, TRUE) && region)
            DeleteObject(region);
    }
    const SIZE size = detail::size_of(position);
    SetWindowPos(window, nullptr, position.left, position.top, size.cx, size.cy,
                 SWP_NOZORDER | SWP_NOACTIVATE);
}

} // namespace ATL
