// The baseline of the helper object: attaches itself to a browser and does the minimum of the task.
#pragma once

#include "tests/bench/page/engine_objects.h"

namespace quill::bench {

enum class sink_task
{
    nothing,
    read_setting,        // at SetSite: the path of the editor, as the helper object reads it
    read_links,          // at DocumentComplete: the URL of every link of the page
    read_links_and_pdfs, // and the markup of links to PDFs
    record_page,         // and the generator in the head of the page, and a sink for the events of the page
};

class plain_helper : public counted<IObjectWithSite, IDispatch>
{
public:
    explicit plain_helper(sink_task task) : task_(task) {}

    HRESULT STDMETHODCALLTYPE SetSite(IUnknown* site) override;
    HRESULT STDMETHODCALLTYPE GetSite(REFIID, void**) override { return E_NOTIMPL; }

    // The browser's events and a page's.
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID event, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*,
                                     UINT*) override;

protected:
    IUnknown* find_interface(REFIID iid) override;

private:
    void complete();

    const sink_task task_;
    CComPtr<IWebBrowser2> browser_;
    CComPtr<IDispatch> recorded_; // the last page
    DWORD cookie_ = 0;
    DWORD page_cookie_ = 0;
};

} // namespace quill::bench
