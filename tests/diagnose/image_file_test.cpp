#include "diagnose/image_file.h"
#include "tests/diagnose/stated_machine.h"

#include <gtest/gtest.h>

#include <cstring>

namespace quill::diagnose {
namespace {

template <typename Number>
std::string with(std::string image, std::size_t offset, Number number)
{
    std::memcpy(image.data() + offset, &number, sizeof number);
    return image;
}

constexpr std::size_t header = 0x40;

TEST(ImageFile, LibraryIsRead)
{
    const image_facts facts = read_image(image_of_library());
    EXPECT_EQ(facts.kind, image_kind::bits_64);
    EXPECT_TRUE(facts.is_library);
    EXPECT_TRUE(facts.has_class_objects);
    EXPECT_FALSE(facts.is_checksum_wrong);
    ASSERT_TRUE(facts.version);
    EXPECT_TRUE(text_of(*facts.version) == L"14.0.0.0");
    EXPECT_TRUE(facts.version->original_name == L"QuillPDF.IE.dll");
}

TEST(ImageFile, OtherFilesAreNoLibraries)
{
    const std::string image = image_of_library();
    EXPECT_EQ(read_image("").kind, image_kind::none);
    EXPECT_EQ(read_image("M").kind, image_kind::none);
    EXPECT_EQ(read_image("MZ").kind, image_kind::truncated);
    EXPECT_EQ(read_image("This is no program.").kind, image_kind::none);
    EXPECT_EQ(read_image(with<std::uint32_t>(image, header, 0x454E)).kind, image_kind::none);
    EXPECT_EQ(read_image(with<std::uint32_t>(image, 0x3C, 0xFFFFFFFF)).kind, image_kind::truncated);
    EXPECT_EQ(read_image(with<std::uint16_t>(image, header + 4, 0xAA64)).kind, image_kind::other);
    EXPECT_EQ(
        read_image(with<std::uint16_t>(with<std::uint16_t>(image, header + 4, 0x14C), header + 24, 0x10B))
            .kind,
        image_kind::bits_32);
    EXPECT_EQ(read_image(with<std::uint16_t>(image, header + 24, 0x10B)).kind, image_kind::other);
    EXPECT_EQ(read_image(with<std::uint16_t>(image, header + 6, 0)).kind, image_kind::truncated);
    EXPECT_EQ(read_image(with<std::uint16_t>(image, header + 6, 0xFFFF)).kind, image_kind::truncated);
    EXPECT_FALSE(read_image(with<std::uint16_t>(image, header + 22, 0)).is_library);
    EXPECT_FALSE(read_image(image_of_library("DllMain")).has_class_objects);
}

// Every beginning of the file, and every byte of it with another value, gives a result.
TEST(ImageFile, AnyDamageGivesAResult)
{
    const std::string image = image_of_library();
    for (std::size_t size = 0; size < image.size(); ++size)
        EXPECT_NE(read_image(image.substr(0, size)).kind, image_kind::bits_64);
    for (std::size_t i = 0; i < image.size(); ++i) {
        for (const char byte : {'\x01', '\x7F', '\xFF'}) {
            std::string damaged = image;
            damaged[i] = static_cast<char>(damaged[i] ^ byte);
            read_image(damaged);
        }
    }
}

TEST(ImageFile, DamagedVersionIsSeen)
{
    const std::string image = image_of_library();
    const image_facts no_signature = read_image(with<std::uint32_t>(image, 0x200 + 0x200 + 40, 0));
    EXPECT_TRUE(no_signature.has_version);
    EXPECT_FALSE(no_signature.version);
    EXPECT_FALSE(read_image(with<std::uint32_t>(image, header + 24 + 128, 0)).has_version);
    // The directory of the type is its own entry: nothing loops.
    EXPECT_FALSE(read_image(with<std::uint32_t>(image, 0x200 + 0x100 + 20, 0x80000000u)).version);
}

// A section of 1 MiB behind the others, at this address.
constexpr std::uint32_t far_address = 0x100000;
std::string with_far_section(std::string image, const std::string& contents)
{
    const std::size_t section = header + 24 + 240 + 40;
    const auto offset = static_cast<std::uint32_t>(image.size());
    const auto size = static_cast<std::uint32_t>(contents.size());
    image = with<std::uint16_t>(image, header + 6, 2);
    image = with(with(image, section + 8, size), section + 12, far_address);
    return with(with(image, section + 16, size), section + 20, offset) + contents;
}

TEST(ImageFile, HasNoMoreExportsThanOrdinals)
{
    constexpr std::uint32_t most = 0x10000;
    const std::string image = image_of_library();
    // All names but the last one are empty.
    std::string names(4 * (most + 1), '\0');
    std::memcpy(names.data() + 4 * (most - 1), image.data() + 0x200 + 0x40, 4);
    const std::string exporting = with_far_section(with(image, 0x200 + 32, far_address), names);
    EXPECT_TRUE(read_image(with(exporting, 0x200 + 24, most)).has_class_objects);
    EXPECT_FALSE(read_image(with(exporting, 0x200 + 24, most + 1)).has_class_objects);
    EXPECT_FALSE(read_image(with<std::uint32_t>(exporting, 0x200 + 24, 0xFFFFFFFF)).has_class_objects);
}

TEST(ImageFile, VersionInformationEndsAtItsLargestLength)
{
    const std::string image = image_of_library();
    std::string version(1 << 20, '\0');
    std::memcpy(version.data(), image.data() + 0x200 + 0x200, 0x200);
    std::string moved = with(image, 0x200 + 0x100 + 0x48, far_address);
    moved = with_far_section(with(moved, 0x200 + 0x100 + 0x4C, static_cast<std::uint32_t>(version.size())),
                             version);
    ASSERT_TRUE(read_image(moved).version);
    EXPECT_TRUE(read_image(moved).version->original_name == L"QuillPDF.IE.dll");
    // The name of the file behind the largest length.
    std::swap_ranges(moved.begin() + 0x800 + 100, moved.begin() + 0x800 + 200,
                     moved.begin() + 0x800 + 0x10000);
    ASSERT_TRUE(read_image(moved).version);
    EXPECT_TRUE(read_image(moved).version->original_name.empty());
}

TEST(ImageFile, ChecksumIsTheSystems)
{
    const std::string checked = image_of_library();
    const std::uint32_t right = checksum_of(checked);
    EXPECT_FALSE(read_image(checked).is_checksum_wrong);
    EXPECT_TRUE(read_image(with(checked, offset_of_checksum, right + 1)).is_checksum_wrong);
    EXPECT_TRUE(read_image(with<char>(checked, checked.size() - 1, 'x')).is_checksum_wrong);
    EXPECT_TRUE(read_image(checked + "x").is_checksum_wrong);
    EXPECT_TRUE(read_image(checked).has_checksum);
    EXPECT_FALSE(read_image(with<std::uint32_t>(checked, offset_of_checksum, 0)).has_checksum);
}

} // namespace
} // namespace quill::diagnose
