#include "tests/module/listing.h"

#include "tests/module/loaded_module.h"
#include "tests/support/private_registry.h"
#include "tests/support/scopes.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <iostream>
#include <set>
#include <sstream>

namespace quill::test {
namespace {

void replace_all(std::string& text, const std::string& what, const std::string& with)
{
    for (auto at = text.find(what); at != std::string::npos; at = text.find(what, at + with.size()))
        text.replace(at, what.size(), with);
}

const wchar_t* file_name(listing_id id)
{
    switch (id) {
    case listing_id::machine:
        return L"registered_per_machine.txt";
    case listing_id::machine_removed:
        return L"removed_per_machine.txt";
    case listing_id::user:
        return L"registered_per_user.txt";
    case listing_id::user_removed:
        return L"removed_per_user.txt";
    }
    return L"";
}

// Every key, and every value after its key.
std::set<std::string> lines_with_keys(const std::string& listing)
{
    std::set<std::string> lines;
    std::istringstream stream(listing);
    std::string key;
    for (std::string line; std::getline(stream, line);) {
        const bool is_value = line.starts_with("    ");
        if (!is_value)
            key = line;
        lines.insert(is_value ? key + "\n" + line : line);
    }
    return lines;
}

// "- " before what is expected and missing, "+ " before what is there and not expected.
std::string difference(const std::string& expected, const std::string& actual)
{
    const auto expected_lines = lines_with_keys(expected), actual_lines = lines_with_keys(actual);
    std::string result;
    const auto add_missing = [&result](const auto& lines, const auto& others, const char* sign) {
        for (const std::string& line : lines)
            if (!others.contains(line))
                result += sign + line + "\n";
    };
    add_missing(expected_lines, actual_lines, "- ");
    add_missing(actual_lines, expected_lines, "+ ");
    return result.empty() ? "the same lines in another order\n" : result;
}

void write_listing(listing_id id, std::string text)
{
    replace_all(text, listing_text(loaded_module::path()), "%MODULE%");
    replace_all(text, listing_text(loaded_module::folder()), "%FOLDER%");
    // The session's drive Z: is the root of the file system.
    EXPECT_TRUE(write_file(std::wstring(L"Z:" QUILL_LISTINGS_FOLDER L"/") + file_name(id), text));
}

} // namespace

std::string listing_text(const std::wstring& text)
{
    std::string result(text.size() * 3, '\0');
    result.resize(static_cast<std::size_t>(
        WideCharToMultiByte(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), result.data(),
                            static_cast<int>(result.size()), nullptr, nullptr)));
    return result;
}

std::string listing(listing_id id)
{
    const HRSRC resource = FindResourceW(nullptr, MAKEINTRESOURCEW(static_cast<int>(id)), RT_RCDATA);
    const HGLOBAL loaded = resource ? LoadResource(nullptr, resource) : nullptr;
    if (!loaded)
        return "no such listing";
    std::string text(static_cast<const char*>(LockResource(loaded)), SizeofResource(nullptr, resource));
    replace_all(text, "\r\n", "\n");
    replace_all(text, "%MODULE%", listing_text(loaded_module::path()));
    replace_all(text, "%FOLDER%", listing_text(loaded_module::folder()));
    return text;
}

void expect_listed(listing_id id)
{
    const std::string expected = listing(id), actual = registry_listing();
    if (actual == expected)
        return;
    const std::string changes = difference(expected, actual);
    if (GetEnvironmentVariableW(L"QUILL_UPDATE_LISTINGS", nullptr, 0) == 0) {
        ADD_FAILURE() << "expected (-) and actual (+) registry:\n" << changes;
        return;
    }
    write_listing(id, actual);
    std::cout << "listing written; look at the difference:\n" << changes;
}

} // namespace quill::test
