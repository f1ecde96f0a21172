#include "atl/detail/module.h"

#include "atl/detail/type_library.h"

#include <string>
#include <utility>

namespace ATL {
namespace {

// Doubles the apostrophes, as a quoted string of a registry script requires.
std::wstring quotable(const std::wstring& text)
{
    std::wstring result;
    for (const wchar_t c : text)
        result.append(c == L'\'' ? 2 : 1, c);
    return result;
}

} // namespace

// Initialising a critical section cannot fail since Windows Vista.
// NOLINTNEXTLINE(bugprone-exception-escape)
CAtlModule::CAtlModule() noexcept
{
    ATLASSERT(!_pAtlModule);
    _pAtlModule = this;
}

CAtlModule::~CAtlModule()
{
    Term();
    _pAtlModule = nullptr;
}

HRESULT CAtlModule::AddTermFunc(_ATL_TERMFUNC* function, DWORD_PTR data) noexcept
{
    auto* const added = new (std::nothrow) term_function{function, data, nullptr};
    if (!added)
        return E_OUTOFMEMORY;
    const CComCritSecLock lock(m_csTermFunctions);
    added->next = std::exchange(m_termFunctions, added);
    return S_OK;
}

void CAtlModule::Term() noexcept
{
    while (term_function* const current = m_termFunctions) {
        m_termFunctions = current->next;
        current->function(current->data);
        delete current;
    }
}

HRESULT CAtlModule::prepare_registrar(const _ATL_REGMAP_ENTRY* entries)
{
    if (!m_registrar)
        m_registrar = std::make_unique<CRegObject>();
    const std::wstring path = AtlGetModulePath(_AtlBaseModule.GetModuleInstance());
    m_registrar->ClearReplacements();
    HRESULT hr = m_registrar->AddReplacement(L"Module", quotable(path).c_str());
    if (SUCCEEDED(hr))
        hr = m_registrar->AddReplacement(L"Module_Raw", path.c_str());
    if (SUCCEEDED(hr))
        hr = AddCommonRGSReplacements(m_registrar.get());
    for (; entries && entries->szKey && SUCCEEDED(hr); ++entries)
        hr = m_registrar->AddReplacement(entries->szKey, entries->szData);
    return hr;
}

HRESULT CAtlModule::UpdateRegistryFromResource(UINT resource, BOOL bRegister,
                                               const _ATL_REGMAP_ENTRY* entries) noexcept
{
    try {
        const HRESULT hr = prepare_registrar(entries);
        if (FAILED(hr))
            return hr;
        const HINSTANCE instance = _AtlBaseModule.GetResourceInstance();
        return bRegister ? m_registrar->ResourceRegister(instance, resource, L"REGISTRY")
                         : m_registrar->ResourceUnregister(instance, resource, L"REGISTRY");
    } catch (...) {
        return AtlHresultFromException();
    }
}

} // namespace ATL
