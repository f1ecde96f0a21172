#include "tests/browser/page_sink.h"

#include "stand_ins/html_engine/identifiers.h"
#include "tests/browser/html_page_access.h"

#include <gtest/gtest.h>
#include <ocidl.h>

#include <algorithm>

namespace quill::test {

page_sink::~page_sink()
{
    unadvise();
    EXPECT_EQ(references_, 0u) << "somebody still holds the sink";
}

void page_sink::advise(IUnknown* page)
{
    const CComQIPtr<IConnectionPointContainer> container(page);
    ASSERT_TRUE(container);
    ASSERT_EQ(container->FindConnectionPoint(IID_document_events, &point_), S_OK);
    EXPECT_EQ(point_->Advise(this, &cookie_), S_OK);
}

void page_sink::unadvise()
{
    if (point_)
        EXPECT_EQ(point_->Unadvise(cookie_), S_OK);
    point_.Release();
}

int page_sink::count(DISPID id) const
{
    return static_cast<int>(
        std::count_if(events_.begin(), events_.end(), [&](const event& one) { return one.id == id; }));
}

STDMETHODIMP page_sink::QueryInterface(REFIID iid, void** out)
{
    *out = nullptr;
    if (iid != IID_IUnknown && iid != IID_IDispatch && iid != IID_document_events)
        return E_NOINTERFACE;
    *out = static_cast<IDispatch*>(this);
    AddRef();
    return S_OK;
}

STDMETHODIMP page_sink::Invoke(DISPID id, REFIID, LCID, WORD flags, DISPPARAMS* parameters, VARIANT* result,
                               EXCEPINFO*, UINT*)
{
    EXPECT_EQ(flags, DISPATCH_METHOD);
    EXPECT_EQ(parameters->cArgs, 1u);
    EXPECT_EQ(parameters->rgvarg[0].vt, VT_DISPATCH);
    const CComQIPtr<IHTMLEventObj> object(parameters->rgvarg[0].pdispVal);
    EXPECT_TRUE(object);
    CComBSTR type;
    CComPtr<IHTMLElement> source;
    EXPECT_EQ(object->get_type(&type), S_OK);
    EXPECT_EQ(object->get_srcElement(&source), S_OK);
    events_.push_back({id, type.m_str, source ? id_of(source) : std::wstring()});
    if (id == event_click && on_click && result != nullptr) {
        result->vt = VT_BOOL;
        result->boolVal = on_click(object);
    }
    return S_OK;
}

} // namespace quill::test
