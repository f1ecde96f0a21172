// A COM server DLL in the folder of the program, called through its exports.
#pragma once

#include <windows.h>

#include <objbase.h>

namespace quill::bench {

inline constexpr wchar_t module_name[] = L"QuillPDF.IE.dll";
inline constexpr CLSID active_document_class = {
    0x5e2c7a90, 0x1b3d, 0x4f6e, {0x8a, 0x21, 0xc4, 0xd9, 0xe0, 0x7b, 0x3f, 0x15}};
inline constexpr CLSID helper_class = {
    0x8d41f0b2, 0x6c7a, 0x4e93, {0xb5, 0xd8, 0x2a, 0x0f, 0x19, 0xc6, 0xe4, 0xd7}};

// Throws std::runtime_error on failure. Unloads the library at the end.
class loaded_library
{
public:
    explicit loaded_library(const wchar_t* name);
    ~loaded_library() { FreeLibrary(handle_); }
    loaded_library(const loaded_library&) = delete;
    loaded_library& operator=(const loaded_library&) = delete;

    // A new object of the class, with one reference.
    IUnknown* create(REFCLSID class_id) const;
    HMODULE handle() const { return handle_; }
    bool can_unload() const { return can_unload_() == S_OK; }

private:
    using get_class_object_function = HRESULT(STDAPICALLTYPE*)(REFCLSID, REFIID, void**);
    using can_unload_function = HRESULT(STDAPICALLTYPE*)();

    HMODULE handle_;
    get_class_object_function get_class_object_ = nullptr;
    can_unload_function can_unload_ = nullptr;
};

} // namespace quill::bench
