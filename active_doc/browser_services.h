// What the document asks of the browser through its client site. A host may answer any of these with a
// failure, or with success and nothing: both are "not available". User-interface thread only.
#pragma once

#include <windows.h>

#include <atlbase.h>
#include <exdisp.h>
#include <oleidl.h>

#include <optional>
#include <string>

namespace quill {

// The browser's top-level window; null when the site does not tell.
HWND browser_window(IOleClientSite* site);

// The browser that shows the document; null when there is none.
ATL::CComPtr<IWebBrowser2> web_browser(IOleClientSite* site);

// The address that the browser shows, fragment included.
std::optional<std::wstring> browser_location(IOleClientSite* site);

// Display name of the moniker that the site assigned: OLEWHICHMK_OBJFULL or OLEWHICHMK_CONTAINER.
std::optional<std::wstring> site_moniker_name(IOleClientSite* site, DWORD which_moniker);

// Display name of a moniker, asked for without a bind context.
std::optional<std::wstring> moniker_name(IMoniker* moniker);

// Opens an address in the browser, in a new window when asked for.
void navigate(IOleClientSite* site, const wchar_t* address, bool new_window);

} // namespace quill
