#include "tests/support/host/fake_moniker.h"

#include <cstring>

namespace quill::test {

fake_moniker::fake_moniker(call_log& calls, const char* object_name) : fake_object(calls, object_name)
{
    calls.allow(name() + "::GetDisplayName");
}

IUnknown* fake_moniker::find(REFIID iid)
{
    return IsEqualIID(iid, IID_IMoniker) ? this : nullptr;
}

HRESULT fake_moniker::unexpected(const char* method) const
{
    ADD_FAILURE() << "unexpected call: " << name() << "::" << method;
    return E_NOTIMPL;
}

STDMETHODIMP fake_moniker::GetDisplayName(IBindCtx* context, IMoniker* left, LPOLESTR* out)
{
    EXPECT_EQ(context, nullptr);
    EXPECT_EQ(left, nullptr);
    if (!out) {
        ADD_FAILURE() << "GetDisplayName without an out argument";
        return E_POINTER;
    }
    EXPECT_EQ(*out, nullptr) << "the out variable was not initialised";
    switch (arrive((name() + "::GetDisplayName").c_str())) {
    case bad_answer::failure:
        *out = nullptr;
        return E_FAIL;
    case bad_answer::failure_untouched:
        return E_NOTIMPL;
    case bad_answer::success_null:
        *out = nullptr;
        return S_OK;
    case bad_answer::success_untouched:
        return S_OK;
    case bad_answer::none:
        break;
    }
    if (!display_name)
        return E_NOTIMPL;
    const std::size_t size = (display_name->size() + 1) * sizeof(wchar_t);
    *out = static_cast<LPOLESTR>(CoTaskMemAlloc(size));
    std::memcpy(*out, display_name->c_str(), size);
    return S_OK;
}

} // namespace quill::test
