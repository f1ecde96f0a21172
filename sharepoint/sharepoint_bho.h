// The browser helper object. The browser creates one for each tab and passes the tab's browser object to
// SetSite.
#pragma once

#include "platform/com_categories.h"
#include "sharepoint/identifiers.h"

#include <atlbase.h>
#include <atlcom.h>

#include <memory>

namespace quill {

// While it has a site, its subscription to the browser's events does the work.
class ATL_NO_VTABLE sharepoint_bho : public CComObjectRootEx<CComSingleThreadModel>,
                                     public CComCoClass<sharepoint_bho, &CLSID_SharepointBrowserHelperObject>,
                                     public IObjectWithSiteImpl<sharepoint_bho>
{
public:
    sharepoint_bho();
    ~sharepoint_bho();

    DECLARE_REGISTRY_RESOURCEID(sharepoint_registry_script)
    DECLARE_NOT_AGGREGATABLE(sharepoint_bho)

    BEGIN_COM_MAP(sharepoint_bho)
    COM_INTERFACE_ENTRY(IObjectWithSite)
    END_COM_MAP()

    // Allowed in the browser's sandbox (AppContainer).
    BEGIN_CATEGORY_MAP(sharepoint_bho)
    IMPLEMENTED_CATEGORY(CATID_AppContainerCompatible)
    END_CATEGORY_MAP()

    // IObjectWithSite
    HRESULT STDMETHODCALLTYPE SetSite(IUnknown* site) override;

private:
    struct subscription;
    struct attachment;

    HRESULT attach(attachment& held, IUnknown* site);
    void replace_site(attachment& held) noexcept;

    std::unique_ptr<subscription> subscription_; // null without a site
};

} // namespace quill
