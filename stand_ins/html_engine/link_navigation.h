// The default action of a click on a link.
#pragma once

#include "stand_ins/html_engine/page_model.h"

#include <windows.h>

#include <oleidl.h>

#include <string>

namespace quill {

struct link_target
{
    std::wstring url;   // absolute
    std::wstring frame; // the target window's name; empty for the page's own
};

// The target of the link that is `element` or contains it. The URL is empty if there is no link, or for a
// script or an anchor in the same page.
link_target target_of(const page_model& page, const dom_node& element);

// Navigates the browser of the page's client site.
HRESULT follow(IOleClientSite* site, const link_target& target);

} // namespace quill
