#include "diagnose/image_file.h"

#include "diagnose/report.h"

#include <algorithm>
#include <cstring>
#include <vector>

namespace quill::diagnose {
namespace {

constexpr WORD machine_x86 = 0x014C;
constexpr WORD machine_x64 = 0x8664;
constexpr WORD magic_of_32_bits = 0x010B;
constexpr WORD magic_of_64_bits = 0x020B;
constexpr WORD is_dll = 0x2000;
constexpr std::size_t optional_header = 24; // from the signature
constexpr std::size_t checksum_field = optional_header + 64;
constexpr std::size_t size_of_section = 40;
constexpr std::uint32_t type_version = 16;
constexpr std::uint32_t fixed_info_signature = 0xFEEF04BD;
constexpr std::size_t longest_name = 260;
// Ordinals of exports and lengths in version information have 16 bits. More would only take time and memory.
constexpr std::uint32_t most_exports = 0x10000;
constexpr std::uint32_t largest_version = 0xFFFF;

// Reads numbers from bytes that may end anywhere.
class bytes
{
public:
    explicit bytes(std::string_view data) : data_(data) {}

    template <typename Number>
    std::optional<Number> at(std::uint64_t offset) const
    {
        Number number{};
        if (offset > data_.size() || data_.size() - offset < sizeof number)
            return std::nullopt;
        std::memcpy(&number, data_.data() + offset, sizeof number);
        return number;
    }
    std::optional<std::uint16_t> u16(std::uint64_t offset) const { return at<std::uint16_t>(offset); }
    std::optional<std::uint32_t> u32(std::uint64_t offset) const { return at<std::uint32_t>(offset); }

    // Empty if the range is not inside.
    std::string_view part(std::uint64_t offset, std::uint64_t size) const
    {
        if (offset > data_.size() || data_.size() - offset < size)
            return {};
        return data_.substr(static_cast<std::size_t>(offset), static_cast<std::size_t>(size));
    }

private:
    std::string_view data_;
};

struct section
{
    std::uint32_t address = 0;
    std::uint32_t virtual_size = 0;
    std::uint32_t offset = 0;
    std::uint32_t size = 0;
};

struct directory
{
    std::uint32_t address = 0;
    std::uint32_t size = 0;
};

class image
{
public:
    explicit image(std::string_view file) : file_(file), bytes_(file) {}

    image_facts read()
    {
        image_facts facts;
        if (bytes_.u16(0) != 0x5A4D)
            return facts;
        const auto header = bytes_.u32(0x3C);
        if (!header || !bytes_.u32(*header)) {
            facts.kind = image_kind::truncated;
            return facts;
        }
        if (bytes_.u32(*header) != 0x4550u)
            return facts;
        header_ = *header;
        facts.kind = read_headers(facts);
        if (facts.kind != image_kind::bits_64)
            return facts;
        facts.has_class_objects = exports("DllGetClassObject");
        facts.has_checksum = bytes_.u32(header_ + checksum_field).value_or(0) != 0;
        facts.is_checksum_wrong = is_checksum_wrong();
        read_version(facts);
        return facts;
    }

private:
    image_kind read_headers(image_facts& facts)
    {
        const auto machine = bytes_.u16(header_ + 4);
        const auto sections = bytes_.u16(header_ + 6);
        const auto optional_size = bytes_.u16(header_ + 20);
        const auto characteristics = bytes_.u16(header_ + 22);
        const auto magic = bytes_.u16(header_ + optional_header);
        if (!machine || !sections || !optional_size || !characteristics || !magic)
            return image_kind::truncated;
        facts.machine = *machine;
        facts.is_library = (*characteristics & is_dll) != 0;
        if (*machine == machine_x86 && *magic == magic_of_32_bits)
            return image_kind::bits_32;
        if (*machine != machine_x64 || *magic != magic_of_64_bits)
            return image_kind::other;
        return read_sections(*sections, header_ + optional_header + *optional_size) ? image_kind::bits_64
                                                                                    : image_kind::truncated;
    }

    bool read_sections(std::uint16_t count, std::uint64_t offset)
    {
        for (std::uint16_t i = 0; i < count; ++i, offset += size_of_section) {
            if (bytes_.part(offset, size_of_section).empty())
                return false;
            const section found{bytes_.u32(offset + 12).value_or(0), bytes_.u32(offset + 8).value_or(0),
                                bytes_.u32(offset + 20).value_or(0), bytes_.u32(offset + 16).value_or(0)};
            if (found.size != 0 && bytes_.part(found.offset, found.size).empty())
                return false;
            sections_.push_back(found);
        }
        return count != 0;
    }

    std::optional<std::uint64_t> offset_of(std::uint64_t address) const
    {
        for (const section& section : sections_) {
            if (address >= section.address && address - section.address < section.size)
                return address - section.address + section.offset;
        }
        return std::nullopt;
    }

    directory directory_at(std::uint32_t index) const
    {
        const std::uint64_t field = header_ + optional_header + 112 + std::uint64_t{8} * index;
        const auto count = bytes_.u32(header_ + optional_header + 108);
        const auto address = bytes_.u32(field);
        const auto size = bytes_.u32(field + 4);
        if (!count || index >= *count || !address || !size)
            return {};
        return {*address, *size};
    }

    std::string_view name_at(std::uint64_t address) const
    {
        const auto offset = offset_of(address);
        if (!offset)
            return {};
        const std::string_view rest = file_.substr(static_cast<std::size_t>(*offset), longest_name);
        const std::size_t end = rest.find('\0');
        return end == std::string_view::npos ? std::string_view() : rest.substr(0, end);
    }

    bool exports(std::string_view name) const
    {
        const auto table = offset_of(directory_at(0).address);
        if (!table)
            return false;
        const auto count = bytes_.u32(*table + 24);
        const auto names = offset_of(bytes_.u32(*table + 32).value_or(0));
        if (!count || *count > most_exports || !names)
            return false;
        for (std::uint64_t i = 0; i < *count; ++i) {
            const auto address = bytes_.u32(*names + 4 * i);
            if (!address)
                return false;
            if (name_at(*address) == name)
                return true;
        }
        return false;
    }

    // The algorithm of the system: the sum of all 16-bit words with end-around carry, plus the length.
    bool is_checksum_wrong() const
    {
        const std::uint64_t field = header_ + checksum_field;
        const auto stated = bytes_.u32(field);
        if (!stated || *stated == 0)
            return false;
        std::uint32_t sum = 0;
        for (std::uint64_t offset = 0; offset < file_.size(); offset += 2) {
            if (offset == field || offset == field + 2)
                continue;
            const auto word = bytes_.u16(offset);
            sum += word ? *word : static_cast<unsigned char>(file_[static_cast<std::size_t>(offset)]);
            sum = (sum & 0xFFFF) + (sum >> 16);
        }
        return sum + static_cast<std::uint32_t>(file_.size()) != *stated;
    }

    // The entry of a resource directory with this number, or the first one: its offset in the resources with
    // the top bit for a directory.
    std::optional<std::uint32_t> entry(const bytes& resources, std::uint64_t at,
                                       std::optional<std::uint32_t> number) const
    {
        const auto named = resources.u16(at + 12);
        const auto numbered = resources.u16(at + 14);
        if (!named || !numbered)
            return std::nullopt;
        const std::uint32_t count = std::uint32_t{*named} + *numbered;
        for (std::uint32_t i = 0; i < count; ++i) {
            const auto id = resources.u32(at + 16 + std::uint64_t{8} * i);
            const auto target = resources.u32(at + 20 + std::uint64_t{8} * i);
            if (!id || !target)
                return std::nullopt;
            if (!number || *id == *number)
                return target;
        }
        return std::nullopt;
    }

    void read_version(image_facts& facts) const
    {
        constexpr std::uint32_t is_directory = 0x80000000;
        const directory place = directory_at(2);
        const auto offset = offset_of(place.address);
        if (!offset)
            return;
        const bytes resources(bytes_.part(*offset, place.size));
        auto found = entry(resources, 0, type_version);
        facts.has_version = found.has_value();
        // Type, name, language.
        for (int level = 0; found && level < 2; ++level) {
            if (!(*found & is_directory))
                return;
            found = entry(resources, *found & ~is_directory, std::nullopt);
        }
        if (!found || (*found & is_directory))
            return;
        const auto data = offset_of(resources.u32(*found).value_or(0));
        const auto size = resources.u32(*found + 4);
        if (data && size)
            facts.version = version_in(bytes_.part(*data, std::min(*size, largest_version)));
    }

    // A block: length, length of the value, type, name, then value and blocks, each aligned to four bytes.
    static std::optional<image_version> version_in(std::string_view data)
    {
        constexpr std::size_t fixed_info = 40; // after the name "VS_VERSION_INFO"
        const bytes block(data);
        if (block.u32(fixed_info) != fixed_info_signature || data.size() < fixed_info + 52)
            return std::nullopt;
        image_version version;
        for (std::size_t i = 0; i < 4; ++i)
            version.parts[i] = block.u16(fixed_info + 8 + 2 * (i ^ 1)).value_or(0);
        version.original_name = value_named(data, L"OriginalFilename");
        return version;
    }

    // The text after a name. The name occurs once and its value follows at the next multiple of four bytes.
    static std::wstring value_named(std::string_view data, std::wstring_view name)
    {
        std::wstring text(data.size() / sizeof(wchar_t), L'\0');
        if (!text.empty())
            std::memcpy(text.data(), data.data(), text.size() * sizeof(wchar_t));
        const std::size_t at = text.find(std::wstring(name) + L'\0');
        if (at == std::wstring::npos)
            return {};
        std::size_t first = at + name.size() + 1;
        first += first % 2;
        const std::size_t end = text.find(L'\0', first);
        if (first >= text.size() || end == std::wstring::npos)
            return {};
        return text.substr(first, std::min(end - first, longest_name));
    }

    std::string_view file_;
    bytes bytes_;
    std::uint64_t header_ = 0;
    std::vector<section> sections_;
};

} // namespace

image_facts read_image(std::string_view file)
{
    return image(file).read();
}

std::wstring text_of(const image_version& version)
{
    std::wstring text;
    for (const WORD part : version.parts)
        text += (text.empty() ? L"" : L".") + number_text(part);
    return text;
}

} // namespace quill::diagnose
