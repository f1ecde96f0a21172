// IQuickActivateImpl: combines the host's set-up calls into one. Controls here have no events or property
// notifications, so both cookies are 0.
#pragma once

#include "atl/detail/control_base.h"

namespace ATL {

template <class T>
class ATL_NO_VTABLE IQuickActivateImpl : public IQuickActivate
{
public:
    HRESULT STDMETHODCALLTYPE QuickActivate(QACONTAINER* pQACont, QACONTROL* pQACtrl) override
    {
        return derived()->IQuickActivate_QuickActivate(pQACont, pQACtrl);
    }
    HRESULT STDMETHODCALLTYPE SetContentExtent(LPSIZEL pSize) override
    {
        return derived()->IOleObject_SetExtent(DVASPECT_CONTENT, pSize);
    }
    HRESULT STDMETHODCALLTYPE GetContentExtent(LPSIZEL pSize) override
    {
        return derived()->IOleObject_GetExtent(DVASPECT_CONTENT, pSize);
    }

protected:
    ~IQuickActivateImpl() = default;

private:
    T* derived() noexcept { return static_cast<T*>(this); }
};

} // namespace ATL
