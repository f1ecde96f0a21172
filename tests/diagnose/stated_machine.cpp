#include "tests/diagnose/stated_machine.h"

#include "diagnose/registered_values.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>

namespace quill::diagnose {
namespace {

constexpr const wchar_t* viewer_class = L"{22222222-2222-2222-2222-222222222222}";
constexpr const wchar_t* viewer_path = L"C:\\Suite\\viewer.dll";

// A part of each script, in the module's form.
constexpr const wchar_t* document_script = LR"(
HKLM { NoRemove 'SOFTWARE' { NoRemove 'Classes' {
    NoRemove 'MIME' { NoRemove 'Database' { NoRemove 'Content Type' {
        NoRemove 'application/pdf' { val 'Extension' = s '.pdf'
            val 'CLSID' = s '{5E2C7A90-1B3D-4F6E-8A21-C4D9E07B3F15}' }
        NoRemove 'pdf' { val 'CLSID' = s '{5E2C7A90-1B3D-4F6E-8A21-C4D9E07B3F15}' } } } }
    NoRemove 'CLSID' { ForceRemove '{5E2C7A90-1B3D-4F6E-8A21-C4D9E07B3F15}' = s 'Document' {
        'DocObject' = s ''
        'InprocServer32' = s '%MODULE%' { val 'ThreadingModel' = s 'Apartment' }
        'ProgID' = s 'x' } } } } }
HKCU { NoRemove 'x' { val 'user' = s 'y' } })";
constexpr const wchar_t* helper_script = LR"(
HKCR { NoRemove 'CLSID' { ForceRemove '{8D41F0B2-6C7A-4E93-B5D8-2A0F19C6E4D7}' = s 'Helper' {
    'InprocServer32' = s '%MODULE%' } } })";

std::vector<BYTE> bytes_of(const std::wstring& text)
{
    std::vector<BYTE> bytes((text.size() + 1) * sizeof(wchar_t));
    std::memcpy(bytes.data(), text.c_str(), bytes.size());
    return bytes;
}

bool is_below(const std::wstring& path, const std::wstring& key)
{
    return path.starts_with(key) && (path.size() == key.size() || path[key.size()] == L'\\');
}

template <typename Number>
void put(std::string& image, std::size_t offset, Number number)
{
    std::memcpy(image.data() + offset, &number, sizeof number);
}

} // namespace

void stated_machine::set(const registry_key& key, const std::wstring& name, registry_value value)
{
    values[{key.root, key.view, key.path, name}] = std::move(value);
}

void stated_machine::set_text(const registry_key& key, const std::wstring& name, const std::wstring& text)
{
    set(key, name, {ERROR_SUCCESS, REG_SZ, bytes_of(text)});
}

void stated_machine::set_number(const registry_key& key, const std::wstring& name, DWORD number)
{
    std::vector<BYTE> bytes(sizeof number);
    std::memcpy(bytes.data(), &number, sizeof number);
    set(key, name, {ERROR_SUCCESS, REG_DWORD, bytes});
}

void stated_machine::remove(const registry_key& key, const std::wstring& name)
{
    values.erase({key.root, key.view, key.path, name});
}

registry_value stated_machine::value(const registry_key& key, const std::wstring& name) const
{
    asked.insert({key.root, key.view, key.path, name});
    const auto found = values.find({key.root, key.view, key.path, name});
    return found == values.end() ? registry_value{ERROR_FILE_NOT_FOUND, 0, {}} : found->second;
}

DWORD stated_machine::open(const registry_key& key) const
{
    for (const auto& [at, stated] : values) {
        if (std::get<0>(at) == key.root && std::get<1>(at) == key.view && is_below(std::get<2>(at), key.path))
            return ERROR_SUCCESS;
    }
    return ERROR_FILE_NOT_FOUND;
}

subkey_list stated_machine::subkeys(const registry_key& key) const
{
    subkey_list list{open(key), {}};
    std::set<std::wstring> names;
    for (const auto& [at, stated] : values) {
        const std::wstring& path = std::get<2>(at);
        if (std::get<0>(at) == key.root && path.size() > key.path.size() && is_below(path, key.path))
            names.insert(path.substr(key.path.size() + 1,
                                     path.find(L'\\', key.path.size() + 1) - key.path.size() - 1));
    }
    list.names.assign(names.begin(), names.end());
    return list;
}

file_contents stated_machine::read(const std::wstring& path) const
{
    const auto found = files.find(path);
    return found == files.end() ? file_contents{ERROR_FILE_NOT_FOUND, false, {}} : found->second;
}

DWORD stated_machine::exists(const std::wstring& path) const
{
    return files.contains(path) ? ERROR_SUCCESS : ERROR_FILE_NOT_FOUND;
}

std::optional<std::wstring> stated_machine::environment(const std::wstring& name) const
{
    const auto found = variables.find(name);
    return found == variables.end() ? std::nullopt : std::optional(found->second);
}

write_facts stated_machine::write(const std::wstring&, bool at_low_integrity) const
{
    return at_low_integrity ? written_low : written;
}

stated_computer::stated_computer()
{
    product.document_class = L"{5E2C7A90-1B3D-4F6E-8A21-C4D9E07B3F15}";
    product.helper_class = L"{8D41F0B2-6C7A-4E93-B5D8-2A0F19C6E4D7}";
    product.type_library = L"{33333333-3333-3333-3333-333333333333}";
    product.app_container_category = L"{44444444-4444-4444-4444-444444444444}";
    product.viewer_progid = L"Suite.Viewer";
    product.module_file = L"QuillPDF.IE.dll";
    product.version = L"14.0.0.0";
    product.document_values = registered_values(document_script);
    product.helper_values = registered_values(helper_script);
    settings.wininet_key = L"SOFTWARE\\Suite\\Switch";
    settings.wininet_value = L"Switch";
    settings.editor_key = L"SOFTWARE\\Suite";
    settings.editor_path = L"C:\\Suite\\editor.exe";
    settings.temp_variable = L"QUILL_TMP_FOLDER";
    settings.variables = {L"QUILL_TMP_FOLDER", L"QUILL_LOG_LEVEL"};
    settings.temp_folder = L"C:\\Temp";
    settings.system_temp_folder = L"C:\\Temp";
    settings.low_temp_folder = L"C:\\Low\\Temp";
    system = {L"user", false, L"Windows", L"C:\\Program Files", L"C:\\Windows\\System32"};

    for (const auto* rows : {&product.document_values, &product.helper_values}) {
        for (const registered_value& row : *rows) {
            const registry_key key{registry_root::machine, row.path, registry_view::bits_64};
            if (row.is_module_path)
                machine.set_text(key, *row.name, test_module_path);
            else if (row.name)
                machine.set(key, *row.name, {ERROR_SUCCESS, row.type, row.data});
        }
    }
    const auto set = [this](const std::wstring& path, const std::wstring& name, const std::wstring& text) {
        machine.set_text({registry_root::machine, path, registry_view::bits_64}, name, text);
    };
    const std::wstring classes = L"SOFTWARE\\Classes\\";
    set(classes + L"CLSID\\" + product.document_class + L"\\Implemented Categories\\" +
            product.app_container_category,
        L"", L"");
    set(classes + L"TypeLib\\" + product.type_library, L"", L"");
    set(L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Ext\\PreApproved\\" + product.document_class, L"",
        L"");
    set(classes + product.viewer_progid + L"\\CLSID", L"", viewer_class);
    set(classes + L"CLSID\\" + viewer_class + L"\\InprocServer32", L"", viewer_path);
    set(classes + L".pdf", L"Content Type", L"application/pdf");
    set(L"SOFTWARE\\Quill\\QuillPDF.IE", L"InstallDir", L"C:\\Quill\\");
    set(L"SOFTWARE\\Quill\\QuillPDF.IE", L"ActiveDocument", L"14.0.0");
    machine.set_number(
        {registry_root::user, L"SOFTWARE\\Microsoft\\Internet Explorer\\Main", registry_view::bits_64},
        L"TabProcGrowth", 0);
    for (const wchar_t* path :
         {test_module_path, viewer_path, L"C:\\Program Files\\Internet Explorer\\iexplore.exe",
          L"C:\\Windows\\System32\\ieframe.dll", L"C:\\Windows\\System32\\mshtml.dll",
          L"C:\\Windows\\System32\\urlmon.dll", L"C:\\Suite\\editor.exe", L"C:\\Low\\Temp"})
        machine.files[path] = {ERROR_SUCCESS, false, image_of_library()};
    machine.files[viewer_path].bytes = image_of_library("DllGetClassObject", L"viewer.dll");
}

report stated_computer::diagnose() const
{
    return diagnose::diagnose({machine, product, settings, system});
}

std::string image_of_library(const std::string& function, const std::wstring& original_name)
{
    constexpr std::size_t header = 0x40;
    constexpr std::size_t sections = header + 24 + 240;
    constexpr std::size_t data = 0x200; // of the one section, at address 0x1000
    constexpr std::uint32_t address = 0x1000;
    constexpr std::size_t exports = 0;
    constexpr std::size_t resources = 0x100;
    constexpr std::size_t version = 0x200;
    std::string image(0x800, '\0');
    put<std::uint16_t>(image, 0, 0x5A4D);
    put<std::uint32_t>(image, 0x3C, header);
    put<std::uint32_t>(image, header, 0x4550);
    put<std::uint16_t>(image, header + 4, 0x8664);
    put<std::uint16_t>(image, header + 6, 1);
    put<std::uint16_t>(image, header + 20, 240);
    put<std::uint16_t>(image, header + 22, 0x2000);
    put<std::uint16_t>(image, header + 24, 0x20B);
    put<std::uint32_t>(image, header + 24 + 108, 16);
    put<std::uint32_t>(image, header + 24 + 112, address + exports);
    put<std::uint32_t>(image, header + 24 + 116, 0x100);
    put<std::uint32_t>(image, header + 24 + 128, address + resources);
    put<std::uint32_t>(image, header + 24 + 132, 0x500);
    put<std::uint32_t>(image, sections + 8, 0x600);
    put<std::uint32_t>(image, sections + 12, address);
    put<std::uint32_t>(image, sections + 16, 0x600);
    put<std::uint32_t>(image, sections + 20, data);
    put<std::uint32_t>(image, data + exports + 24, 1);
    put<std::uint32_t>(image, data + exports + 32, address + 0x40);
    put<std::uint32_t>(image, data + 0x40, address + 0x50);
    image.replace(data + 0x50, function.size(), function);
    // Type, name and language, each with one entry; then the data entry.
    for (std::size_t level = 0; level < 3; ++level) {
        const std::size_t at = data + resources + level * 0x18;
        put<std::uint16_t>(image, at + 14, 1);
        put<std::uint32_t>(image, at + 16, level == 0 ? 16u : 1u);
        const auto next = static_cast<std::uint32_t>((level + 1) * 0x18);
        put<std::uint32_t>(image, at + 20, level < 2 ? next | 0x80000000u : next);
    }
    put<std::uint32_t>(image, data + resources + 0x48, address + version);
    put<std::uint32_t>(image, data + resources + 0x4C, 0x200);
    put<std::uint32_t>(image, data + version + 40, 0xFEEF04BD);
    put<std::uint16_t>(image, data + version + 50, 14);
    std::memcpy(image.data() + data + version + 100, L"OriginalFilename", 34);
    std::memcpy(image.data() + data + version + 136, original_name.c_str(),
                (original_name.size() + 1) * sizeof(wchar_t));
    put(image, offset_of_checksum, checksum_of(image));
    return image;
}

std::uint32_t checksum_of(const std::string& image)
{
    std::uint64_t sum = 0;
    for (std::size_t i = 0; i < image.size(); i += 2) {
        std::uint16_t word = 0;
        std::memcpy(&word, image.data() + i, sizeof word);
        sum += i == offset_of_checksum || i == offset_of_checksum + 2 ? 0 : word;
    }
    while (sum > 0xFFFF)
        sum = (sum & 0xFFFF) + (sum >> 16);
    return static_cast<std::uint32_t>(sum + image.size());
}

const finding& found(const report& findings, const wchar_t* check)
{
    const auto match = std::ranges::find(findings, check, &finding::check);
    if (match == findings.end())
        throw std::runtime_error("no such check");
    return *match;
}

bool contains(const std::wstring& text, std::wstring_view part)
{
    return text.find(part) != std::wstring::npos;
}

} // namespace quill::diagnose
