// Fixture: a web server with the sample pages at the URLs of a SharePoint server, the editor's stand-in, and
// the registered module and HTML engine.
#pragma once

#include "tests/browser/registered_module.h"
#include "tests/browser/registered_pages.h"
#include "tests/sharepoint/editor_programs.h"
#include "tests/sharepoint_pages/helper_tab.h"
#include "tests/support/http_server.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace quill::test {

inline constexpr wchar_t library_folder[] = L"/sites/workshop/Service%20manuals/";
inline constexpr wchar_t library_page[] = L"/sites/workshop/Service%20manuals/Forms/AllItems.aspx";

class LibrarySite : public testing::Test
{
protected:
    LibrarySite();
    ~LibrarySite() override;

    // Serves a version of samples/sharepoint as the library's page.
    void serve_library(const std::string& version);
    // The URL of a file in the library.
    std::wstring file(const std::wstring& name) const { return server.url(library_folder + name); }
    // Serves a page in place of another type of file, because the end of its loading can be waited for.
    void serve_short_page(const std::string& path);
    // The requests since the previous call, as "GET /x".
    std::vector<std::string> requests_so_far();
    // The same after one more page, so that pending requests are included.
    std::vector<std::string> requests_at_the_end(helper_tab& tab);

    ole_apartment apartment;
    editor_programs editor;
    registered_module module;
    registered_pages pages;
    http_server server;

private:
    std::size_t known_requests_ = 0;
};

} // namespace quill::test
