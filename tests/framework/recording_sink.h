// An advise sink that records what it hears, with a count of its own.
#pragma once

#include "tests/framework/call_record.h"

#include <windows.h>

#include <objidl.h>

namespace quill::test {

class recording_sink final : public IAdviseSink
{
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override
    {
        *out = iid == IID_IUnknown || iid == IID_IAdviseSink ? this : nullptr;
        if (!*out)
            return E_NOINTERFACE;
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return references.add(); }
    ULONG STDMETHODCALLTYPE Release() override { return references.drop(); }
    void STDMETHODCALLTYPE OnDataChange(FORMATETC*, STGMEDIUM*) override { record.note("OnDataChange"); }
    void STDMETHODCALLTYPE OnViewChange(DWORD, LONG) override { record.note("OnViewChange"); }
    void STDMETHODCALLTYPE OnRename(IMoniker*) override { record.note("OnRename"); }
    void STDMETHODCALLTYPE OnSave() override { record.note("OnSave"); }
    void STDMETHODCALLTYPE OnClose() override { record.note("OnClose"); }

    counted references;
    call_record record;
};

} // namespace quill::test
