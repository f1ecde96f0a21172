// A URL cracked and composed again.
#include "tests/fuzz/subjects.h"

#include <atlutil.h>

namespace quill::fuzz {
namespace {

std::wstring put_together(const CUrl& url)
{
    const DWORD length = url.GetUrlLength();
    const exact_copy<wchar_t> room(std::wstring(length + 1, L'x'));
    auto* const buffer = const_cast<wchar_t*>(room.view().data());
    DWORD count = length;
    FUZZ_CHECK(!url.CreateUrl(buffer, &count));
    FUZZ_CHECK(count == length + 1 && room.view() == std::wstring(length + 1, L'x'));
    FUZZ_CHECK(url.CreateUrl(buffer, &count));
    FUZZ_CHECK(count == length && buffer[length] == L'\0');
    return buffer;
}

bool same_parts(const CUrl& left, const CUrl& right)
{
    const auto same = [](LPCWSTR a, LPCWSTR b) { return std::wstring_view(a) == b; };
    return left.GetScheme() == right.GetScheme() && left.GetPortNumber() == right.GetPortNumber() &&
           same(left.GetSchemeName(), right.GetSchemeName()) &&
           same(left.GetHostName(), right.GetHostName()) && same(left.GetUserName(), right.GetUserName()) &&
           same(left.GetUrlPath(), right.GetUrlPath()) && same(left.GetExtraInfo(), right.GetExtraInfo());
}

} // namespace

void url_parts(bytes input)
{
    const exact_terminated text(wide_text(input));
    CUrl url;
    const bool cracked = url.CrackUrl(text.c_str());
    if (!cracked)
        FUZZ_CHECK(same_parts(url, CUrl()) && url.GetPasswordLength() == 0);
    const std::wstring again = put_together(url);
    if (!cracked)
        return;
    FUZZ_CHECK(again.size() <= text.view().size());
    CUrl second;
    FUZZ_CHECK(second.CrackUrl(again.c_str()));
    FUZZ_CHECK(same_parts(url, second));
    // A password without a user is not written.
    FUZZ_CHECK(url.GetUserNameLength() == 0 || std::wstring_view(url.GetPassword()) == second.GetPassword());
    FUZZ_CHECK(put_together(second) == again);
}

} // namespace quill::fuzz
