#pragma once

#include <wrl/client.h>

namespace quill::test {

// Owner of a reference that the caller already has, such as the first one of a new object. In place of
// ComPtr::Attach, which adds a reference in some versions of the toolchain's headers.
template <class Interface>
Microsoft::WRL::ComPtr<Interface> adopt(Interface* referenced)
{
    Microsoft::WRL::ComPtr<Interface> owner;
    *owner.GetAddressOf() = referenced;
    return owner;
}

} // namespace quill::test
