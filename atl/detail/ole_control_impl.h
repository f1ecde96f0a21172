// IOleControlImpl: a control without mnemonics that reads ambient properties on demand.
#pragma once

#include "atl/detail/control_base.h"

namespace ATL {

template <class T>
class ATL_NO_VTABLE IOleControlImpl : public IOleControl
{
public:
    HRESULT STDMETHODCALLTYPE GetControlInfo(CONTROLINFO*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE OnMnemonic(LPMSG) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE OnAmbientPropertyChange(DISPID) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE FreezeEvents(BOOL bFreeze) override
    {
        if (bFreeze)
            ++m_nFreezeEvents;
        else if (m_nFreezeEvents > 0)
            --m_nFreezeEvents;
        return S_OK;
    }

    // While positive the host does not accept events.
    short m_nFreezeEvents = 0;

protected:
    ~IOleControlImpl() = default;
};

} // namespace ATL
