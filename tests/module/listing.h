// The expected contents of the registry: text files of this folder, in the resources of the test program.
// With QUILL_UPDATE_LISTINGS=1 in the environment, expect_listed writes them again.
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

// Expects that the registry holds what is listed. On a mismatch prints the lines that differ, with their
// keys.
void expect_listed(listing_id id);

// Text in the format of a listing.
std::string listing_text(const std::wstring& text);

} // namespace quill::test
