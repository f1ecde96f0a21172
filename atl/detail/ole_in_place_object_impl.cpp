#include "atl/detail/ole_in_place_object_impl.h"

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
    CComPtr<IOleInPlaceFrame> frame;
    CComPtr<IOleInPlaceUIWindow> document;
    RECT position{};
    RECT clip{};
    OLEINPLACEFRAMEINFO frame_info{};
    frame_info.cb = sizeof frame_info;
    site->GetWindowContext(&frame, &document, &position, &clip, &frame_info);
    if (document)
        document->SetActiveObject(nullptr, nullptr);
    if (frame)
        frame->SetActiveObject(nullptr, nullptr);
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
