// What the checks ask the computer: an interface, so that the checks are plain code and tests can state what
// is found. Implemented by windows_machine.h.
#pragma once

#include "diagnose/registry_value.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace quill::diagnose {

struct file_contents
{
    DWORD error = 0;
    bool is_folder = false;
    std::string bytes;
};

enum class signature_kind
{
    valid,
    none,
    broken,
    unknown // the system cannot verify signatures
};

struct signature_facts
{
    signature_kind kind = signature_kind::unknown;
    std::uint32_t status = 0; // of WinVerifyTrust
};

// Whether a file could be created in a folder and deleted again.
enum class write_result
{
    written,
    refused,
    not_tested // the system cannot lower the integrity of a thread
};

struct write_facts
{
    write_result result = write_result::not_tested;
    DWORD error = 0;
    bool has_low_label = false; // the folder's mandatory label admits writers of low integrity
};

struct subkey_list
{
    DWORD error = 0;
    std::vector<std::wstring> names;
};

// The download folders in a temporary folder.
struct download_count
{
    DWORD error = 0; // the folder cannot be listed
    std::uint64_t folders = 0;
    std::uint64_t unreadable = 0; // of these folders
    std::uint64_t bytes = 0;
    std::uint64_t oldest_days = 0;
};

class machine
{
public:
    virtual ~machine() = default;

    virtual registry_value value(const registry_key& key, const std::wstring& name) const = 0;
    // ERROR_SUCCESS if the key can be opened for reading.
    virtual DWORD open(const registry_key& key) const = 0;
    virtual subkey_list subkeys(const registry_key& key) const = 0;

    virtual file_contents read(const std::wstring& path) const = 0;
    // ERROR_SUCCESS if there is a file or folder of this name.
    virtual DWORD exists(const std::wstring& path) const = 0;
    virtual bool is_folder(const std::wstring& path) const = 0;
    virtual signature_facts signature(const std::wstring& path) const = 0;
    virtual std::wstring expanded(const std::wstring& text) const = 0;
    virtual std::optional<std::wstring> environment(const std::wstring& name) const = 0;

    virtual write_facts write(const std::wstring& folder, bool at_low_integrity) const = 0;
    virtual download_count downloads(const std::wstring& folder) const = 0;
};

} // namespace quill::diagnose
