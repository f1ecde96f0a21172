// An event source with one connection point, as browsers and documents have.
#pragma once

#include "tests/support/fakes/com_object.h"

#include <windows.h>

#include <exdisp.h>
#include <gtest/gtest.h>
#include <mshtml.h>
#include <ocidl.h>
#include <olectl.h>
#include <unimplemented_interfaces.h>

#include <map>
#include <vector>

namespace quill::test {

// Queries sinks for the event interface first and then for IDispatch.
class event_source : public test_object<without_IConnectionPointContainer<IConnectionPointContainer>,
                                        without_IConnectionPoint<IConnectionPoint>>
{
public:
    explicit event_source(const IID& iid) : iid_(iid) {}
    ~event_source() override { EXPECT_TRUE(sinks_.empty()) << "sinks that were not unadvised"; }

    std::size_t connections() const { return sinks_.size(); }

    // Calls every sink; the arguments are in the order of their declaration. Returns the last sink's result.
    HRESULT fire(DISPID id, std::vector<VARIANT> arguments, VARIANT* result = nullptr)
    {
        std::vector<VARIANT> reversed(arguments.rbegin(), arguments.rend());
        DISPPARAMS parameters{reversed.data(), nullptr, static_cast<UINT>(reversed.size()), 0};
        HRESULT hr = S_OK;
        const auto sinks = sinks_; // a sink may unadvise itself while it is called
        for (const auto& [cookie, sink] : sinks)
            hr = sink->Invoke(id, IID_NULL, LOCALE_NEUTRAL, DISPATCH_METHOD, &parameters, result, nullptr,
                              nullptr);
        return hr;
    }

    HRESULT STDMETHODCALLTYPE FindConnectionPoint(REFIID riid, IConnectionPoint** point) override
    {
        *point = nullptr;
        if (riid != iid_)
            return CONNECT_E_NOCONNECTION;
        AddRef();
        *point = this;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Advise(IUnknown* unknown, DWORD* cookie) override
    {
        IDispatch* sink = nullptr;
        if (FAILED(unknown->QueryInterface(iid_, reinterpret_cast<void**>(&sink))) &&
            FAILED(unknown->QueryInterface(IID_IDispatch, reinterpret_cast<void**>(&sink))))
            return CONNECT_E_CANNOTCONNECT;
        *cookie = ++last_cookie_;
        sinks_[*cookie] = sink;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Unadvise(DWORD cookie) override
    {
        const auto found = sinks_.find(cookie);
        if (found == sinks_.end())
            return CONNECT_E_NOCONNECTION;
        IDispatch* const sink = found->second;
        sinks_.erase(found);
        sink->Release();
        return S_OK;
    }

private:
    IUnknown* find(REFIID iid) override
    {
        return iid == IID_IConnectionPoint ? nullptr : test_object::find(iid);
    }

    IID iid_;
    DWORD last_cookie_ = 0x100;
    std::map<DWORD, IDispatch*> sinks_;
};

} // namespace quill::test
