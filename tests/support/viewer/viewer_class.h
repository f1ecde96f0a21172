// Registers the recording viewer under the ProgID of the viewer control, for this process only.
#pragma once

#include "tests/support/fakes/logged_object.h"
#include "tests/support/viewer/recording_viewer.h"

#include <memory>
#include <vector>

namespace quill::test {

inline constexpr wchar_t viewer_prog_id[] = L"QuillPDF.QuillPDFCtrl";

// In its scope, the registry maps the ProgID to the class of the test viewer. A named mutex excludes the
// other test programs of the session.
class viewer_registration
{
public:
    viewer_registration();
    viewer_registration(const viewer_registration&) = delete;
    viewer_registration& operator=(const viewer_registration&) = delete;
    ~viewer_registration();

    // Removes the ProgID, as on a machine without the suite.
    void remove();

private:
    HANDLE mutex_ = nullptr;
    bool had_class_ = false;
    std::wstring old_class_;
};

// The in-process class object. Needs an initialised apartment; at its end every viewer must be released.
class viewer_class final : public logged_object<IClassFactory>
{
public:
    explicit viewer_class(viewer_script& script);
    ~viewer_class() override;

    const std::vector<std::unique_ptr<recording_viewer>>& viewers() const { return viewers_; }
    int living_viewers() const;

    // Revokes the class object, so that the ProgID names a class that is not registered. The system leaks two
    // handles each time such a class is requested.
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
