// How the module downloads in this process, and where to.
#pragma once

#include "tests/support/download_setting.h"
#include "tests/support/scopes.h"

namespace quill::soak {

// Which of the two download paths the module uses.
enum class download_path
{
    urlmon,
    wininet
};

class download_setup
{
public:
    // Create it before the module is loaded.
    download_setup();
    download_setup(const download_setup&) = delete;
    download_setup& operator=(const download_setup&) = delete;

    void use(download_path path);
    // Removes the files of all downloads so far from the cache folder, as a user's clean-up does.
    void empty_cache();

    test::scratch_directory cache; // the module's temporary folder

private:
    test::download_setting setting_;
};

} // namespace quill::soak
