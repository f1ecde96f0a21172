// What kind of page a document is, decided from what its head holds.
#pragma once

#include "sharepoint/decisions/case_insensitive.h"

namespace quill {

enum class page_kind : int
{
    sharepoint = 0,                // the only kind that is acted on
    sharepoint_online_scripts = 1, // left alone, also when it is a SharePoint page by its generator
    regular = 2
};

// any_script(test) and any_meta(test) walk the elements of the head in document order until the test is
// true for one, and return whether it was; elements that cannot be read are left out. A script is tested by
// its source text; a meta element has name() and content(), text as well. Nothing is read that the decision
// does not need: pages are classified while the browser waits.
template <class AnyScript, class AnyMeta>
page_kind decide_page_kind(AnyScript&& any_script, AnyMeta&& any_meta)
{
    if (any_script(
            [](const auto& source) { return contains_ignoring_case(source, L".sharepointonline.com/"); }))
        return page_kind::sharepoint_online_scripts;
    if (any_meta([](const auto& meta) {
            return equal_ignoring_case(meta.name(), L"GENERATOR") &&
                   contains_ignoring_case(meta.content(), L"SharePoint");
        }))
        return page_kind::sharepoint;
    return page_kind::regular;
}

} // namespace quill
