#include "stand_ins/html_engine/embedded_class.h"

#include "stand_ins/html_engine/identifiers.h"

#include <ole2.h>

#include <array>

namespace quill {
namespace {

constexpr wchar_t type_folder[] = L"MIME\\Database\\Content Type";

std::wstring classes_value(const std::wstring& key, const wchar_t* name)
{
    std::array<wchar_t, 128> text{};
    DWORD size = sizeof text;
    if (RegGetValueW(HKEY_CLASSES_ROOT, key.c_str(), name, RRF_RT_REG_SZ, nullptr, text.data(), &size) !=
        ERROR_SUCCESS)
        return {};
    return text.data();
}

// Removes parameters: "application/pdf; charset=binary" is application/pdf.
std::wstring plain_type(const std::wstring& type)
{
    const std::wstring lower = lower_case(type.substr(0, type.find(L';')));
    const auto begin = lower.find_first_not_of(L' ');
    const auto end = lower.find_last_not_of(L' ');
    return begin == std::wstring::npos ? std::wstring() : lower.substr(begin, end - begin + 1);
}

// A registered MIME type with this extension and a class.
std::wstring type_with_extension(const std::wstring& extension)
{
    HKEY types = nullptr;
    if (RegOpenKeyExW(HKEY_CLASSES_ROOT, type_folder, 0, KEY_READ, &types) != ERROR_SUCCESS)
        return {};
    std::wstring found;
    std::array<wchar_t, 256> name{};
    for (DWORD index = 0, size = 256; found.empty(); ++index, size = 256) {
        if (RegEnumKeyExW(types, index, name.data(), &size, nullptr, nullptr, nullptr, nullptr) !=
            ERROR_SUCCESS)
            break;
        const std::wstring key = std::wstring(type_folder) + L'\\' + name.data();
        if (lower_case(classes_value(key, L"Extension")) == extension &&
            !classes_value(key, L"CLSID").empty())
            found = name.data();
    }
    RegCloseKey(types);
    return found;
}

std::wstring type_of_extension(const std::wstring& extension)
{
    if (extension.empty())
        return {};
    const std::wstring type = classes_value(extension, L"Content Type");
    return type.empty() ? type_with_extension(extension) : type;
}

std::wstring type_of(const dom_node& element)
{
    if (const auto stated = element.attribute(L"type"))
        return plain_type(*stated);
    const auto url = element.attribute(element.is(L"embed") ? L"src" : L"data");
    return url ? type_of_extension(lower_case(extension_of(*url))) : std::wstring();
}

} // namespace

std::wstring extension_of(const std::wstring& url)
{
    const std::wstring path = url.substr(0, url.find_first_of(L"?#"));
    const auto dot = path.find_last_of(L"./\\:");
    return dot != std::wstring::npos && path[dot] == L'.' ? path.substr(dot) : std::wstring();
}

std::optional<CLSID> embedded_class(const dom_node& element)
{
    if (!element.is(L"embed") && !element.is(L"object"))
        return std::nullopt;
    const std::wstring type = type_of(element);
    if (type.empty() || type.find(L'\\') != std::wstring::npos)
        return std::nullopt;
    CLSID class_id{};
    const std::wstring text = classes_value(std::wstring(type_folder) + L'\\' + type, L"CLSID");
    if (text.empty() || FAILED(CLSIDFromString(text.c_str(), &class_id)) || class_id == CLSID_html_page)
        return std::nullopt;
    return class_id;
}

} // namespace quill
