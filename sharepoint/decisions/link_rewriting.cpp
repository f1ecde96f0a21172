#include "sharepoint/decisions/link_rewriting.h"

namespace quill {
namespace {

constexpr std::wstring_view attribute_start = L"onclick=\"";
constexpr std::wstring_view handler_call = L"PdfFile.OpenDocuments";
constexpr auto not_found = std::wstring_view::npos;

struct text_range
{
    std::size_t begin;
    std::size_t end;
};

// The value of an attribute ends at its next quote, so an attribute without the call can be left behind as
// a whole; what begins inside it ("onclick=" as the value's end, with the quote) is found from there.
std::optional<text_range> next_handler(std::wstring_view markup, std::size_t from)
{
    for (std::size_t begin = markup.find(attribute_start, from); begin != not_found;
         begin = markup.find(attribute_start, begin + 1)) {
        const std::size_t value = begin + attribute_start.size();
        const std::size_t quote = markup.find(L'"', value);
        if (quote == not_found)
            return std::nullopt;
        if (markup.substr(value, quote - value).find(handler_call) != not_found)
            return text_range{begin, quote + 1};
    }
    return std::nullopt;
}

} // namespace

std::optional<std::wstring> without_open_handlers(std::wstring_view markup)
{
    auto handler = next_handler(markup, 0);
    if (!handler)
        return std::nullopt;
    std::wstring rewritten;
    rewritten.reserve(markup.size());
    std::size_t kept = 0;
    for (; handler; handler = next_handler(markup, kept)) {
        rewritten += markup.substr(kept, handler->begin - kept);
        kept = handler->end;
    }
    rewritten += markup.substr(kept);
    return rewritten;
}

} // namespace quill
