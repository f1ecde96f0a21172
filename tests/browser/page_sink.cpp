#include "tests/browser/page_sink.h"

#include "stand_ins/html_engine/identifiers.h"
#include "tests/browser/html_page_access.h"

#include <gtest/gtest.h>
#include <ocidl.h>

#include <algorithm>

namespace quill::test {

page_sink::page_sink() : event_sink(IID_document_events) {}

int page_sink::count(DISPID id) const
{
    return static_cast<int>(
        std::count_if(events_.begin(), events_.end(), [&](const event& one) { return one.id == id; }));
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
