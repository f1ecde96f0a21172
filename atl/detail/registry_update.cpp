#include "atl/detail/registry_update.h"

#include "atl/atlbase.h"

namespace ATL::detail {
namespace {

// Write access is not available, or needed, for every key on the path.
constexpr REGSAM any_access = MAXIMUM_ALLOWED;

LSTATUS missing_is_success(LSTATUS status)
{
    return status == ERROR_FILE_NOT_FOUND || status == ERROR_PATH_NOT_FOUND ? ERROR_SUCCESS : status;
}

LSTATUS first_failure(LSTATUS first, LSTATUS second)
{
    return first != ERROR_SUCCESS ? first : second;
}

LSTATUS remove_tree(HKEY parent, const std::wstring& name)
{
    return missing_is_success(CRegKey::delete_tree(parent, name.c_str()));
}

bool has_subkeys(HKEY key)
{
    DWORD count = 0;
    return RegQueryInfoKeyW(key, nullptr, nullptr, nullptr, &count, nullptr, nullptr, nullptr, nullptr,
                            nullptr, nullptr, nullptr) == ERROR_SUCCESS &&
           count > 0;
}

LSTATUS write_content(HKEY key, const script_key& content);

LSTATUS write_key(HKEY parent, const script_key& entry)
{
    if (entry.kind == script_key_kind::force_remove || entry.kind == script_key_kind::delete_only) {
        const LSTATUS status = remove_tree(parent, entry.name);
        if (status != ERROR_SUCCESS || entry.kind == script_key_kind::delete_only)
            return status;
    }
    CRegKey key;
    const LSTATUS status = key.Create(parent, entry.name.c_str(), any_access);
    return status == ERROR_SUCCESS ? write_content(key, entry) : status;
}

LSTATUS write_content(HKEY key, const script_key& content)
{
    for (const script_value& value : content.values) {
        const LSTATUS status = RegSetValueExW(key, value.name.c_str(), 0, value.type, value.data.data(),
                                              static_cast<DWORD>(value.data.size()));
        if (status != ERROR_SUCCESS)
            return status;
    }
    for (const script_key& entry : content.keys) {
        const LSTATUS status = write_key(key, entry);
        if (status != ERROR_SUCCESS)
            return status;
    }
    return ERROR_SUCCESS;
}

LSTATUS remove_content(HKEY key, const script_key& content);

LSTATUS remove_key(HKEY parent, const script_key& entry)
{
    if (entry.kind == script_key_kind::delete_only)
        return ERROR_SUCCESS;
    if (entry.kind == script_key_kind::force_remove)
        return remove_tree(parent, entry.name);
    CRegKey key;
    LSTATUS status = key.Open(parent, entry.name.c_str(), any_access);
    if (status != ERROR_SUCCESS)
        return missing_is_success(status);
    status = remove_content(key, entry);
    if (entry.kind == script_key_kind::no_remove || has_subkeys(key))
        return status;
    key.Close();
    return first_failure(status, missing_is_success(RegDeleteKeyW(parent, entry.name.c_str())));
}

LSTATUS remove_content(HKEY key, const script_key& content)
{
    LSTATUS status = ERROR_SUCCESS;
    for (const script_value& value : content.values) {
        // The default value is deleted with its key or kept with it.
        if (!value.name.empty())
            status = first_failure(status, missing_is_success(RegDeleteValueW(key, value.name.c_str())));
    }
    for (const script_key& entry : content.keys)
        status = first_failure(status, remove_key(key, entry));
    return status;
}

// With per-user registration HKCR is redirected to the user's classes.
const wchar_t* section_path(HKEY& root)
{
    bool per_user = false;
    AtlGetPerUserRegistration(&per_user);
    if (root != HKEY_CLASSES_ROOT || !per_user)
        return nullptr;
    root = HKEY_CURRENT_USER;
    return L"Software\\Classes";
}

} // namespace

LSTATUS register_section(const script_section& section)
{
    HKEY root = section.root;
    const wchar_t* const path = section_path(root);
    if (!path)
        return write_content(root, section.content);
    CRegKey key;
    const LSTATUS status = key.Create(root, path, any_access);
    return status == ERROR_SUCCESS ? write_content(key, section.content) : status;
}

LSTATUS unregister_section(const script_section& section)
{
    HKEY root = section.root;
    const wchar_t* const path = section_path(root);
    if (!path)
        return remove_content(root, section.content);
    CRegKey key;
    const LSTATUS status = key.Open(root, path, any_access);
    return status == ERROR_SUCCESS ? remove_content(key, section.content) : missing_is_success(status);
}

} // namespace ATL::detail
