// IQuickActivateImpl: everything a host wants to tell and to know at creation, in one call. No control here
// has events or property notifications, so both cookies are 0.
#pragma once

#include "atl/detail/control_base.h"

namespace ATL {

template <class T>
class ATL_NO_VTABLE IQuickActivateImpl : public IQuickActivate
{
public:
    HRESULT STDMETHODCALLTYPE QuickActivate(QACONTAINER* pQACont, QACONTROL* pQACtrl) override
    {
        return Self()->IQuickActivate_QuickActivate(pQACont, pQACtrl);
    }
    HRESULT STDMETHODCALLTYPE SetContentExtent(LPSIZEL pSize) override
    {
        return Self()->IOleObject_SetExtent(DVASPECT_CONTENT, pSize);
    }
    HRESULT STDMETHODCALLTYPE GetContentExtent(LPSIZEL pSize) override
    {
        return Self()->IOleObject_GetExtent(DVASPECT_CONTENT, pSize);
    }

protected:
    ~IQuickActivateImpl() = default;

private:
    T* Self() noexcept { return static_cast<T*>(this); }
};

} // namespace ATL
