// Makes the recording viewer the control that the viewer's ProgID names, for this process only.
#pragma once

#include "tests/support/host/fake_object.h"
#include "tests/support/viewer/recording_viewer.h"

#include <memory>
#include <vector>

namespace quill::test {

inline constexpr wchar_t viewer_prog_id[] = L"QuillPDF.QuillPDFCtrl";

// While an instance lives, the registry maps the ProgID to the test viewer's class; afterwards it is as
// before. A named mutex keeps the test programs of one session from getting into each other's way.
class viewer_registration
{
public:
    viewer_registration();
    viewer_registration(const viewer_registration&) = delete;
    viewer_registration& operator=(const viewer_registration&) = delete;
    ~viewer_registration();

    // Takes the ProgID away, as on a machine without the suite.
    void remove();

private:
    HANDLE mutex_ = nullptr;
    bool had_class_ = false;
    std::wstring old_class_;
};

// The in-process class object. Needs an initialised apartment; at its end every viewer must be released.
class viewer_class final : public fake_object<IClassFactory>
{
public:
    explicit viewer_class(viewer_script& script);
    ~viewer_class() override;

    const std::vector<std::unique_ptr<recording_viewer>>& viewers() const { return viewers_; }
    int living_viewers() const;

    // Takes the class object away: the ProgID names a class that nobody serves. The system itself keeps two
    // handles each time such a class is asked for.
    void revoke();

    STDMETHODIMP CreateInstance(IUnknown* outer, REFIID iid, void** out) override;
    STDMETHODIMP LockServer(BOOL) override { return S_OK; }

private:
    IUnknown* find(REFIID iid) override;
    bool queries_can_fail() const override { return false; }

    viewer_script& script_;
    std::vector<std::unique_ptr<recording_viewer>> viewers_;
    DWORD cookie_ = 0;
};

} // namespace quill::test
