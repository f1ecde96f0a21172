// A browser with a helper object in it, the module's or the baseline.
#pragma once

#include "tests/bench/page/engine_objects.h"
#include "tests/bench/page/plain_helper.h"
#include "tests/bench/support/loaded_library.h"
#include "tests/bench/support/measure.h"

#include <functional>

namespace quill::bench {

CComPtr<IObjectWithSite> our_helper(const loaded_library& module);
CComPtr<IObjectWithSite> plain(sink_task task);

// The helper is attached in its scope.
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

// DocumentComplete of a page that no helper has seen before. Each page has a tab of its own, since a helper
// keeps its state for a page until it is detached; creating tabs and pages is not timed. The time returned is
// for one page.
timed_run complete_new_pages(const helper_maker& helper, const page_maker& make_page, int pages);

// Fires DocumentComplete of the same page again, as a browser does for each frame of a page.
repeated complete_again(const tab& in);

// A page with the usual head: what must be read before a page counts as ordinary.
CComPtr<page> ordinary_page();

} // namespace quill::bench
