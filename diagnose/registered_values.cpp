#include "diagnose/registered_values.h"

#include "atl/detail/registry_script.h"
#include "diagnose/lookup.h"

namespace quill::diagnose {
namespace {

using ATL::detail::script_key;
using ATL::detail::script_key_kind;

// Stands for the module's path in the expanded script. Scripts do not contain it.
constexpr const wchar_t* module_mark = L"\uE000";

void add_rows(const script_key& key, const std::wstring& path, std::vector<registered_value>& rows)
{
    if (key.values.empty() && key.keys.empty() && key.kind != script_key_kind::no_remove)
        rows.push_back({path, std::nullopt, REG_NONE, {}, false});
    for (const auto& value : key.values) {
        const auto text = text_of(registry_value{ERROR_SUCCESS, value.type, value.data});
        const bool is_path = text == module_mark;
        rows.push_back({path, value.name, value.type, is_path ? std::vector<BYTE>() : value.data, is_path});
    }
    for (const script_key& child : key.keys)
        add_rows(child, path.empty() ? child.name : path + L"\\" + child.name, rows);
}

} // namespace

std::vector<registered_value> registered_values(std::wstring_view script)
{
    std::vector<registered_value> rows;
    const std::wstring mark = module_mark;
    const auto text = ATL::detail::expand_script(
        script, [&](const std::wstring& name) { return name == L"MODULE" ? &mark : nullptr; });
    const auto sections = text ? ATL::detail::parse_script(*text) : std::nullopt;
    if (!sections)
        return rows;
    for (const auto& section : *sections) {
        if (section.root == HKEY_LOCAL_MACHINE)
            add_rows(section.content, L"", rows);
        else if (section.root == HKEY_CLASSES_ROOT)
            add_rows(section.content, classes_key, rows);
    }
    return rows;
}

} // namespace quill::diagnose
