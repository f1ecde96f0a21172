// The functions on URLs: what a byte costs must not depend on how many there are.
#include "bench/plain_benchmarks.h"
#include "bench/support/report.h"
#include "retrieval/url_fragment.h"
#include "retrieval/url_resolution.h"
#include "retrieval/url_text.h"

#include <algorithm>
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
    // Repeated between the URL's beginning and its end up to the wanted size.
    const wchar_t* filling;
    const wchar_t* end;
    text_function run;
};

std::wstring url_of(const subject& each, std::size_t size)
{
    const std::wstring filling = each.filling;
    const std::wstring end = each.end;
    std::wstring url = L"http://h";
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
        {"EncodeUrl, accents", L"/Fil\x00e9 \x20ac", L".pdf",
         [](const std::wstring& url) { keep(EncodeUrl(url).size()); }},
        {"EncodeUrl, plain", L"/folder/name", L".pdf",
         [](const std::wstring& url) { keep(EncodeUrl(url).size()); }},
        {"GetFileNameFromUrl", L"/folder/name", L"/x.pdf",
         [](const std::wstring& url) { keep(GetFileNameFromUrl(url.c_str(), name.data(), name.size())); }},
        {"GetFileNameFromUrl, query", L"&a=b/c&d=e", L"&f=x.pdf",
         [](const std::wstring& url) {
             const std::wstring query = L"/?" + url;
             keep(GetFileNameFromUrl(query.c_str(), name.data(), name.size()));
         }},
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
    };
    return all;
}

double time_a_byte(const subject& each, std::size_t size)
{
    const std::wstring url = url_of(each, size);
    return shortest([&](std::size_t times) {
               for (std::size_t i = 0; i < times; ++i)
                   each.run(url);
           }) /
           static_cast<double>(url.size());
}

} // namespace

void url_benchmarks()
{
    constexpr double most_growth = 1.3;
    // Blocks of that size come from the system page by page, at a price for each page.
    constexpr double most_growth_to_a_megabyte = 3.0;
    for (const subject& each : subjects()) {
        const double first = time_a_byte(each, 100);
        double dearest = 0;
        for (std::size_t size = 1'000; size <= 100'000; size *= 10)
            dearest = std::max(dearest, time_a_byte(each, size));
        report(std::string(each.name) + ", a byte of 1 KB to 100 KB : of 100 B",
               {dearest, first, dearest / first}, most_growth);
        const double last = time_a_byte(each, 1'000'000);
        report(std::string(each.name) + ", a byte of 1 MB : of 100 B", {last, first, last / first},
               most_growth_to_a_megabyte);
    }
}

} // namespace quill::bench
