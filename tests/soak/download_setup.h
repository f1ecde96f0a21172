// How the module downloads in this process, and where to.
#pragma once

#include "tests/support/scopes.h"

namespace quill::soak {

// Which of the two ways the module downloads.
enum class download_path
{
    urlmon,
    wininet
};

class download_setup
{
public:
    // Make it before the module is loaded.
    download_setup();
    download_setup(const download_setup&) = delete;
    download_setup& operator=(const download_setup&) = delete;

    void use(download_path path);
    // Removes what the downloads so far have left in the cache folder, as a user's clean-up does.
    void empty_cache();

    test::scratch_directory cache; // the module's temporary folder

private:
    test::registry_key_scope switch_;
};

} // namespace quill::soak
