#include "tests/bench/support/loaded_library.h"

#include "tests/support/child_process.h"

#include <unknwn.h>

#include <cstring>
#include <stdexcept>

namespace quill::bench {
namespace {

template <class Function>
void look_up(HMODULE library, const char* name, Function& function)
{
    const FARPROC address = GetProcAddress(library, name);
    if (!address)
        throw std::runtime_error("a library does not export what it should");
    static_assert(sizeof function == sizeof address);
    std::memcpy(&function, &address, sizeof function);
}

} // namespace

loaded_library::loaded_library(const wchar_t* name)
    : handle_(LoadLibraryW(test::beside_this_program(name).c_str()))
{
    if (!handle_)
        throw std::runtime_error("a library does not load");
    look_up(handle_, "DllGetClassObject", get_class_object_);
    look_up(handle_, "DllCanUnloadNow", can_unload_);
}

IUnknown* loaded_library::create(REFCLSID class_id) const
{
    void* factory = nullptr;
    if (FAILED(get_class_object_(class_id, IID_IClassFactory, &factory)) || !factory)
        throw std::runtime_error("a library has no class object");
    void* object = nullptr;
    const HRESULT created =
        static_cast<IClassFactory*>(factory)->CreateInstance(nullptr, IID_IUnknown, &object);
    static_cast<IClassFactory*>(factory)->Release();
    if (FAILED(created) || !object)
        throw std::runtime_error("an object cannot be created");
    return static_cast<IUnknown*>(object);
}

} // namespace quill::bench
