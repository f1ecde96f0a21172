// The module as a browser uses it: loaded as a DLL, called through its exports, unloaded at the end.
#pragma once

#include <windows.h>

#include <objbase.h>

namespace quill::test {

inline constexpr CLSID active_document_class_id = {
    0x5e2c7a90, 0x1b3d, 0x4f6e, {0x8a, 0x21, 0xc4, 0xd9, 0xe0, 0x7b, 0x3f, 0x15}};

// Throws std::runtime_error if the DLL does not load. At the end DllCanUnloadNow must return S_OK and the DLL
// must be unloaded.
class module_under_test
{
public:
    module_under_test();
    module_under_test(const module_under_test&) = delete;
    module_under_test& operator=(const module_under_test&) = delete;
    ~module_under_test();

    HMODULE handle() const { return handle_; }
    HRESULT get_class_object(REFCLSID class_id, REFIID iid, void** out) const;
    HRESULT can_unload_now() const;

private:
    using get_class_object_function = HRESULT(STDAPICALLTYPE*)(REFCLSID, REFIID, void**);
    using can_unload_function = HRESULT(STDAPICALLTYPE*)();

    HMODULE handle_ = nullptr;
    get_class_object_function get_class_object_ = nullptr;
    can_unload_function can_unload_ = nullptr;
};

} // namespace quill::test
