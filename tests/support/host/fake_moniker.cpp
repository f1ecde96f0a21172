#include "tests/support/host/fake_moniker.h"

#include <cstring>

namespace quill::test {

fake_moniker::fake_moniker(call_log& calls, const char* object_name) : logged_object(calls, object_name)
{
    calls.allow(name() + "::GetDisplayName");
}

STDMETHODIMP fake_moniker::GetDisplayName(IBindCtx* context, IMoniker* left, LPOLESTR* out)
{
    EXPECT_EQ(context, nullptr);
    EXPECT_EQ(left, nullptr);
    HRESULT result = S_OK;
    if (!wants_value(arrive(name() + "::GetDisplayName"), out, result))
        return result;
    if (!display_name)
        return E_NOTIMPL;
    const std::size_t size = (display_name->size() + 1) * sizeof(wchar_t);
    *out = static_cast<LPOLESTR>(CoTaskMemAlloc(size));
    std::memcpy(*out, display_name->c_str(), size);
    return S_OK;
}

} // namespace quill::test
