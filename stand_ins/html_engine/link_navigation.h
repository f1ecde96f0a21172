// What a click on a link does by itself.
#pragma once

#include "stand_ins/html_engine/page_model.h"

#include <windows.h>

#include <oleidl.h>

#include <string>

namespace quill {

struct link_target
{
    std::wstring address; // absolute
    std::wstring frame;   // name of the window to open it in; empty for the page's own
};

// Where a click on `element` leads: the link that it is or stands in. Empty address for nowhere: no link, a
// script, a place in the same page.
link_target target_of(const page_model& page, const dom_node& element);

// Has the browser around the page's client site go there.
HRESULT follow(IOleClientSite* site, const link_target& target);

} // namespace quill
