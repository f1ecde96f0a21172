#include "tests/module/listing.h"

#include "tests/module/loaded_module.h"

#include <windows.h>

namespace quill::test {
namespace {

void replace_all(std::string& text, const std::string& what, const std::string& with)
{
    for (auto at = text.find(what); at != std::string::npos; at = text.find(what, at + with.size()))
        text.replace(at, what.size(), with);
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

} // namespace quill::test
