// Receives a page's document events as an add-on's sink does: by dispatch numbers.
#pragma once

#include <windows.h>

#include <atlbase.h>
#include <mshtml.h>

#include <functional>
#include <string>
#include <vector>

namespace quill::test {

class page_sink : public IDispatch
{
public:
    page_sink() = default;
    page_sink(const page_sink&) = delete;
    page_sink& operator=(const page_sink&) = delete;
    virtual ~page_sink(); // fails the test when somebody still holds it

    // Both fail the test when the page refuses.
    void advise(IUnknown* page);
    void unadvise();

    struct event
    {
        DISPID id = 0;
        std::wstring type;
        std::wstring source; // identifier of the element, empty for none
    };
    const std::vector<event>& events() const { return events_; }
    int count(DISPID id) const;

    // Called for every click; what it returns is the event's result.
    std::function<VARIANT_BOOL(IHTMLEventObj* event)> on_click;

    STDMETHODIMP QueryInterface(REFIID iid, void** out) override;
    STDMETHODIMP_(ULONG) AddRef() override { return ++references_; }
    STDMETHODIMP_(ULONG) Release() override { return --references_; }
    STDMETHODIMP GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return E_NOTIMPL; }
    STDMETHODIMP Invoke(DISPID id, REFIID, LCID, WORD flags, DISPPARAMS* parameters, VARIANT* result,
                        EXCEPINFO*, UINT*) override;

private:
    ULONG references_ = 0;
    CComPtr<IConnectionPoint> point_;
    DWORD cookie_ = 0;
    std::vector<event> events_;
};

} // namespace quill::test
