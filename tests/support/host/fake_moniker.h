// A moniker that implements GetDisplayName only.
#pragma once

#include "tests/support/fakes/logged_object.h"

#include <exdisp.h>
#include <mshtml.h>
#include <oaidl.h>
#include <ocidl.h>
#include <unimplemented_interfaces.h>

#include <optional>
#include <string>

namespace quill::test {

// Expects GetDisplayName without a bind context and a left moniker; logged as "<name>::GetDisplayName".
class fake_moniker final : public logged_object<without_IMoniker<IMoniker>>
{
public:
    fake_moniker(call_log& calls, const char* name);

    // Without a name, GetDisplayName fails with E_NOTIMPL.
    std::optional<std::wstring> display_name;

    STDMETHODIMP GetDisplayName(IBindCtx* context, IMoniker* left, LPOLESTR* out) override;
};

} // namespace quill::test
