// An object with a reference count that a test can see, and several interfaces.
#pragma once

#include <windows.h>

#include <gtest/gtest.h>
#include <ocidl.h>

namespace quill::test {

// Lives on the stack of its test; at the end every reference must have been given back.
class counted_object : public IObjectWithSite, public IServiceProvider
{
public:
    counted_object() = default;
    virtual ~counted_object() { EXPECT_EQ(references, 0) << "references that were not given back"; }
    counted_object(const counted_object&) = delete;
    counted_object& operator=(const counted_object&) = delete;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppv) override
    {
        ++queries;
        *ppv = nullptr;
        if (riid == IID_IUnknown || riid == IID_IObjectWithSite)
            *ppv = static_cast<IObjectWithSite*>(this);
        else if (riid == IID_IServiceProvider)
            *ppv = static_cast<IServiceProvider*>(this);
        else
            return E_NOINTERFACE;
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return static_cast<ULONG>(++references); }
    ULONG STDMETHODCALLTYPE Release() override
    {
        EXPECT_GT(references, 0) << "a reference too many was given back";
        return static_cast<ULONG>(--references);
    }
    HRESULT STDMETHODCALLTYPE SetSite(IUnknown* given) override
    {
        site = given;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetSite(REFIID, void** ppv) override
    {
        *ppv = nullptr;
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE QueryService(REFGUID, REFIID, void** ppv) override
    {
        *ppv = nullptr;
        return E_NOTIMPL;
    }
    IUnknown* unknown() { return static_cast<IObjectWithSite*>(this); }

    long references = 0;
    int queries = 0;
    IUnknown* site = nullptr;
};

} // namespace quill::test
