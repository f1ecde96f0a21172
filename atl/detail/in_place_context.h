// The result of IOleInPlaceSite::GetWindowContext: frame, document window and rectangles.
#pragma once

#include "atl/atlcomcli.h"

#include <windows.h>

#include <oleidl.h>

namespace ATL {

struct in_place_context
{
    CComPtr<IOleInPlaceFrame> frame;
    CComPtr<IOleInPlaceUIWindow> document; // null if the frame is the document window
    RECT position{};
    RECT clip{};
    OLEINPLACEFRAMEINFO info{};

    // Calls GetWindowContext. Nothing changes if it fails: the out parameters of a failed call are neither
    // used nor released, whatever the site left in them.
    bool query(IOleInPlaceSite* site)
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
