// A computer whose registry and files a test states, and the product as it should be registered there.
#pragma once

#include "diagnose/checks.h"

#include <map>
#include <set>
#include <string>
#include <string_view>
#include <tuple>

namespace quill::diagnose {

class stated_machine : public machine
{
public:
    // Root, view, path and name.
    using place = std::tuple<registry_root, registry_view, std::wstring, std::wstring>;

    void set(const registry_key& key, const std::wstring& name, registry_value value);
    void set_text(const registry_key& key, const std::wstring& name, const std::wstring& text);
    void set_number(const registry_key& key, const std::wstring& name, DWORD number);
    void remove(const registry_key& key, const std::wstring& name);

    registry_value value(const registry_key& key, const std::wstring& name) const override;
    DWORD open(const registry_key& key) const override;
    subkey_list subkeys(const registry_key& key) const override;
    file_contents read(const std::wstring& path) const override;
    DWORD exists(const std::wstring& path) const override;
    bool is_folder(const std::wstring& path) const override { return read(path).is_folder; }
    signature_facts signature(const std::wstring&) const override { return signed_as; }
    std::wstring expanded(const std::wstring& text) const override { return text; }
    std::optional<std::wstring> environment(const std::wstring& name) const override;
    write_facts write(const std::wstring& folder, bool at_low_integrity) const override;
    download_count downloads(const std::wstring&) const override { return found_downloads; }

    std::map<place, registry_value> values;
    std::map<std::wstring, file_contents> files;
    std::map<std::wstring, std::wstring> variables;
    signature_facts signed_as{signature_kind::valid, 0};
    write_facts written{write_result::written, 0, false};
    write_facts written_low{write_result::written, 0, false};
    download_count found_downloads;
    // What the checks have asked for.
    mutable std::set<place> asked;
};

// A computer on which a PDF would open.
struct stated_computer
{
    stated_computer();
    report diagnose() const;

    stated_machine machine;
    product_constants product;
    product_settings settings;
    system_facts system;
};

// The finding of a check. Throws std::runtime_error if there is none.
const finding& found(const report& findings, const wchar_t* check);
bool contains(const std::wstring& text, std::wstring_view part);

// A library for x64 that exports `function` and has a version resource with this name.
std::string image_of_library(const std::string& function = "DllGetClassObject",
                             const std::wstring& original_name = L"QuillPDF.IE.dll");

// The checksum that the header of an image of image_of_library() should have, and where it is.
std::uint32_t checksum_of(const std::string& image);
inline constexpr std::size_t offset_of_checksum = 0x40 + 24 + 64;

inline constexpr wchar_t test_module_path[] = L"C:\\Quill\\QuillPDF.IE.dll";

} // namespace quill::diagnose
