// Called by the generated base classes of <unimplemented_interfaces.h> for a method that a fake does not
// implement.
#include <windows.h>

#include <gtest/gtest.h>

HRESULT unimplemented_method(const char* name) noexcept;

HRESULT unimplemented_method(const char* name) noexcept
{
    ADD_FAILURE() << "unexpected call: " << name;
    return E_NOTIMPL;
}
