// The registrar's script language: text in, a tree of keys and values out. Nothing here touches the registry.
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
    plain,        // removed at unregistration unless others have put subkeys into it
    no_remove,    // stays at unregistration
    force_remove, // removed with all that is in it, at unregistration and before it is written
    delete_only,  // removed with all that is in it at registration
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

// Gives the text that a %name% stands for, or null for an unknown name.
using script_replacement = std::function<const std::wstring*(const std::wstring& name)>;

// Replaces every %name%; %% stands for one percent sign. What is put in is not searched again.
// Nothing when a name is unknown or not ended.
std::optional<std::wstring> expand_script(std::wstring_view text, const script_replacement& replacement);

// Nothing when the text is not a script. Keys nested deeper than the registry allows are refused.
std::optional<std::vector<script_section>> parse_script(std::wstring_view text);

} // namespace ATL::detail
