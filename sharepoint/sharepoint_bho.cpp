#include "sharepoint/sharepoint_bho.h"

#include "logging/exception_barriers.h"
#include "logging/log_stream.h"
#include "sharepoint/browser_subscription.h"

#include <utility>

namespace quill {
namespace {

// Where the barrier says that a failure happened: a fixed number of the log's text.
constexpr unsigned set_site_line = 58;

} // namespace

sharepoint_bho::sharepoint_bho() = default;
sharepoint_bho::~sharepoint_bho() = default;

HRESULT STDMETHODCALLTYPE sharepoint_bho::SetSite(IUnknown* site)
{
    return CrashBorder([&] { return attach(site); }, E_FAIL, "quill::sharepoint_bho::SetSite", set_site_line);
}

HRESULT sharepoint_bho::attach(IUnknown* site)
{
    // Leaving the old browser calls out to it: it may let go of the new site, of this object, or come back
    // in here.
    const CComPtr<IUnknown> keep_alive(GetUnknown());
    const CComPtr<IUnknown> new_site(site);
    std::exchange(subscription_, nullptr).reset();
    QUILL_LOG(log_level::debug) << "unload BHO for closing IE TAB";
    if (new_site) {
        QUILL_LOG(log_level::debug) << "initilize BHO for IE TAB...";
        if (subscription_)
            return E_FAIL;
        subscription_ = std::make_unique<browser_subscription>(CComQIPtr<IWebBrowser2>(new_site));
        QUILL_LOG(log_level::info) << "subscription for IE Browser events created";
    }
    return IObjectWithSiteImpl::SetSite(new_site);
}

} // namespace quill
