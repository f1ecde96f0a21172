// A hosting window with a strict control for it; checks at the end that both are released.
#pragma once

#include "atl/atlhost.h"
#include "atl/atlwin.h"
#include "atl/detail/module.h"
#include "tests/framework/hosted_control.h"
#include "tests/support/process_resources.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace quill::test {

using calls = std::vector<std::string>;
using ATL::CComPtr;
using ATL::CComQIPtr;

inline constexpr LPCWSTR unknown_names[] = {L"QuillFrameworkTest.NoSuchControl", L"{not a class}"};

class host_fixture : public testing::Test
{
protected:
    const calls activation_site_first{"CreateInstance", "GetMiscStatus", "SetClientSite", "InitNew",
                                      "Advise",         "SetAdvise",     "SetHostNames",  "SetExtent",
                                      "DoVerb(-5)",     "SetSite"};
    const calls activation_site_last{"CreateInstance", "GetMiscStatus", "InitNew",      "SetClientSite",
                                     "Advise",         "SetAdvise",     "SetHostNames", "SetExtent",
                                     "DoVerb(-5)",     "SetSite"};
    const calls deactivation{"SetAdvise(NULL)",     "Unadvise",     "Close", "InPlaceDeactivate",
                             "SetClientSite(NULL)", "SetSite(NULL)"};

    void SetUp() override
    {
        ASSERT_EQ(OleInitialize(nullptr), S_OK);
        parts_ = std::make_unique<parts>();
        {
            // The first hosted control and the first trace of the test library allocate resources that stay.
            SCOPED_TRACE("warm-up");
            const HWND window = make_window(hosted_progid);
            ASSERT_TRUE(window);
            SetFocus(window);
            DestroyWindow(window);
            DWORD status = 0;
            OleRegGetMiscStatus(CLSID_hosted, DVASPECT_CONTENT, &status);
        }
        parts_.reset();
        ATL::_AtlWinModule.Term();
        before_ = process_resources::now();
        parts_ = std::make_unique<parts>();
    }

    void TearDown() override
    {
        if (IsWindow(host_window))
            DestroyWindow(host_window);
        EXPECT_TRUE(parts_->control.released()) << parts_->control.references();
        EXPECT_EQ(ATL::_pAtlModule->GetLockCount(), 0);
        parts_.reset();
        EXPECT_TRUE(ATL::AtlAxWinTerm());
        ATL::_AtlWinModule.Term();
        EXPECT_EQ(process_resources::now(), before_);
        OleUninitialize();
    }

    HWND make_window(LPCWSTR title = nullptr)
    {
        EXPECT_TRUE(ATL::AtlAxWinInit());
        host_window = CreateWindowExW(0, L"AtlAxWin140", title, WS_CHILD | WS_VISIBLE, 0, 0, 200, 100,
                                      parts_->parent, nullptr, GetModuleHandleW(nullptr), nullptr);
        return host_window;
    }
    CComQIPtr<IAxWinHostWindow> host_of(HWND window)
    {
        CComPtr<IUnknown> unknown;
        EXPECT_EQ(ATL::AtlAxGetHost(window, &unknown), S_OK);
        return CComQIPtr<IAxWinHostWindow>(unknown);
    }
    // In the order of the document: a window without a title, then its host.
    HRESULT create(LPCWSTR name = hosted_progid, IStream* stream = nullptr, IUnknown* sink = nullptr)
    {
        if (!IsWindow(host_window))
            make_window();
        const CComQIPtr<IAxWinHostWindow> host = host_of(host_window);
        CComPtr<IUnknown> made;
        const HRESULT hr = host->CreateControlEx(name, host_window, stream, &made,
                                                 sink ? IID_IPropertyNotifySink : IID_NULL, sink);
        EXPECT_EQ(made.p != nullptr, SUCCEEDED(hr));
        return hr;
    }
    // The first searches for classes that do not exist make connections that stay.
    void start_over_after_unknown_names()
    {
        for (const LPCWSTR name : unknown_names)
            EXPECT_TRUE(FAILED(ATL::AtlAxCreateControl(name, parent(), nullptr, nullptr)));
        parts_.reset();
        before_ = process_resources::now();
        parts_ = std::make_unique<parts>();
    }
    void forget_new_handles()
    {
        parts_.reset();
        before_.kernel_handles = process_resources::now().kernel_handles;
        parts_ = std::make_unique<parts>();
    }
    hosted_control& control() { return parts_->control; }
    hosted_class& control_class() { return parts_->factory; }
    HWND parent() { return parts_->parent; }

    HWND host_window = nullptr;

private:
    // Everything that must be destroyed before the counts are compared.
    struct parts
    {
        parts()
            : parent(CreateWindowExW(0, L"STATIC", L"", WS_POPUP, 0, 0, 300, 200, nullptr, nullptr, nullptr,
                                     nullptr))
        {
        }
        ~parts() { DestroyWindow(parent); }

        HWND parent;
        hosted_control control;
        hosted_class factory{[this](REFIID iid, void** out) {
            const HRESULT hr = control.record.note("CreateInstance");
            return FAILED(hr) ? hr : control.QueryInterface(iid, out);
        }};
    };

    std::unique_ptr<parts> parts_;
    process_resources before_;
};

} // namespace quill::test
