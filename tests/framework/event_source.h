// A source of events with one real connection point, as browsers and documents have.
#pragma once

#include <windows.h>

#include <gtest/gtest.h>
#include <ocidl.h>
#include <olectl.h>

#include <map>
#include <vector>

namespace quill::test {

// Lives on the stack of its test. Sinks are asked for the event interface first and for IDispatch after that.
class event_source : public IConnectionPointContainer, public IConnectionPoint
{
public:
    explicit event_source(const IID& iid) : iid_(iid) {}
    virtual ~event_source()
    {
        EXPECT_EQ(references_, 0) << "references that were not given back";
        EXPECT_TRUE(sinks_.empty()) << "sinks that were not unadvised";
    }
    event_source(const event_source&) = delete;
    event_source& operator=(const event_source&) = delete;

    IUnknown* unknown() { return static_cast<IConnectionPointContainer*>(this); }
    std::size_t connections() const { return sinks_.size(); }

    // Calls every sink; the arguments are in the order of their declaration. The last sink's answer.
    HRESULT fire(DISPID id, std::vector<VARIANT> arguments, VARIANT* result = nullptr)
    {
        std::vector<VARIANT> reversed(arguments.rbegin(), arguments.rend());
        DISPPARAMS parameters{reversed.data(), nullptr, static_cast<UINT>(reversed.size()), 0};
        HRESULT hr = S_OK;
        const auto sinks = sinks_; // a sink may leave while it is called
        for (const auto& [cookie, sink] : sinks)
            hr = sink->Invoke(id, IID_NULL, LOCALE_NEUTRAL, DISPATCH_METHOD, &parameters, result, nullptr,
                              nullptr);
        return hr;
    }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppv) override
    {
        *ppv = nullptr;
        if (riid == IID_IUnknown || riid == IID_IConnectionPointContainer)
            *ppv = static_cast<IConnectionPointContainer*>(this);
        else
            return E_NOINTERFACE;
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return static_cast<ULONG>(++references_); }
    ULONG STDMETHODCALLTYPE Release() override
    {
        EXPECT_GT(references_, 0);
        return static_cast<ULONG>(--references_);
    }
    HRESULT STDMETHODCALLTYPE EnumConnectionPoints(IEnumConnectionPoints**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE FindConnectionPoint(REFIID riid, IConnectionPoint** point) override
    {
        *point = nullptr;
        if (riid != iid_)
            return CONNECT_E_NOCONNECTION;
        AddRef();
        *point = this;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetConnectionInterface(IID*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetConnectionPointContainer(IConnectionPointContainer**) override
    {
        return E_NOTIMPL;
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
    HRESULT STDMETHODCALLTYPE EnumConnections(IEnumConnections**) override { return E_NOTIMPL; }

private:
    IID iid_;
    long references_ = 0;
    DWORD last_cookie_ = 0x100;
    std::map<DWORD, IDispatch*> sinks_;
};

} // namespace quill::test
