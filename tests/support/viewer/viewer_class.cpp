#include "tests/support/viewer/viewer_class.h"

namespace quill::test {
namespace {

constexpr wchar_t class_key[] = L"SOFTWARE\\Classes\\QuillPDF.QuillPDFCtrl\\CLSID";
constexpr wchar_t prog_id_key[] = L"SOFTWARE\\Classes\\QuillPDF.QuillPDFCtrl";
constexpr wchar_t class_text[] = L"{6B1F7D52-93C4-4E0A-A8D7-1C5E20F4B963}";
constexpr CLSID class_id = {0x6b1f7d52, 0x93c4, 0x4e0a, {0xa8, 0xd7, 0x1c, 0x5e, 0x20, 0xf4, 0xb9, 0x63}};
constexpr DWORD mutex_timeout_ms = 60'000;

LSTATUS set_default(const wchar_t* key, const std::wstring& value)
{
    return RegSetKeyValueW(HKEY_LOCAL_MACHINE, key, nullptr, REG_SZ, value.c_str(),
                           static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t)));
}

} // namespace

viewer_registration::viewer_registration()
{
    mutex_ = CreateMutexW(nullptr, FALSE, L"QuillTestViewerRegistration");
    const DWORD waited = WaitForSingleObject(mutex_, mutex_timeout_ms);
    EXPECT_TRUE(waited == WAIT_OBJECT_0 || waited == WAIT_ABANDONED);
    wchar_t old[64]{};
    DWORD size = sizeof old;
    had_class_ = RegGetValueW(HKEY_LOCAL_MACHINE, class_key, nullptr, RRF_RT_REG_SZ, nullptr, old, &size) ==
                     ERROR_SUCCESS &&
                 std::wstring{old} != class_text;
    old_class_ = old;
    EXPECT_EQ(set_default(class_key, class_text), ERROR_SUCCESS);
}

void viewer_registration::remove()
{
    EXPECT_EQ(RegDeleteTreeW(HKEY_LOCAL_MACHINE, prog_id_key), ERROR_SUCCESS);
}

viewer_registration::~viewer_registration()
{
    if (had_class_)
        set_default(class_key, old_class_);
    else
        RegDeleteTreeW(HKEY_LOCAL_MACHINE, prog_id_key);
    ReleaseMutex(mutex_);
    CloseHandle(mutex_);
}

viewer_class::viewer_class(viewer_script& script)
    : logged_object(script.calls, "viewer class"), script_(script)
{
    EXPECT_EQ(CoRegisterClassObject(class_id, static_cast<IClassFactory*>(this), CLSCTX_INPROC_SERVER,
                                    REGCLS_MULTIPLEUSE, &cookie_),
              S_OK);
}

viewer_class::~viewer_class()
{
    revoke();
    EXPECT_EQ(living_viewers(), 0);
}

int viewer_class::living_viewers() const
{
    int living = 0;
    for (const auto& viewer : viewers_)
        living += viewer->references() > 0;
    return living;
}

void viewer_class::revoke()
{
    if (cookie_)
        CoRevokeClassObject(cookie_);
    cookie_ = 0;
}

IUnknown* viewer_class::find(REFIID iid)
{
    return IsEqualIID(iid, IID_IClassFactory) ? this : nullptr;
}

STDMETHODIMP viewer_class::CreateInstance(IUnknown* outer, REFIID iid, void** out)
{
    if (!out) {
        ADD_FAILURE() << "CreateInstance without an out argument";
        return E_POINTER;
    }
    *out = nullptr;
    EXPECT_EQ(outer, nullptr) << "the viewer is not aggregated";
    if (const call_fault fault = arrive("viewer class::CreateInstance"); fault != call_fault::none)
        return is_error(fault) ? E_FAIL : S_OK;
    viewers_.push_back(std::make_unique<recording_viewer>(script_));
    return viewers_.back()->QueryInterface(iid, out);
}

} // namespace quill::test
