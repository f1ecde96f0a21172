// Records a browser's navigation events with their times.
#pragma once

#include <windows.h>

#include <atlbase.h>
#include <exdispid.h>
#include <ocidl.h>

#include <string>
#include <vector>

namespace quill::test {

class event_log : public IDispatch
{
public:
    event_log() = default;
    event_log(const event_log&) = delete;
    event_log& operator=(const event_log&) = delete;
    virtual ~event_log(); // fails the test if it is still referenced

    // Both fail the test if the browser fails.
    void advise(IUnknown* browser);
    void unadvise();

    struct entry
    {
        DISPID id = 0;
        std::wstring url; // empty for events without one
        bool cancelled = false;
        double at = 0; // seconds of the performance counter
    };
    const std::vector<entry>& entries() const { return entries_; }
    // The entries as "259 http://127.0.0.1:1/x", with " cancelled" after a cancelled navigation.
    std::vector<std::string> lines() const;
    std::size_t count(DISPID id, const std::wstring& url) const;
    void clear() { entries_.clear(); }

    STDMETHODIMP QueryInterface(REFIID iid, void** out) override;
    STDMETHODIMP_(ULONG) AddRef() override { return ++references_; }
    STDMETHODIMP_(ULONG) Release() override { return --references_; }
    STDMETHODIMP GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return E_NOTIMPL; }
    STDMETHODIMP Invoke(DISPID id, REFIID, LCID, WORD flags, DISPPARAMS* parameters, VARIANT*, EXCEPINFO*,
                        UINT*) override;

private:
    ULONG references_ = 0;
    CComPtr<IConnectionPoint> point_;
    DWORD cookie_ = 0;
    std::vector<entry> entries_;
};

} // namespace quill::test
