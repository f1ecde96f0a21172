// The module object of the framework's test program, with three classes in its map and its own type library.
#pragma once

#include <atlbase.h>
#include <atlcom.h>

#include <string>
#include <vector>

namespace quill::test {

inline constexpr GUID LIBID_framework = {
    0x3C0B7A11, 0x52D4, 0x4E6F, {0x9A, 0x10, 0x6D, 0x2B, 0x88, 0x41, 0x7E, 0x01}};
inline constexpr CLSID CLSID_first = {
    0x3C0B7A11, 0x52D4, 0x4E6F, {0x9A, 0x10, 0x6D, 0x2B, 0x88, 0x41, 0x7E, 0x02}};
inline constexpr CLSID CLSID_second = {
    0x3C0B7A11, 0x52D4, 0x4E6F, {0x9A, 0x10, 0x6D, 0x2B, 0x88, 0x41, 0x7E, 0x03}};
inline constexpr CLSID CLSID_hidden = {
    0x3C0B7A11, 0x52D4, 0x4E6F, {0x9A, 0x10, 0x6D, 0x2B, 0x88, 0x41, 0x7E, 0x04}};

// The calls of the classes in the map, in order: "register first", "unregister module", ...
std::vector<std::string>& map_events();
// The step of that name fails with E_ABORT until this is cleared.
std::string& failing_step();
HRESULT map_step(const std::string& step);

class framework_module : public CAtlDllModuleT<framework_module>
{
public:
    DECLARE_LIBID(LIBID_framework)

    static HRESULT WINAPI UpdateRegistryAppId(BOOL bRegister) noexcept
    {
        return map_step(bRegister ? "register module" : "unregister module");
    }
};

framework_module& the_module();

} // namespace quill::test
