#include "atl/detail/type_library.h"

#include "atl/atlexcept.h"
#include "atl/detail/object_map.h"

namespace ATL {
namespace {

// Owns a TLIBATTR, which must be released through its ITypeLib.
class library_attributes
{
public:
    explicit library_attributes(ITypeLib* library) noexcept : library_(library)
    {
        result_ = library_->GetLibAttr(&attributes_);
        if (SUCCEEDED(result_) && !attributes_)
            result_ = E_UNEXPECTED;
    }
    ~library_attributes()
    {
        if (attributes_)
            library_->ReleaseTLibAttr(attributes_);
    }
    library_attributes(const library_attributes&) = delete;
    library_attributes& operator=(const library_attributes&) = delete;

    HRESULT result() const noexcept { return result_; }
    const TLIBATTR* operator->() const noexcept { return attributes_; }

private:
    ITypeLib* library_;
    TLIBATTR* attributes_ = nullptr;
    HRESULT result_ = E_FAIL;
};

bool per_user()
{
    bool enabled = false;
    AtlGetPerUserRegistration(&enabled);
    return enabled;
}

// The per-user functions are not exported by every version of oleaut32.dll.
template <class Function>
Function* automation_function(const char* name)
{
    const HMODULE automation = GetModuleHandleW(L"OLEAUT32.DLL");
    const FARPROC address = automation ? GetProcAddress(automation, name) : nullptr;
    // Through void*: a direct cast between function pointer types is a warning.
    // NOLINTNEXTLINE(bugprone-casting-through-void)
    return reinterpret_cast<Function*>(reinterpret_cast<void*>(address));
}

HRESULT register_library(ITypeLib* library, BSTR path, BSTR help_folder)
{
    if (!per_user())
        return RegisterTypeLib(library, path, help_folder);
    using register_for_user = HRESULT WINAPI(ITypeLib*, OLECHAR*, OLECHAR*);
    auto* const function = automation_function<register_for_user>("RegisterTypeLibForUser");
    return function ? function(library, path, help_folder) : AtlHresultFromLastError();
}

HRESULT unregister_library(const library_attributes& attributes)
{
    if (!per_user()) {
        return UnRegisterTypeLib(attributes->guid, attributes->wMajorVerNum, attributes->wMinorVerNum,
                                 attributes->lcid, attributes->syskind);
    }
    using unregister_for_user = HRESULT WINAPI(REFGUID, WORD, WORD, LCID, SYSKIND);
    auto* const function = automation_function<unregister_for_user>("UnRegisterTypeLibForUser");
    return function ? function(attributes->guid, attributes->wMajorVerNum, attributes->wMinorVerNum,
                               attributes->lcid, attributes->syskind)
                    : AtlHresultFromLastError();
}

} // namespace

std::wstring AtlGetModulePath(HINSTANCE instance)
{
    constexpr std::size_t longest_path = 32768;
    std::wstring path(MAX_PATH, L'\0');
    while (true) {
        const DWORD length = GetModuleFileNameW(instance, path.data(), static_cast<DWORD>(path.size()));
        if (length == 0)
            AtlThrow(AtlHresultFromLastError());
        if (length < path.size() || path.size() >= longest_path) {
            path.resize(length);
            return path;
        }
        path.resize(path.size() * 2);
    }
}

ATLAPI AtlLoadTypeLib(HINSTANCE instance, LPCOLESTR index, BSTR* path, ITypeLib** library) noexcept
{
    if (path)
        *path = nullptr;
    if (!library)
        return E_POINTER;
    *library = nullptr;
    try {
        const std::wstring file = AtlGetModulePath(instance) + (index ? index : L"");
        CComPtr<ITypeLib> loaded;
        const HRESULT hr = LoadTypeLibEx(file.c_str(), REGKIND_NONE, &loaded);
        if (FAILED(hr))
            return hr;
        if (!loaded)
            return TYPE_E_CANTLOADLIBRARY;
        if (path)
            *path = CComBSTR(file.c_str()).Detach();
        *library = loaded.Detach();
        return S_OK;
    } catch (...) {
        return AtlHresultFromException();
    }
}

ATLAPI AtlRegisterTypeLib(HINSTANCE instance, LPCOLESTR index) noexcept
{
    CComPtr<ITypeLib> library;
    CComBSTR path;
    const HRESULT hr = AtlLoadTypeLib(instance, index, &path, &library);
    if (FAILED(hr))
        return hr;
    try {
        const std::wstring module = AtlGetModulePath(instance);
        const CComBSTR folder(module.substr(0, module.find_last_of(L'\\') + 1).c_str());
        return register_library(library, path, folder);
    } catch (...) {
        return AtlHresultFromException();
    }
}

ATLAPI AtlUnRegisterTypeLib(HINSTANCE instance, LPCOLESTR index) noexcept
{
    CComPtr<ITypeLib> library;
    const HRESULT hr = AtlLoadTypeLib(instance, index, nullptr, &library);
    if (FAILED(hr))
        return hr;
    const library_attributes attributes(library);
    return SUCCEEDED(attributes.result()) ? unregister_library(attributes) : attributes.result();
}

} // namespace ATL
