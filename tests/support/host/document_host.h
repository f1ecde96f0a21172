// A strict container for one document object, as the browser is one: windows, site, frame, services. The test
// drives the document through the document's own interfaces.
#pragma once

#include "tests/support/host/fake_moniker.h"
#include "tests/support/host/host_browser.h"
#include "tests/support/host/host_frame.h"
#include "tests/support/host/host_site.h"

#include <wrl/client.h>

#include <optional>

namespace quill::test {

// How the host activates a document that asks for it. Both orders occur in real hosts.
enum class activation_order
{
    create_view_with_site, // CreateView(site), SetRect, Show
    site_then_ui_activate, // CreateView(null), SetInPlaceSite, UIActivate, SetRect, Show
    create_view_only,      // CreateView(site) only
    nothing,               // S_OK without any view
};

class document_host
{
public:
    document_host();
    document_host(const document_host&) = delete;
    document_host& operator=(const document_host&) = delete;
    // Fails the test if the document still holds a reference.
    ~document_host();

    call_log calls;
    fake_moniker object_moniker;    // OLEWHICHMK_OBJFULL; without a display name GetMoniker fails
    fake_moniker container_moniker; // OLEWHICHMK_CONTAINER
    host_web_browser browser;
    host_shell_window shell; // its window is the frame window unless changed
    host_frame frame;
    host_site site;
    IOleContainer* container = nullptr; // not owned

    RECT position{10, 20, 410, 320}; // in client coordinates of view_window()
    RECT clip{0, 0, 2000, 2000};
    activation_order order = activation_order::create_view_with_site;
    // The results of the steps of the last activation, in order.
    std::vector<HRESULT> activation_results;

    // The document whose view ActivateMe(nullptr) creates; borrowed.
    IUnknown* document = nullptr;
    Microsoft::WRL::ComPtr<IOleDocumentView> view;

    HWND frame_window() const { return frame_window_; }
    HWND view_window() const { return view_window_; }
    // Destroys the host's windows and with them the document's, as a closed browser does.
    void destroy_windows();

    // Ctrl+O is command 17, F is 18, Alt+F is 19.
    HACCEL accelerators() const { return accelerators_; }
    UINT accelerator_count() const { return 3; }

    // Called by the site: activates in the configured order.
    HRESULT activate(IOleDocumentView* offered);

private:
    HRESULT step(HRESULT result);

    HWND frame_window_ = nullptr;
    HWND view_window_ = nullptr;
    HACCEL accelerators_ = nullptr;
};

} // namespace quill::test
