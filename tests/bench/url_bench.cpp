// The functions on URLs and on the markup of links: the time per byte must not depend on the length.
#include "retrieval/url/url_fragment.h"
#include "retrieval/url/url_resolution.h"
#include "retrieval/url/url_text.h"
#include "sharepoint/decisions/links.h"
#include "tests/bench/plain_benchmarks.h"
#include "tests/bench/support/report.h"

#include <array>
#include <functional>
#include <string>
#include <vector>

namespace quill::bench {
namespace {

using text_function = std::function<void(const std::wstring& url)>;

struct subject
{
    const char* name;
    // Repeated between the beginning and the end of the URL up to the wanted size.
    const wchar_t* filling;
    const wchar_t* end;
    text_function run;
    const wchar_t* beginning = L"http://h";
    target growth = 1.3; // from 1 KB to 100 KB
};

std::wstring url_of(const subject& each, std::size_t size)
{
    const std::wstring filling = each.filling;
    const std::wstring end = each.end;
    std::wstring url = each.beginning;
    while (url.size() + filling.size() + end.size() <= size)
        url += filling;
    return url + end;
}

const std::vector<subject>& subjects()
{
    static std::array<wchar_t, 260> name;
    static const std::vector<subject> all = {
        {"DecodeUrl, escapes", L"/My%20Fil%C3%A9", L".pdf",
         [](const std::wstring& url) { keep(DecodeUrl(url.c_str()).size()); }},
        {"DecodeUrl, plain", L"/folder/name", L".pdf",
         [](const std::wstring& url) { keep(DecodeUrl(url.c_str()).size()); }},
        // The result is six times as long as its text, and a new text of more than 100 KB is allocated page
        // by page, which costs much more for each byte.
        {"EncodeUrl, accents", L"/Fil\x00e9 \x20ac", L".pdf",
         [](const std::wstring& url) { keep(EncodeUrl(url).size()); }, L"http://h",
         target::known_missed(1.3)},
        {"EncodeUrl, plain", L"/folder/name", L".pdf",
         [](const std::wstring& url) { keep(EncodeUrl(url).size()); }},
        {"GetFileNameFromUrl", L"/folder/name", L"/x.pdf",
         [](const std::wstring& url) { keep(GetFileNameFromUrl(url.c_str(), name.data(), name.size())); }},
        {"GetFileNameFromUrl, query", L"&a=b/c&d=e", L"&f=x.pdf",
         [](const std::wstring& url) { keep(GetFileNameFromUrl(url.c_str(), name.data(), name.size())); },
         L"/?http://h"},
        {"parse_url_number, fragments", L"#zoom", L"#page=3",
         [](const std::wstring& url) {
             std::int32_t page = 0;
             keep(parse_url_number(url.c_str(), L"page", page));
         }},
        {"IsUrl, no scheme", L"hhttp:/w.ft", L"",
         [](const std::wstring& url) {
             int other = 0;
             keep(IsUrl(url.c_str() + 7, &other));
         }},
        {"CombineUrl, up and up", L"/../..", L"/x.pdf",
         [](const std::wstring& url) {
             std::wstring address;
             keep(CombineUrl(url.substr(9), url, address));
         }},
        {"is_pdf_link", L"/_vti_histor", L"/x.pdf", [](const std::wstring& url) { keep(is_pdf_link(url)); }},
        {"without_open_handlers, none", L" onclick=\"return DispEx(this)\"", L">",
         [](const std::wstring& markup) { keep(without_open_handlers(markup).has_value()); }},
        {"without_open_handlers, all", L" onclick=\"PdfFile.OpenDocuments(this)\"", L">",
         [](const std::wstring& markup) { keep(without_open_handlers(markup)->size()); }},
    };
    return all;
}

repeated run_on(const subject& each, const std::wstring& url)
{
    return [&](std::size_t times) {
        for (std::size_t i = 0; i < times; ++i)
            each.run(url);
    };
}

// The time per byte in a text of one size and of another, timed in turn.
comparison compare_bytes(const subject& each, std::size_t size, std::size_t other_size)
{
    const std::wstring url = url_of(each, size), other_url = url_of(each, other_size);
    comparison measured = compare_shortest(run_on(each, url), run_on(each, other_url));
    measured.ours /= static_cast<double>(url.size());
    measured.baseline /= static_cast<double>(other_url.size());
    measured.ratio = measured.ours / measured.baseline;
    return measured;
}

} // namespace

void url_benchmarks()
{
    // Blocks of that size are allocated page by page, at a cost for each page.
    constexpr double most_growth_to_a_megabyte = 3.0;
    for (const subject& each : subjects()) {
        // With a hundred bytes the cost of the call itself is included, which would hide growth.
        const std::string name = each.name;
        report(name + ", a byte of 1 KB : of 100 B", compare_bytes(each, 1'000, 100));
        report(name + ", a byte of 100 KB : of 1 KB", compare_bytes(each, 100'000, 1'000), each.growth);
        report(name + ", a byte of 1 MB : of 1 KB", compare_bytes(each, 1'000'000, 1'000),
               most_growth_to_a_megabyte);
    }
}

} // namespace quill::bench
