// Parser of the registrar's script language: text in, a tree of keys and values out. Does not access the
// registry.
#pragma once

#include "atl/atldef.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ATL::detail {

struct script_value
{
    std::wstring name; // empty: the key's default value
    DWORD type = REG_SZ;
    std::vector<BYTE> data;
};

enum class script_key_kind
{
    plain,        // deleted at unregistration unless it contains other subkeys
    no_remove,    // kept at unregistration
    force_remove, // deleted with its subtree at unregistration and before it is written
    delete_only,  // deleted with its subtree at registration
};

struct script_key
{
    std::wstring name;
    script_key_kind kind = script_key_kind::plain;
    std::vector<script_value> values;
    std::vector<script_key> keys;
};

struct script_section
{
    HKEY root = nullptr;
    script_key content; // its name is empty, its kind no_remove
};

// Returns the replacement for %name%, or null for an unknown name.
using script_replacement = std::function<const std::wstring*(const std::wstring& name)>;

// Replaces every %name%; %% is a literal percent sign. Replacements are not expanded again. nullopt if a name
// is unknown or not terminated.
std::optional<std::wstring> expand_script(std::wstring_view text, const script_replacement& replacement);

// nullopt if the syntax is invalid or keys are nested deeper than the registry permits.
std::optional<std::vector<script_section>> parse_script(std::wstring_view text);

} // namespace ATL::detail
