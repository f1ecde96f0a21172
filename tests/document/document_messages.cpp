#include "tests/document/document_messages.h"

#include "tests/support/text.h"

#include <gtest/gtest.h>

namespace quill::test {

std::wstring document_url(document_fixture& fixture)
{
    std::uint64_t length = 0xffff'ffff'ffff'ffff;
    EXPECT_EQ(fixture.send(message_get_url_length, 0, reinterpret_cast<LPARAM>(&length)), 0);
    if (length > 10'000'000) {
        ADD_FAILURE() << "the length was not written whole: " << length;
        return {};
    }
    std::wstring url(static_cast<std::size_t>(length) + 1, L'#');
    EXPECT_EQ(fixture.send(message_get_url, url.size(), reinterpret_cast<LPARAM>(url.data())), 0);
    EXPECT_EQ(url.back(), L'\0') << "not terminated, or longer than announced";
    url.pop_back();
    return url;
}

std::uint32_t instance_number(HWND window)
{
    std::uint32_t number[2] = {0xffff'ffff, 0xabcd'abcd};
    EXPECT_EQ(SendMessageW(window, message_get_instance, 0, reinterpret_cast<LPARAM>(number)), 0);
    EXPECT_EQ(number[1], 0xabcd'abcd) << "more than 32 bits were written";
    return number[0];
}

void load_fetched_file(document_fixture& fixture, const std::wstring& path)
{
    EXPECT_EQ(fixture.send_text(message_set_cache_file, 0, path.c_str()), 0);
    EXPECT_EQ(fixture.send(message_load_file), 0);
}

std::vector<std::string> load_lines(const std::wstring& path, int result)
{
    return {"@ LOADFILE " + to_utf8(path), "@ LOADFILE RESULT " + std::to_string(result)};
}

} // namespace quill::test
