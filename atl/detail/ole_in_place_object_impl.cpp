#include "atl/detail/ole_in_place_object_impl.h"

#include "atl/detail/in_place_context.h"
#include "atl/detail/rect_size.h"

namespace ATL {
namespace {

bool has_region(HWND window) noexcept
{
    RECT box;
    return GetWindowRgnBox(window, &box) != ERROR;
}

} // namespace

void clear_active_object(IOleInPlaceSite* site) noexcept
{
    in_place_context where;
    where.query(site);
    if (where.document)
        where.document->SetActiveObject(nullptr, nullptr);
    if (where.frame)
        where.frame->SetActiveObject(nullptr, nullptr);
}

void place_control_window(HWND window, const RECT& position, const RECT& clip) noexcept
{
    RECT visible{};
    HRGN region = nullptr;
    if (IntersectRect(&visible, &position, &clip) && !EqualRect(&visible, &position)) {
        OffsetRect(&visible, detail::extent(position.left, 0), detail::extent(position.top, 0));
        region = CreateRectRgnIndirect(&visible);
    }
    // Clearing a region that is not set would only repaint the whole window.
    if (region || has_region(window)) {
        // SetWindowRgn takes ownership of the region on success.
        if (!SetWindowRgn(window, region, TRUE) && region)
            DeleteObject(region);
    }
    const SIZE size = detail::size_of(position);
    SetWindowPos(window, nullptr, position.left, position.top, size.cx, size.cy,
                 SWP_NOZORDER | SWP_NOACTIVATE);
}

} // namespace ATL
