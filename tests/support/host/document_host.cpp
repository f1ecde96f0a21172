#include "tests/support/host/document_host.h"

namespace quill::test {
namespace {

constexpr wchar_t window_class[] = L"QuillTestDocumentHost";

void register_window_class()
{
    WNDCLASSW description{};
    description.lpfnWndProc = DefWindowProcW;
    description.hInstance = GetModuleHandleW(nullptr);
    description.lpszClassName = window_class;
    RegisterClassW(&description); // fails if it is registered already
}

} // namespace

document_host::document_host()
    : object_moniker(calls, "object moniker"), container_moniker(calls, "container moniker"), browser(calls),
      shell(calls), frame(calls), site(calls, *this)
{
    register_window_class();
    const HINSTANCE instance = GetModuleHandleW(nullptr);
    frame_window_ = CreateWindowExW(0, window_class, L"host", WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN, 0, 0,
                                    800, 600, nullptr, nullptr, instance, nullptr);
    view_window_ = CreateWindowExW(0, window_class, L"", WS_CHILD | WS_VISIBLE | WS_CLIPCHILDREN, 0, 0, 780,
                                   560, frame_window_, nullptr, instance, nullptr);
    EXPECT_NE(view_window_, nullptr);
    shell.window = frame_window_;
    frame.window = frame_window_;
    ACCEL entries[] = {{FVIRTKEY | FCONTROL, 'O', 17}, {FVIRTKEY, 'F', 18}, {FVIRTKEY | FALT, 'F', 19}};
    accelerators_ = CreateAcceleratorTableW(entries, 3);
}

document_host::~document_host()
{
    EXPECT_EQ(view.Get(), nullptr) << "the test kept the view";
    destroy_windows();
    DestroyAcceleratorTable(accelerators_);
}

void document_host::destroy_windows()
{
    if (frame_window_)
        DestroyWindow(frame_window_);
    frame_window_ = nullptr;
    view_window_ = nullptr;
}

HRESULT document_host::step(HRESULT result)
{
    activation_results.push_back(result);
    return result;
}

HRESULT document_host::activate(IOleDocumentView* offered)
{
    activation_results.clear();
    if (order == activation_order::nothing)
        return S_OK;
    Microsoft::WRL::ComPtr<IOleDocumentView> new_view{offered};
    const bool site_in_create = order != activation_order::site_then_ui_activate;
    if (!new_view) {
        Microsoft::WRL::ComPtr<IOleDocument> ole_document;
        if (!document || FAILED(document->QueryInterface(IID_PPV_ARGS(&ole_document))))
            return E_FAIL;
        const HRESULT created = step(
            ole_document->CreateView(site_in_create ? site.in_place_site() : nullptr, nullptr, 0, &new_view));
        if (FAILED(created))
            return created;
    }
    if (!new_view)
        return E_UNEXPECTED;
    view = new_view;
    if (order == activation_order::create_view_only)
        return S_OK;
    if (!site_in_create) {
        step(new_view->SetInPlaceSite(site.in_place_site()));
        step(new_view->UIActivate(TRUE));
    }
    step(new_view->SetRect(&position));
    step(new_view->Show(TRUE));
    return S_OK;
}

} // namespace quill::test
