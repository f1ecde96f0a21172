#include "tests/diagnose/image_parts.h"

#include <windows.h>

#include <gtest/gtest.h>
#include <imagehlp.h>

#include <cstring>

namespace quill::test {
namespace {

IMAGE_NT_HEADERS64& headers_of(std::string& image)
{
    const auto* const dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(image.data());
    return *reinterpret_cast<IMAGE_NT_HEADERS64*>(image.data() + dos->e_lfanew);
}

IMAGE_SECTION_HEADER& section_of(std::string& image, const std::string& name)
{
    IMAGE_NT_HEADERS64& headers = headers_of(image);
    IMAGE_SECTION_HEADER* section = IMAGE_FIRST_SECTION(&headers);
    for (WORD i = 0; i < headers.FileHeader.NumberOfSections; ++i, ++section) {
        if (name == std::string(reinterpret_cast<const char*>(section->Name),
                                strnlen(reinterpret_cast<const char*>(section->Name), 8)))
            return *section;
    }
    throw std::runtime_error("no section " + name);
}

// With the right checksum the change alone is seen.
void set_checksum(std::string& image)
{
    DWORD before = 0;
    DWORD right = 0;
    EXPECT_TRUE(CheckSumMappedFile(image.data(), static_cast<DWORD>(image.size()), &before, &right));
    headers_of(image).OptionalHeader.CheckSum = right;
}

} // namespace

std::string as_32_bit(std::string image)
{
    headers_of(image).FileHeader.Machine = IMAGE_FILE_MACHINE_I386;
    headers_of(image).OptionalHeader.Magic = IMAGE_NT_OPTIONAL_HDR32_MAGIC;
    return image;
}

std::string as_arm(std::string image)
{
    headers_of(image).FileHeader.Machine = 0xAA64;
    return image;
}

std::string as_program(std::string image)
{
    headers_of(image).FileHeader.Characteristics &= static_cast<WORD>(~IMAGE_FILE_DLL);
    set_checksum(image);
    return image;
}

std::string without_section(std::string image, const std::string& name)
{
    const IMAGE_SECTION_HEADER section = section_of(image, name);
    std::memset(image.data() + section.PointerToRawData, 0xFF, section.SizeOfRawData);
    return image;
}

std::string with_checksum(std::string image)
{
    set_checksum(image);
    return image;
}

std::string without_checksum(std::string image)
{
    headers_of(image).OptionalHeader.CheckSum = 0;
    return image;
}

std::string with_changed_code(std::string image)
{
    image[section_of(image, ".text").PointerToRawData + 1000] ^= 1;
    return image;
}

std::string with_false_signature(std::string image)
{
    auto& directory = headers_of(image).OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_SECURITY];
    image.resize((image.size() + 7) / 8 * 8);
    directory.VirtualAddress = static_cast<DWORD>(image.size());
    directory.Size = 64;
    // A certificate of the revision and type that signatures have, and no signature in it.
    const DWORD head[] = {64, 0x0002'0200};
    std::string certificate(64, 'x');
    std::memcpy(certificate.data(), head, sizeof head);
    image += certificate;
    set_checksum(image);
    return image;
}

std::string with_version(std::string image, unsigned short major)
{
    constexpr DWORD fixed_info[] = {VS_FFI_SIGNATURE, 0x00010000};
    const std::size_t at =
        image.find(std::string(reinterpret_cast<const char*>(fixed_info), sizeof fixed_info));
    EXPECT_NE(at, std::string::npos);
    std::memcpy(image.data() + at + 10, &major, sizeof major);
    set_checksum(image);
    return image;
}

} // namespace quill::test
