// Random calls of a helper object and random events at its sinks, with pages and a browser that fail.
#pragma once

#include "tests/document/module_under_test.h"
#include "tests/sharepoint/fake_browser.h"
#include "tests/soak/random_source.h"

#include <vector>

namespace quill::soak {

class random_helper
{
public:
    // The fixture of one stretch of steps; in each stretch one call of the browser or of a page fails.
    random_helper(const test::module_under_test& module, random_source& random, test::fake_tab& tab);
    ~random_helper();
    random_helper(const random_helper&) = delete;
    random_helper& operator=(const random_helper&) = delete;

    const char* step();

private:
    const char* set_site();
    const char* fire_at_browser_sink();
    const char* fire_at_page_sink();
    const char* change_page();
    const char* change_browser();
    std::vector<VARIANT> any_arguments(IDispatch* likely);

    random_source& random_;
    test::fake_tab& tab_;
    CComPtr<IObjectWithSite> helper_;
    CComPtr<test::fake_browser> browser_;
    std::vector<CComPtr<test::fake_document>> pages_;
    CComVariant referred_[4]; // the targets of by-reference arguments
    VARIANT_BOOL flag_ = VARIANT_FALSE;
};

} // namespace quill::soak
