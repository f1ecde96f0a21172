#include "sharepoint/sharepoint_bho.h"

#include "logging/exception_barriers.h"
#include "logging/log_stream.h"
#include "sharepoint/browser_subscription.h"
#include "sharepoint/host/host_ptr.h"

#include <utility>

namespace quill {
namespace {

// Where the barrier says that a failure happened: a fixed number of the log's text.
constexpr unsigned set_site_line = 58;

} // namespace

// What SetSite holds until its end, whatever happens in it. Leaving the old browser calls out to it: it may
// release the new site and this object, and it may re-enter SetSite.
struct sharepoint_bho::attachment
{
    CComPtr<IUnknown> helper;
    host_ptr<IUnknown> site;
    std::unique_ptr<browser_subscription> retired;
    std::unique_ptr<browser_subscription> created;

    void release() noexcept
    {
        created.reset();
        if (retired)
            retired->close();
        retired.reset();
        site.release();
        helper.Release();
    }
};

sharepoint_bho::sharepoint_bho() = default;

sharepoint_bho::~sharepoint_bho()
{
    const std::unique_ptr<browser_subscription> last = std::move(subscription_);
    host_ptr<IUnknown> site;
    site.attach(m_spUnkSite.Detach());
}

HRESULT STDMETHODCALLTYPE sharepoint_bho::SetSite(IUnknown* site)
{
    attachment held{GetUnknown(), {}, {}, {}};
    return CrashBorder(
        held, [&] { return attach(held, site); }, E_FAIL, "quill::sharepoint_bho::SetSite", set_site_line);
}

HRESULT sharepoint_bho::attach(attachment& held, IUnknown* site)
{
    held.site = host_ptr<IUnknown>(site);
    held.retired = std::move(subscription_);
    if (held.retired)
        held.retired->close();
    try {
        barrier::throw_if_handled();
    } catch (const barrier::system_exception&) {
        if (!held.site)
            replace_site(held); // the old site is released all the same
        throw;
    }
    QUILL_LOG(log_level::debug) << "unload BHO for closing IE TAB";
    if (held.site) {
        QUILL_LOG(log_level::debug) << "initilize BHO for IE TAB...";
        if (subscription_)
            return E_FAIL;
        held.created = std::make_unique<browser_subscription>(query<IWebBrowser2>(held.site));
        held.created->connect();
        subscription_.swap(held.created);
        QUILL_LOG(log_level::info) << "subscription for IE Browser events created";
    }
    replace_site(held);
    return S_OK;
}

void sharepoint_bho::replace_site(attachment& held) noexcept
{
    IUnknown* const old_site = m_spUnkSite.Detach();
    m_spUnkSite.Attach(held.site.detach());
    held.site.attach(old_site);
}

} // namespace quill
