// The kind of a page, by the scripts and meta elements of its head. Used by the page analysis.
#pragma once

#include "sharepoint/decisions/case_insensitive.h"

namespace quill {

enum class page_kind : int
{
    sharepoint = 0,                // the only kind whose links and navigations are handled
    sharepoint_online_scripts = 1, // ignored, whatever its generator is
    regular = 2
};

// any_script(test) and any_meta(test) call test for the readable elements of the head in document order until
// it returns true, and return whether it did. A script is passed as its URL; a meta element has name() and
// content(). Reads only what the decision needs: the browser waits while a page is classified.
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
