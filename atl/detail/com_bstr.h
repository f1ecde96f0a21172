// CComBSTR: owns a BSTR and frees it.
//
//     CComBSTR title;
//     if (SUCCEEDED(document->get_title(&title)) && title)
//         show(title);                                  // implicit conversion to a borrowed BSTR
//     *out = CComBSTR(L"text").Detach();                // transfers ownership to the caller
#pragma once

#include "atl/atldef.h"
#include "atl/atlexcept.h"

#include <oleauto.h>

#include <cstring>
#include <cwchar>
#include <memory>
#include <string_view>
#include <utility>

namespace ATL {

// Constructors and operators throw CAtlException if an allocation fails; functions that return HRESULT return
// E_OUTOFMEMORY. A null BSTR and an empty one compare equal.
class CComBSTR
{
public:
    CComBSTR() noexcept = default;
    CComBSTR(LPCOLESTR source) : m_str(allocate(source)) {}
    CComBSTR(LPCSTR source) : m_str(allocate(source)) {}
    CComBSTR(int size, LPCOLESTR source) : m_str(allocate(source, size)) {}
    explicit CComBSTR(REFGUID guid)
    {
        OLECHAR text[39];
        StringFromGUID2(guid, text, ARRAYSIZE(text));
        m_str = allocate(text);
    }
    CComBSTR(const CComBSTR& source) : m_str(checked(source.Copy(), source.m_str)) {}
    CComBSTR(CComBSTR&& source) noexcept : m_str(source.Detach()) {}
    ~CComBSTR() { SysFreeString(m_str); }

    CComBSTR& operator=(const CComBSTR& source)
    {
        if (this != std::addressof(source))
            Attach(checked(source.Copy(), source.m_str));
        return *this;
    }
    CComBSTR& operator=(CComBSTR&& source) noexcept
    {
        if (this != std::addressof(source))
            Attach(source.Detach());
        return *this;
    }
    // `source` may point into this string, so it is copied before the old text is freed.
    CComBSTR& operator=(LPCOLESTR source)
    {
        if (source != m_str)
            Attach(allocate(source));
        return *this;
    }

    operator BSTR() const noexcept { return m_str; }
    // For out parameters. The string must be empty, otherwise its text would leak.
    BSTR* operator&() noexcept
    {
        ATLASSERT(!m_str);
        return &m_str;
    }
    bool operator!() const noexcept { return !m_str; }

    unsigned int Length() const noexcept { return SysStringLen(m_str); }
    unsigned int ByteLength() const noexcept { return SysStringByteLen(m_str); }

    void Attach(BSTR source) noexcept
    {
        if (m_str != source) {
            SysFreeString(m_str);
            m_str = source;
        }
    }
    [[nodiscard]] BSTR Detach() noexcept { return std::exchange(m_str, nullptr); }
    void Empty() noexcept { Attach(nullptr); }

    // Returns a copy that the caller owns; null for a null string or if the allocation fails.
    [[nodiscard]] BSTR Copy() const noexcept
    {
        return m_str ? SysAllocStringByteLen(reinterpret_cast<LPCSTR>(m_str), ByteLength()) : nullptr;
    }
    HRESULT CopyTo(BSTR* out) const noexcept
    {
        if (!out)
            return E_POINTER;
        *out = Copy();
        return !*out && m_str ? E_OUTOFMEMORY : S_OK;
    }

    HRESULT Append(LPCOLESTR text, int length) noexcept
    {
        if (length < 0 || (!text && length > 0))
            return E_INVALIDARG;
        const UINT old_length = Length();
        const BSTR joined = SysAllocStringLen(nullptr, old_length + static_cast<UINT>(length));
        if (!joined)
            return E_OUTOFMEMORY;
        if (old_length > 0)
            std::wmemcpy(joined, m_str, old_length);
        if (length > 0)
            std::wmemcpy(joined + old_length, text, static_cast<std::size_t>(length));
        Attach(joined);
        return S_OK;
    }
    HRESULT Append(LPCOLESTR text) noexcept
    {
        return Append(text, text ? static_cast<int>(std::wcslen(text)) : 0);
    }
    HRESULT Append(const CComBSTR& text) noexcept
    {
        return Append(text.m_str, static_cast<int>(text.Length()));
    }
    HRESULT AppendBSTR(BSTR text) noexcept { return Append(text, static_cast<int>(SysStringLen(text))); }
    CComBSTR& operator+=(LPCOLESTR text)
    {
        const HRESULT hr = Append(text);
        if (FAILED(hr))
            AtlThrow(hr);
        return *this;
    }

    bool LoadString(HINSTANCE instance, UINT id) noexcept
    {
        // With a buffer size of 0, LoadString returns a pointer into the resource itself.
        LPWSTR text = nullptr;
        const int length = ::LoadStringW(instance, id, reinterpret_cast<LPWSTR>(&text), 0);
        if (length <= 0)
            return false;
        Attach(SysAllocStringLen(text, static_cast<UINT>(length)));
        return m_str;
    }

    bool operator==(const CComBSTR& other) const noexcept { return view() == other.view(); }
    bool operator==(LPCOLESTR other) const noexcept
    {
        return view() == (other ? std::wstring_view(other) : std::wstring_view());
    }
    bool operator<(const CComBSTR& other) const noexcept { return view() < other.view(); }

    BSTR m_str = nullptr;

private:
    std::wstring_view view() const noexcept
    {
        return m_str ? std::wstring_view(m_str, Length()) : std::wstring_view();
    }
    static BSTR checked(BSTR result, const void* source)
    {
        if (!result && source)
            AtlThrow(E_OUTOFMEMORY);
        return result;
    }
    static BSTR allocate(LPCOLESTR source)
    {
        return source ? checked(SysAllocString(source), source) : nullptr;
    }
    static BSTR allocate(LPCOLESTR source, int size)
    {
        if (size < 0)
            AtlThrow(E_INVALIDARG);
        if (size == 0 && !source)
            return nullptr;
        const BSTR result = SysAllocStringLen(source, static_cast<UINT>(size));
        if (!result)
            AtlThrow(E_OUTOFMEMORY);
        return result;
    }
    static BSTR allocate(LPCSTR source)
    {
        if (!source)
            return nullptr;
        const int length = MultiByteToWideChar(CP_ACP, 0, source, -1, nullptr, 0); // with the terminator
        if (length <= 0)
            AtlThrow(AtlHresultFromLastError());
        const BSTR result = allocate(nullptr, length - 1);
        if (result)
            MultiByteToWideChar(CP_ACP, 0, source, -1, result, length);
        return result;
    }
};

} // namespace ATL
