// Writes down what a browser object tells about navigations, and when.
#pragma once

#include <windows.h>

#include <atlbase.h>
#include <exdispid.h>
#include <ocidl.h>

#include <string>
#include <vector>

namespace quill::test {

class event_diary : public IDispatch
{
public:
    event_diary() = default;
    event_diary(const event_diary&) = delete;
    event_diary& operator=(const event_diary&) = delete;
    virtual ~event_diary(); // fails the test when somebody still holds it

    // Both fail the test when the browser refuses.
    void advise(IUnknown* browser);
    void unadvise();

    struct entry
    {
        DISPID id = 0;
        std::wstring address; // empty for events without one
        bool cancelled = false;
        double at = 0; // seconds of the performance counter
    };
    const std::vector<entry>& entries() const { return entries_; }
    // Each as "259 http://127.0.0.1:1/x", with " cancelled" at the end of a navigation that is.
    std::vector<std::string> lines() const;
    std::size_t count(DISPID id, const std::wstring& address) const;
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
