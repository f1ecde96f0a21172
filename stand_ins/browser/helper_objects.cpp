#include "stand_ins/browser/helper_objects.h"

#include <objbase.h>

#include <array>
#include <utility>

namespace quill {
namespace {

constexpr wchar_t registration[] =
    L"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Browser Helper Objects";

} // namespace

std::vector<CLSID> registered_helper_objects()
{
    CRegKey key;
    std::vector<CLSID> classes;
    if (key.Open(HKEY_LOCAL_MACHINE, registration, KEY_READ) != ERROR_SUCCESS)
        return classes;
    std::array<wchar_t, 64> name = {};
    for (DWORD index = 0;; ++index) {
        auto length = static_cast<DWORD>(name.size());
        const LSTATUS status =
            RegEnumKeyExW(key, index, name.data(), &length, nullptr, nullptr, nullptr, nullptr);
        CLSID class_id = {};
        if (status == ERROR_SUCCESS && SUCCEEDED(CLSIDFromString(name.data(), &class_id)))
            classes.push_back(class_id);
        else if (status != ERROR_SUCCESS && status != ERROR_MORE_DATA)
            return classes;
    }
}

std::size_t helper_objects::load(IUnknown* tab)
{
    for (const CLSID& class_id : registered_helper_objects()) {
        CComPtr<IObjectWithSite> object;
        if (SUCCEEDED(CoCreateInstance(class_id, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&object))) &&
            object && SUCCEEDED(object->SetSite(tab)))
            objects_.push_back(object);
    }
    return objects_.size();
}

void helper_objects::unload()
{
    const auto objects = std::exchange(objects_, {});
    for (const auto& object : objects)
        object->SetSite(nullptr);
}

} // namespace quill
