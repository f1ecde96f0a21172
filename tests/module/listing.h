// The expected contents of the registry, as text files in the resources of the test program.
#pragma once

#include <string>

namespace quill::test {

enum class listing_id
{
    machine = 1,
    machine_removed,
    user,
    user_removed
};

// In the format of registry_listing(), with the module's path and folder inserted.
std::string listing(listing_id id);

// Text in the format of a listing.
std::string listing_text(const std::wstring& text);

} // namespace quill::test
