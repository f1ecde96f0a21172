// The computer on which the program runs. Runs no code of the files that it examines.
#pragma once

#include "diagnose/machine.h"

namespace quill::diagnose {

class windows_machine : public machine
{
public:
    registry_value value(const registry_key& key, const std::wstring& name) const override;
    DWORD open(const registry_key& key) const override;
    subkey_list subkeys(const registry_key& key) const override;

    file_contents read(const std::wstring& path) const override;
    DWORD exists(const std::wstring& path) const override;
    bool is_folder(const std::wstring& path) const override;
    signature_facts signature(const std::wstring& path) const override;
    std::wstring expanded(const std::wstring& text) const override;
    std::optional<std::wstring> environment(const std::wstring& name) const override;

    write_facts write(const std::wstring& folder, bool at_low_integrity) const override;
    download_count downloads(const std::wstring& folder) const override;
};

} // namespace quill::diagnose
