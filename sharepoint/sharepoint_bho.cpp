#include "sharepoint/sharepoint_bho.h"

#include "logging/exception_barriers.h"
#include "logging/log_stream.h"
#include "sharepoint/browser_events_aggregator.h"
#include "sharepoint/events/browser_events_sink.h"
#include "sharepoint/host/host_ptr.h"

#include <utility>

namespace quill {
namespace {

// Part of the log lines of SetSite's barrier.
constexpr unsigned set_site_line = 58;

} // namespace

// The aggregator of a tab and its connection to the browser's events.
struct sharepoint_bho::subscription
{
    explicit subscription(host_ptr<IWebBrowser2> browser) : connection(std::move(browser)) {}
    ~subscription() { close(); }

    void connect() { connection.connect(aggregator->weak_from_this()); }
    // The connection first: closing it calls the browser, which may fire events meanwhile.
    void close() noexcept
    {
        connection.close();
        aggregator.reset();
    }

    std::shared_ptr<browser_events_aggregator> aggregator = std::make_shared<browser_events_aggregator>();
    browser_events_connection connection;
};

// What SetSite holds; released however it ends. Unadvising calls the old browser, which may release the new
// site and this object, or re-enter SetSite.
struct sharepoint_bho::attachment
{
    CComPtr<IUnknown> helper;
    host_ptr<IUnknown> site;
    std::unique_ptr<subscription> retired;
    std::unique_ptr<subscription> created;

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
    const std::unique_ptr<subscription> last = std::move(subscription_);
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
            replace_site(held); // releases the old site despite the fault
        throw;
    }
    QUILL_LOG(log_level::debug) << "unload BHO for closing IE TAB";
    if (held.site) {
        QUILL_LOG(log_level::debug) << "initilize BHO for IE TAB...";
        if (subscription_)
            return E_FAIL;
        held.created = std::make_unique<subscription>(query<IWebBrowser2>(held.site));
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
