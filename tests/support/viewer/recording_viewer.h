// The strict stand-in for the suite's viewer control: records every automation call, checks its form and
// returns what the script of the test says.
#pragma once

#include "tests/support/fakes/logged_object.h"
#include "tests/support/viewer/viewer_ole_object.h"
#include "tests/support/viewer/viewer_script.h"

namespace quill::test {

// Kept until its class object is destroyed, also after its last Release, so that a call to a released viewer
// is detected.
class recording_viewer final : public logged_object<IDispatch>
{
public:
    explicit recording_viewer(viewer_script& script);

    bool released() const { return released_; }
    HWND ole_window() const { return ole_object_.window(); }

    STDMETHODIMP GetTypeInfoCount(UINT* count) override;
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo** out) override;
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override;
    STDMETHODIMP Invoke(DISPID id, REFIID iid, LCID locale, WORD flags, DISPPARAMS* parameters,
                        VARIANT* result, EXCEPINFO*, UINT*) override;

private:
    IUnknown* find(REFIID iid) override;
    void on_last_release() override { released_ = true; }

    viewer_script& script_;
    viewer_ole_object ole_object_;
    bool released_ = false;
};

} // namespace quill::test
