// What an in-place site tells of its surroundings.
#pragma once

#include "atl/atlcomcli.h"

#include <windows.h>

#include <oleidl.h>

namespace ATL {

struct InPlaceContext
{
    CComPtr<IOleInPlaceFrame> frame;
    CComPtr<IOleInPlaceUIWindow> document; // none where the frame is the document window
    RECT position{};
    RECT clip{};
    OLEINPLACEFRAMEINFO info{};

    // Calls the site's GetWindowContext. When that fails nothing changes: a failed call's out values are
    // neither used nor released, whatever the site left in them.
    bool Ask(IOleInPlaceSite* site)
    {
        IOleInPlaceFrame* given_frame = nullptr;
        IOleInPlaceUIWindow* given_document = nullptr;
        RECT given_position = position;
        RECT given_clip = clip;
        OLEINPLACEFRAMEINFO given_info{};
        given_info.cb = sizeof given_info;
        if (FAILED(site->GetWindowContext(&given_frame, &given_document, &given_position, &given_clip,
                                          &given_info)))
            return false;
        frame.Attach(given_frame);
        document.Attach(given_document);
        position = given_position;
        clip = given_clip;
        info = given_info;
        return true;
    }
};

} // namespace ATL
