// A browser with a helper object in it, ours or the one that it is measured against.
#pragma once

#include "tests/bench/page/engine_objects.h"
#include "tests/bench/page/plain_helper.h"
#include "tests/bench/support/loaded_library.h"
#include "tests/bench/support/measure.h"

#include <functional>

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

using helper_maker = std::function<CComPtr<IObjectWithSite>()>;
using page_maker = std::function<CComPtr<IDispatch>()>;

// DocumentComplete of a page that no helper has seen before. Each of the pages has a tab of its own, since a
// helper keeps what it knows of a page, and looks through it, until it is detached; neither the making of the
// tabs nor that of the pages is timed. What the run returns is for one page.
timed_run complete_new_pages(const helper_maker& helper, const page_maker& make_page, int pages);

// Fires DocumentComplete of the same page again, as a browser does for each frame of a page.
repeated complete_again(const tab& in);

// A page with the usual head: what has to be looked through before a page counts as ordinary.
CComPtr<page> ordinary_page();

} // namespace quill::bench
