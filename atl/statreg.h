// The registrar: applies registry scripts in both directions.
#pragma once

#include "atl/atldef.h"

#include <map>
#include <string>

namespace ATL {

struct IRegistrarBase
{
    // %key% in a script, in any case of letters, stands for `item`. The last one added counts.
    virtual HRESULT AddReplacement(LPCOLESTR key, LPCOLESTR item) noexcept = 0;
    virtual HRESULT ClearReplacements() noexcept = 0;

protected:
    ~IRegistrarBase() = default;
};

// A script is read whole before anything is written: one that cannot be read changes nothing and gives
// DISP_E_EXCEPTION. A registry failure ends a registration, and what is written by then stays; an
// unregistration goes on with the rest and returns the first failure.
class CRegObject final : public IRegistrarBase
{
public:
    HRESULT AddReplacement(LPCOLESTR key, LPCOLESTR item) noexcept override;
    HRESULT ClearReplacements() noexcept override;

    HRESULT StringRegister(LPCOLESTR script) noexcept { return update(script, true); }
    HRESULT StringUnregister(LPCOLESTR script) noexcept { return update(script, false); }
    // The script is the resource `id` of the given type; its text is in the system's ANSI code page.
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
