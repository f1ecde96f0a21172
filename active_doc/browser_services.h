// Calls to the browser through the document's client site. Hosts may fail, or return S_OK and leave the out
// parameter untouched; both mean "not available". UI thread only.
#pragma once

#include <windows.h>

#include <atlbase.h>
#include <exdisp.h>
#include <oleidl.h>

#include <optional>
#include <string>

namespace quill {

// The browser's top-level window; null if not available.
HWND browser_window(IOleClientSite* site);

// The browser that shows the document; null if not available.
ATL::CComPtr<IWebBrowser2> web_browser(IOleClientSite* site);

// The URL that the browser shows, including its fragment.
std::optional<std::wstring> browser_url(IOleClientSite* site);

// The display name of a moniker of the site: OLEWHICHMK_OBJFULL or OLEWHICHMK_CONTAINER.
std::optional<std::wstring> site_moniker_name(IOleClientSite* site, DWORD which_moniker);

// The display name of a moniker, without a bind context.
std::optional<std::wstring> moniker_name(IMoniker* moniker);

// Navigates the browser to url, in a new window if requested.
void navigate(IOleClientSite* site, const wchar_t* url, bool new_window);

} // namespace quill
