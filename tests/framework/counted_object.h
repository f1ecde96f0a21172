// An object with two interfaces whose reference count and queries a test can see.
#pragma once

#include "tests/support/fakes/com_object.h"

#include <ocidl.h>
#include <servprov.h>

namespace quill::test {

// References to it must be released before the end of its scope.
class counted_object : public test_object<IObjectWithSite, IServiceProvider>
{
public:
    STDMETHODIMP QueryInterface(REFIID iid, void** out) override
    {
        ++queries;
        return test_object::QueryInterface(iid, out);
    }
    STDMETHODIMP SetSite(IUnknown* given) override
    {
        site = given;
        return S_OK;
    }
    STDMETHODIMP GetSite(REFIID, void** out) override
    {
        *out = nullptr;
        return E_NOTIMPL;
    }
    STDMETHODIMP QueryService(REFGUID, REFIID, void** out) override
    {
        *out = nullptr;
        return E_NOTIMPL;
    }

    int queries = 0;
    IUnknown* site = nullptr;
};

} // namespace quill::test
