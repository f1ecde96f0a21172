#include "tests/support/viewer/recording_viewer.h"

namespace quill::test {

recording_viewer::recording_viewer(viewer_script& script)
    : logged_object(script.calls, "viewer"), script_(script), ole_object_(*this)
{
}

IUnknown* recording_viewer::find(REFIID iid)
{
    EXPECT_FALSE(released_) << "the viewer is used after its last Release";
    if (IsEqualIID(iid, IID_IDispatch))
        return this;
    if (IsEqualIID(iid, viewer_interface_id))
        return script_.answers_viewer_interface ? this : nullptr;
    return script_.answers_ole_object ? ole_object_.find(iid) : nullptr;
}

STDMETHODIMP recording_viewer::GetTypeInfoCount(UINT* count)
{
    *count = 0;
    return S_OK;
}

STDMETHODIMP recording_viewer::GetTypeInfo(UINT, LCID, ITypeInfo** out)
{
    *out = nullptr;
    return E_NOTIMPL;
}

STDMETHODIMP recording_viewer::GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*)
{
    ADD_FAILURE() << "the viewer's methods are reached by number, not by name";
    return DISP_E_UNKNOWNNAME;
}

STDMETHODIMP recording_viewer::Invoke(DISPID id, REFIID iid, LCID locale, WORD flags, DISPPARAMS* parameters,
                                      VARIANT* result, EXCEPINFO*, UINT*)
{
    EXPECT_FALSE(released_) << "the viewer is called after its last Release";
    return script_.invoke(id, iid, locale, flags, parameters, result);
}

} // namespace quill::test
