// The golden listings: what the registry is to hold, as text files linked into the test program.
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

// As registry_listing() gives it, with the module's path and folder filled in.
std::string listing(listing_id id);

// A text as it stands in a listing.
std::string listing_text(const std::wstring& text);

} // namespace quill::test
