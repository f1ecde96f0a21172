// Base of sinks for a dispatch interface of events.
#pragma once

#include "tests/support/fakes/com_object.h"

#include <atlbase.h>
#include <ocidl.h>

namespace quill::test {

// Derived classes handle the events in Invoke. A reference that the source keeps after Unadvise fails the
// test.
class event_sink : public test_object<IDispatch>
{
public:
    explicit event_sink(const IID& events) : events_(events) {}
    ~event_sink() override { unadvise(); }

    // Both fail the test if the source refuses.
    void advise(IUnknown* source)
    {
        const CComQIPtr<IConnectionPointContainer> container(source);
        ASSERT_TRUE(container);
        ASSERT_EQ(container->FindConnectionPoint(events_, &point_), S_OK);
        EXPECT_EQ(point_->Advise(this, &cookie_), S_OK);
    }
    void unadvise()
    {
        if (point_)
            EXPECT_EQ(point_->Unadvise(cookie_), S_OK);
        point_.Release();
    }

    STDMETHODIMP GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return E_NOTIMPL; }

private:
    IUnknown* find(REFIID iid) override
    {
        return IsEqualIID(iid, events_) ? unknown() : test_object::find(iid);
    }

    IID events_;
    CComPtr<IConnectionPoint> point_;
    DWORD cookie_ = 0;
};

} // namespace quill::test
