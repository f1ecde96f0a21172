#include "atl/statreg.h"

#include "atl/atlexcept.h"
#include "atl/detail/registry_update.h"

#include <vector>

namespace ATL {

bool CRegObject::ignore_case::operator()(const std::wstring& left, const std::wstring& right) const noexcept
{
    return CompareStringOrdinal(left.c_str(), static_cast<int>(left.size()), right.c_str(),
                                static_cast<int>(right.size()), TRUE) == CSTR_LESS_THAN;
}

HRESULT CRegObject::AddReplacement(LPCOLESTR key, LPCOLESTR item) noexcept
{
    if (!key || !item)
        return E_INVALIDARG;
    try {
        m_replacements.insert_or_assign(key, item);
        return S_OK;
    } catch (...) {
        return AtlHresultFromException();
    }
}

HRESULT CRegObject::ClearReplacements() noexcept
{
    m_replacements.clear();
    return S_OK;
}

HRESULT CRegObject::ResourceRegister(HINSTANCE instance, UINT id, LPCOLESTR type) noexcept
{
    return update_from_resource(instance, id, type, true);
}

HRESULT CRegObject::ResourceUnregister(HINSTANCE instance, UINT id, LPCOLESTR type) noexcept
{
    return update_from_resource(instance, id, type, false);
}

HRESULT CRegObject::update(LPCOLESTR script, bool registering) noexcept
{
    if (!script)
        return E_POINTER;
    try {
        const auto text =
            detail::expand_script(script, [this](const std::wstring& key) -> const std::wstring* {
                const auto found = m_replacements.find(key);
                return found == m_replacements.end() ? nullptr : &found->second;
            });
        const auto sections = text ? detail::parse_script(*text) : std::nullopt;
        if (!sections)
            return DISP_E_EXCEPTION;
        LSTATUS result = ERROR_SUCCESS;
        for (const auto& section : *sections) {
            const LSTATUS status =
                registering ? detail::register_section(section) : detail::unregister_section(section);
            if (result == ERROR_SUCCESS)
                result = status;
            if (registering && result != ERROR_SUCCESS)
                break;
        }
        return HRESULT_FROM_WIN32(static_cast<DWORD>(result));
    } catch (...) {
        return AtlHresultFromException();
    }
}

HRESULT CRegObject::update_from_resource(HINSTANCE instance, UINT id, LPCOLESTR type,
                                         bool registering) noexcept
{
    const HRSRC resource = FindResourceW(instance, MAKEINTRESOURCEW(id), type);
    const HGLOBAL loaded = resource ? LoadResource(instance, resource) : nullptr;
    const auto* const bytes = loaded ? static_cast<const char*>(LockResource(loaded)) : nullptr;
    if (!bytes)
        return AtlHresultFromLastError();
    const int size = static_cast<int>(SizeofResource(instance, resource));
    try {
        // An empty text is a valid script that does nothing, so a failed conversion must be reported.
        const int length = MultiByteToWideChar(CP_ACP, 0, bytes, size, nullptr, 0);
        if (length == 0)
            return AtlHresultFromLastError();
        std::wstring text(static_cast<std::size_t>(length), L'\0');
        if (MultiByteToWideChar(CP_ACP, 0, bytes, size, text.data(), length) == 0)
            return AtlHresultFromLastError();
        return update(text.c_str(), registering);
    } catch (...) {
        return AtlHresultFromException();
    }
}

} // namespace ATL
