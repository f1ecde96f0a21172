// A browser with a helper object in it, ours or the one that it is measured against.
#pragma once

#include "bench/page/engine_objects.h"
#include "bench/page/plain_helper.h"
#include "bench/support/loaded_library.h"
#include "bench/support/measure.h"

namespace quill::bench {

CComPtr<IObjectWithSite> our_helper(const loaded_library& module);
CComPtr<IObjectWithSite> plain(sink_task task);

// The helper is attached for as long as the tab lives.
struct tab
{
    tab(CComPtr<IObjectWithSite> attached, IDispatch* shown);
    ~tab() { helper->SetSite(nullptr); }
    tab(const tab&) = delete;
    tab& operator=(const tab&) = delete;

    CComPtr<browser> view = make<browser>();
    CComPtr<IObjectWithSite> helper;
};

// Fires DocumentComplete.
repeated complete(const tab& in);

// A page with the usual head: what has to be looked through before a page counts as ordinary.
CComPtr<page> ordinary_page();

} // namespace quill::bench
