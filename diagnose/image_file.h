// What the headers and the resources of a PE file say, read as data: no code of the file is run.
#pragma once

#include <windows.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace quill::diagnose {

enum class image_kind
{
    none,      // no PE file
    truncated, // headers or sections lie beyond the file's end
    bits_32,
    bits_64, // x64
    other    // another processor
};

struct image_version
{
    WORD parts[4] = {};
    std::wstring original_name; // of the file; empty if the resource has none
};

struct image_facts
{
    image_kind kind = image_kind::none;
    WORD machine = 0;
    bool is_library = false;
    bool has_class_objects = false; // exports DllGetClassObject
    bool has_checksum = false;      // the header's is not 0
    bool is_checksum_wrong = false; // the header has a checksum and it is not the file's
    bool has_version = false;       // the resources name version information
    std::optional<image_version> version;
};

// file: all bytes of the file.
image_facts read_image(std::string_view file);

std::wstring text_of(const image_version& version);

} // namespace quill::diagnose
