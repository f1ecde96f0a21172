#include "acceptance/registry_tree.h"

#include "acceptance/windows_text.h"
#include "platform/text.h"
#include "platform/unique_handle.h"

#include <windows.h>

#include <stdexcept>
#include <vector>

namespace quill::acceptance {
namespace {

constexpr std::size_t largest_value = std::size_t{64} * 1024 * 1024;
constexpr DWORD longest_key_name = 256;
constexpr DWORD longest_value_name = 16'384;

HKEY root_of(const saved_tree& tree)
{
    return tree.root == "HKCU" ? HKEY_CURRENT_USER : HKEY_LOCAL_MACHINE;
}

REGSAM view_of(const saved_tree& tree)
{
    return tree.view == 32 ? KEY_WOW64_32KEY : KEY_WOW64_64KEY;
}

std::wstring path_of(const saved_tree& tree, const std::string& key)
{
    return to_wide(tree.path + (key.empty() ? "" : "\\" + key));
}

void check(LSTATUS status, const std::string& key, const char* what)
{
    if (status != ERROR_SUCCESS)
        throw std::runtime_error(key + " " + what + ": " + error_text(static_cast<DWORD>(status)));
}

void check(LSTATUS status, const saved_tree& tree, const char* what)
{
    check(status, name_of(tree), what);
}

std::string below_path(std::string path, const std::string& name)
{
    if (!path.empty())
        path += '\\';
    return path += name;
}

void read_values(HKEY key, const std::string& where, std::map<std::string, saved_value>& values)
{
    std::wstring name(longest_value_name, L'\0');
    std::string data(1024, '\0');
    for (DWORD index = 0;;) {
        DWORD name_length = longest_value_name;
        DWORD type = 0;
        auto size = static_cast<DWORD>(data.size());
        const LSTATUS status = RegEnumValueW(key, index, name.data(), &name_length, nullptr, &type,
                                             reinterpret_cast<BYTE*>(data.data()), &size);
        if (status == ERROR_NO_MORE_ITEMS)
            return;
        if (status == ERROR_MORE_DATA && data.size() < largest_value) {
            data.resize(data.size() * 2);
            continue;
        }
        check(status, where, "cannot be read");
        values[to_utf8({name.data(), name_length})] = {type, data.substr(0, size)};
        ++index;
    }
}

// Reads the key at `path` below the tree's own and everything below it.
void read_key(HKEY key, const std::string& path, saved_tree& tree)
{
    const std::string where = path.empty() ? name_of(tree) : below_path(name_of(tree), path);
    read_values(key, where, tree.keys[path]);
    for (DWORD index = 0;; ++index) {
        wchar_t name[longest_key_name];
        DWORD length = longest_key_name;
        const LSTATUS status = RegEnumKeyExW(key, index, name, &length, nullptr, nullptr, nullptr, nullptr);
        if (status == ERROR_NO_MORE_ITEMS)
            return;
        check(status, where, "cannot be read");
        const std::string name_below = to_utf8({name, length});
        unique_registry_key below;
        check(RegOpenKeyExW(key, name, 0, KEY_READ | view_of(tree), below.put()),
              below_path(where, name_below), "cannot be opened");
        read_key(below.get(), below_path(path, name_below), tree);
    }
}

void delete_key(const saved_tree& tree, const std::string& key)
{
    unique_registry_key opened;
    const std::wstring path = path_of(tree, key);
    LSTATUS status =
        RegOpenKeyExW(root_of(tree), path.c_str(), 0, KEY_ALL_ACCESS | view_of(tree), opened.put());
    if (status == ERROR_FILE_NOT_FOUND)
        return; // went with a key above it
    check(status, tree, "cannot be opened for writing");
    check(RegDeleteTreeW(opened.get(), nullptr), tree, "cannot be emptied");
    opened.reset();
    status = RegDeleteKeyExW(root_of(tree), path.c_str(), view_of(tree), 0);
    check(status == ERROR_FILE_NOT_FOUND ? ERROR_SUCCESS : status, tree, "cannot be removed");
}

void write_key(const saved_tree& tree, const std::string& key,
               const std::map<std::string, saved_value>& wanted,
               const std::map<std::string, saved_value>& present)
{
    unique_registry_key opened;
    check(RegCreateKeyExW(root_of(tree), path_of(tree, key).c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE,
                          KEY_READ | KEY_WRITE | view_of(tree), nullptr, opened.put(), nullptr),
          tree, "cannot be created");
    for (const auto& [name, value] : present)
        if (!wanted.contains(name))
            check(RegDeleteValueW(opened.get(), to_wide(name).c_str()), tree, "cannot be changed");
    for (const auto& [name, value] : wanted) {
        const auto found = present.find(name);
        if (found == present.end() || found->second != value)
            check(RegSetValueExW(opened.get(), to_wide(name).c_str(), 0, value.type,
                                 reinterpret_cast<const BYTE*>(value.data.data()),
                                 static_cast<DWORD>(value.data.size())),
                  tree, "cannot be changed");
    }
}

} // namespace

saved_tree read_tree(const saved_tree& named)
{
    saved_tree tree{named.root, named.view, named.path, {}};
    unique_registry_key key;
    const LSTATUS status =
        RegOpenKeyExW(root_of(tree), path_of(tree, "").c_str(), 0, KEY_READ | view_of(tree), key.put());
    if (status == ERROR_FILE_NOT_FOUND)
        return tree;
    check(status, tree, "cannot be opened");
    read_key(key.get(), "", tree);
    return tree;
}

void restore_tree(const saved_tree& saved)
{
    const saved_tree now = read_tree(saved);
    for (const auto& [key, values] : now.keys)
        if (!saved.keys.contains(key))
            delete_key(saved, key);
    for (const auto& [key, values] : saved.keys) {
        const auto present = now.keys.find(key);
        if (present == now.keys.end())
            write_key(saved, key, values, {});
        else if (present->second != values)
            write_key(saved, key, values, present->second);
    }
}

} // namespace quill::acceptance
