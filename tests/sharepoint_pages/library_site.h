// A web server with the sample pages where a SharePoint server has them, and all that a test of them needs
// around it: the editor's stand-in, the module and the HTML engine's stand-in, registered.
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

    // Serves a page of samples/sharepoint as the library's.
    void serve_library(const std::string& version);
    // The address of a file in the library.
    std::wstring file(const std::wstring& name) const { return server.url(library_folder + name); }
    // Serves a page where something else is expected: a page's end can be waited for.
    void serve_short_page(const std::string& path);
    // Every request since the last question as "GET /x".
    std::vector<std::string> requests_so_far();
    // The same, after going to a last page, so that whatever was on its way has been asked for.
    std::vector<std::string> requests_at_the_end(helper_tab& tab);

    ole_apartment apartment;
    editor_bench editor;
    registered_module module;
    registered_pages pages;
    http_server server;

private:
    std::size_t known_requests_ = 0;
};

} // namespace quill::test
