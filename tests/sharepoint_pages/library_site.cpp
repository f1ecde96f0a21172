#include "tests/sharepoint_pages/library_site.h"

#include "tests/support/text.h"

namespace quill::test {
namespace {

constexpr char html[] = "text/html; charset=utf-8";
constexpr wchar_t last_page[] = L"/last.html";

http_response page(const std::wstring& name)
{
    return http_response::ok(sample(name), html);
}

} // namespace

LibrarySite::LibrarySite()
{
    editor.use_editor();
    for (const wchar_t* name :
         {L"documents", L"parts", L"saved-copy", L"frames", L"contents", L"order", L"downloads", L"broken"})
        server.route("/" + to_utf8(name) + ".html", page(std::wstring(L"pages/") + name + L".html"));
    for (const char* name : {"/bracket.pdf", "/care.pdf"})
        server.route(name, http_response::ok(pdf_body(20'000)));
    serve_short_page(to_utf8(last_page));
}

LibrarySite::~LibrarySite()
{
    // The browser engine frees some objects by posted messages.
    EXPECT_TRUE(pages.all_gone());
    EXPECT_TRUE(module.can_unload());
}

void LibrarySite::serve_library(const std::string& version)
{
    server.route(to_utf8(library_page), page(L"sharepoint/library-" + to_wide(version) + L".html"));
}

void LibrarySite::serve_short_page(const std::string& path)
{
    server.route(path, http_response::ok("<title>Short</title>", html));
}

std::vector<std::string> LibrarySite::requests_so_far()
{
    const auto all = server.requests();
    std::vector<std::string> lines;
    for (; known_requests_ < all.size(); ++known_requests_)
        lines.push_back(all[known_requests_].method + " " + all[known_requests_].target);
    return lines;
}

std::vector<std::string> LibrarySite::requests_at_the_end(helper_tab& tab)
{
    tab.show(server.url(last_page));
    return requests_so_far();
}

} // namespace quill::test
