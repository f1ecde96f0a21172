// Distinguishing URLs from references, and making references absolute. Input: a reference, and a URL.
#include "retrieval/url/url_resolution.h"
#include "tests/fuzz/reference_text.h"
#include "tests/fuzz/subjects.h"

namespace quill::fuzz {
namespace {

constexpr auto nowhere = std::wstring::npos;

bool holds(const std::wstring& text, const wchar_t* part)
{
    return text.find(part) != nowhere;
}

void cut_at(std::wstring& text, std::size_t position)
{
    if (position != nowhere)
        text.erase(position);
}

// prefix_length: the part of the base that is never removed.
std::wstring absolute(std::wstring reference, const std::wstring& base, std::size_t prefix_length)
{
    std::wstring folder = base.substr(prefix_length);
    cut_at(folder, folder.find(L'?'));
    cut_at(folder, folder.rfind(L'/'));
    if (holds(reference, L"../")) {
        while (holds(reference, L"../")) {
            reference.erase(0, 3);
            cut_at(folder, folder.rfind(L'/'));
        }
    } else if (holds(reference, L"./")) {
        reference.erase(0, 2);
    } else if (reference.starts_with(L'/')) {
        reference.erase(0, 1);
        cut_at(folder, folder.find(L'/'));
    }
    return base.substr(0, prefix_length) + folder + L"/" + reference;
}

void check_address_test(const std::wstring& text)
{
    const exact_terminated exact(text);
    const std::wstring seen(exact.view());
    const bool usual = holds(seen, L"http://") || holds(seen, L"https://") || holds(seen, L"ftp://");
    const bool other = holds(seen, L"www.") || holds(seen, L"file://") || holds(seen, L"mailto:");
    int is_other = -1;
    FUZZ_CHECK(IsUrl(exact.c_str(), &is_other) == (usual || other ? 1 : 0));
    FUZZ_CHECK(is_other == (!usual && other ? 1 : 0));
    FUZZ_CHECK(IsUrl(exact.c_str(), nullptr) == (usual || other ? 1 : 0));
}

void check_combining(const std::wstring& reference, const std::wstring& base)
{
    const std::size_t prefix = holds(base, L"http://") ? 7 : holds(base, L"https://") ? 8 : 0;
    std::wstring url = L"former";
    FUZZ_CHECK(CombineUrl(reference, base, url) == (base.empty() ? 0 : 1));
    FUZZ_CHECK(url == (base.empty() ? std::wstring() : absolute(reference, base, prefix)));
    // The result may overwrite an argument.
    std::wstring same = reference;
    CombineUrl(same, base, same);
    FUZZ_CHECK(same == url);
    same = base;
    CombineUrl(reference, same, same);
    FUZZ_CHECK(same == url);
}

void check_link(const std::wstring& link, const std::wstring& document_url)
{
    const std::size_t prefix = document_url.starts_with(L"http://")    ? 7
                               : document_url.starts_with(L"https://") ? 8
                                                                       : 0;
    std::wstring url = L"former";
    const bool done = resolve_link(exact_copy<wchar_t>(link), exact_copy<wchar_t>(document_url), url);
    FUZZ_CHECK(done == !document_url.empty());
    FUZZ_CHECK(url == (done ? absolute(link, document_url, prefix) : std::wstring()));
}

} // namespace

void url_resolution(bytes input)
{
    const auto lines = wide_lines_of(input, 2);
    check_address_test(lines[0]);
    if (lines.size() < 2)
        return;
    check_combining(lines[0], lines[1]);
    check_link(lines[0], lines[1]);
}

} // namespace quill::fuzz
