// The registrar: applies registry scripts in both directions.
#pragma once

#include "atl/atldef.h"

#include <map>
#include <string>

namespace ATL {

struct IRegistrarBase
{
    // Replaces %key% in a script (case-insensitive) with `item`. A later replacement for the same key wins.
    virtual HRESULT AddReplacement(LPCOLESTR key, LPCOLESTR item) noexcept = 0;
    virtual HRESULT ClearReplacements() noexcept = 0;

protected:
    ~IRegistrarBase() = default;
};

// A script is parsed completely before anything is written: a syntax error changes nothing and returns
// DISP_E_EXCEPTION. Registration stops at the first registry error and leaves what is already written;
// unregistration continues after an error and returns the first one.
class CRegObject final : public IRegistrarBase
{
public:
    HRESULT AddReplacement(LPCOLESTR key, LPCOLESTR item) noexcept override;
    HRESULT ClearReplacements() noexcept override;

    HRESULT StringRegister(LPCOLESTR script) noexcept { return update(script, true); }
    HRESULT StringUnregister(LPCOLESTR script) noexcept { return update(script, false); }
    // The script is the resource `id` of the given type, in the system's ANSI code page.
    HRESULT ResourceRegister(HINSTANCE instance, UINT id, LPCOLESTR type) noexcept;
    HRESULT ResourceUnregister(HINSTANCE instance, UINT id, LPCOLESTR type) noexcept;

private:
    struct ignore_case
    {
        bool operator()(const std::wstring& left, const std::wstring& right) const noexcept;
    };

    HRESULT update(LPCOLESTR script, bool registering) noexcept;
    HRESULT update_from_resource(HINSTANCE instance, UINT id, LPCOLESTR type, bool registering) noexcept;

    std::map<std::wstring, std::wstring, ignore_case> m_replacements;
};

} // namespace ATL
