// A moniker that has a display name and nothing else.
#pragma once

#include "tests/support/host/fake_object.h"

#include <optional>
#include <string>

namespace quill::test {

// Only GetDisplayName without a bind context and a left moniker is expected; it is called
// "<name>::GetDisplayName".
class fake_moniker final : public fake_object<IMoniker>
{
public:
    fake_moniker(call_log& calls, const char* name);

    // Without a name, GetDisplayName fails with E_NOTIMPL.
    std::optional<std::wstring> display_name;

    STDMETHODIMP GetClassID(CLSID*) override { return unexpected("GetClassID"); }
    STDMETHODIMP IsDirty() override { return unexpected("IsDirty"); }
    STDMETHODIMP Load(IStream*) override { return unexpected("Load"); }
    STDMETHODIMP Save(IStream*, BOOL) override { return unexpected("Save"); }
    STDMETHODIMP GetSizeMax(ULARGE_INTEGER*) override { return unexpected("GetSizeMax"); }
    STDMETHODIMP BindToObject(IBindCtx*, IMoniker*, REFIID, void**) override
    {
        return unexpected("BindToObject");
    }
    STDMETHODIMP BindToStorage(IBindCtx*, IMoniker*, REFIID, void**) override
    {
        return unexpected("BindToStorage");
    }
    STDMETHODIMP Reduce(IBindCtx*, DWORD, IMoniker**, IMoniker**) override { return unexpected("Reduce"); }
    STDMETHODIMP ComposeWith(IMoniker*, BOOL, IMoniker**) override { return unexpected("ComposeWith"); }
    STDMETHODIMP Enum(BOOL, IEnumMoniker**) override { return unexpected("Enum"); }
    STDMETHODIMP IsEqual(IMoniker*) override { return unexpected("IsEqual"); }
    STDMETHODIMP Hash(DWORD*) override { return unexpected("Hash"); }
    STDMETHODIMP IsRunning(IBindCtx*, IMoniker*, IMoniker*) override { return unexpected("IsRunning"); }
    STDMETHODIMP GetTimeOfLastChange(IBindCtx*, IMoniker*, FILETIME*) override
    {
        return unexpected("GetTimeOfLastChange");
    }
    STDMETHODIMP Inverse(IMoniker**) override { return unexpected("Inverse"); }
    STDMETHODIMP CommonPrefixWith(IMoniker*, IMoniker**) override { return unexpected("CommonPrefixWith"); }
    STDMETHODIMP RelativePathTo(IMoniker*, IMoniker**) override { return unexpected("RelativePathTo"); }
    STDMETHODIMP GetDisplayName(IBindCtx* context, IMoniker* left, LPOLESTR* out) override;
    STDMETHODIMP ParseDisplayName(IBindCtx*, IMoniker*, LPOLESTR, ULONG*, IMoniker**) override
    {
        return unexpected("ParseDisplayName");
    }
    STDMETHODIMP IsSystemMoniker(DWORD*) override { return unexpected("IsSystemMoniker"); }

private:
    IUnknown* find(REFIID iid) override;
    HRESULT unexpected(const char* method) const;
};

} // namespace quill::test
