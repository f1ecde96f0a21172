#include "stand_ins/html_engine/dom/html_reader.h"

#include "platform/text.h"

#include <windows.h>

#include <gumbo.h>

#include <cstring>
#include <memory>
#include <utility>

namespace quill {
namespace {

// As in browsers, the nesting depth is limited; deeper nodes become children of the last level.
constexpr int deepest_level = 512;

std::wstring to_wide(std::string_view text, UINT code_page)
{
    const auto size = static_cast<int>(text.size());
    std::wstring wide(static_cast<std::size_t>(
                          size > 0 ? MultiByteToWideChar(code_page, 0, text.data(), size, nullptr, 0) : 0),
                      L'\0');
    if (!wide.empty())
        MultiByteToWideChar(code_page, 0, text.data(), size, wide.data(), static_cast<int>(wide.size()));
    return wide;
}

std::wstring from_utf8(const char* text)
{
    return to_wide(text != nullptr ? text : "", CP_UTF8);
}

bool is_utf8(std::string_view text)
{
    return text.empty() || MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, text.data(),
                                               static_cast<int>(text.size()), nullptr, 0) != 0;
}

// The parser has tag numbers for standard elements; the name of any other element is only in the source text.
std::wstring element_name(const GumboElement& element)
{
    if (element.tag != GUMBO_TAG_UNKNOWN)
        return from_utf8(gumbo_normalized_tagname(element.tag));
    GumboStringPiece piece = element.original_tag;
    gumbo_tag_from_original_text(&piece);
    return lower_case(to_wide({piece.data, piece.length}, CP_UTF8));
}

void copy_children(const GumboVector& from, dom_node& to, int level);

void copy_node(const GumboNode& node, dom_node& parent, int level)
{
    switch (node.type) {
    case GUMBO_NODE_ELEMENT:
    case GUMBO_NODE_TEMPLATE: {
        const GumboElement& element = node.v.element;
        auto copy = std::make_shared<dom_node>(node_kind::element, element_name(element));
        for (unsigned i = 0; i < element.attributes.length; ++i) {
            const auto& attribute = *static_cast<const GumboAttribute*>(element.attributes.data[i]);
            copy->attributes.push_back({lower_case(from_utf8(attribute.name)), from_utf8(attribute.value)});
        }
        dom_node& copied = *copy;
        parent.append(std::move(copy));
        copy_children(element.children, level < deepest_level ? copied : parent, level + 1);
        return;
    }
    case GUMBO_NODE_TEXT:
    case GUMBO_NODE_CDATA:
    case GUMBO_NODE_WHITESPACE:
        parent.append(std::make_shared<dom_node>(node_kind::text, from_utf8(node.v.text.text)));
        return;
    case GUMBO_NODE_COMMENT:
        parent.append(std::make_shared<dom_node>(node_kind::comment, from_utf8(node.v.text.text)));
        return;
    case GUMBO_NODE_DOCUMENT:
        return;
    }
}

void copy_children(const GumboVector& from, dom_node& to, int level)
{
    for (unsigned i = 0; i < from.length; ++i)
        copy_node(*static_cast<const GumboNode*>(from.data[i]), to, level);
}

struct output_deleter
{
    void operator()(GumboOutput* output) const { gumbo_destroy_output(&kGumboDefaultOptions, output); }
};

std::unique_ptr<GumboOutput, output_deleter> parse(const std::string& utf8, GumboTag context)
{
    GumboOptions options = kGumboDefaultOptions;
    options.max_errors = 0;
    options.fragment_context = context;
    return std::unique_ptr<GumboOutput, output_deleter>(
        gumbo_parse_with_options(&options, utf8.data(), utf8.size()));
}

} // namespace

std::wstring decode_page(std::string_view bytes)
{
    constexpr std::string_view utf8_mark = "\xEF\xBB\xBF";
    constexpr std::string_view utf16_mark = "\xFF\xFE";
    if (bytes.starts_with(utf16_mark)) {
        bytes.remove_prefix(utf16_mark.size());
        std::wstring text(bytes.size() / sizeof(wchar_t), L'\0');
        std::memcpy(text.data(), bytes.data(), text.size() * sizeof(wchar_t));
        return text;
    }
    if (bytes.starts_with(utf8_mark))
        bytes.remove_prefix(utf8_mark.size());
    constexpr UINT western_europe = 1252;
    return to_wide(bytes, is_utf8(bytes) ? CP_UTF8 : western_europe);
}

dom_node::pointer read_page(std::wstring_view html)
{
    const std::string utf8 = to_utf8(html);
    const auto output = parse(utf8, GUMBO_TAG_LAST);
    auto page = std::make_shared<dom_node>(node_kind::document);
    const GumboDocument& document = output->document->v.document;
    if (document.has_doctype)
        page->append(std::make_shared<dom_node>(node_kind::doctype, from_utf8(document.name)));
    copy_children(document.children, *page, 0);
    return page;
}

std::vector<dom_node::pointer> read_fragment(std::wstring_view html, std::wstring_view context)
{
    const std::string utf8 = to_utf8(html);
    GumboTag tag = gumbo_tag_enum(to_utf8(context).c_str());
    if (tag == GUMBO_TAG_UNKNOWN || tag == GUMBO_TAG_LAST)
        tag = GUMBO_TAG_DIV;
    const auto output = parse(utf8, tag);
    // The parser adds a root element to a fragment.
    dom_node root(node_kind::element, L"html");
    copy_children(output->root->v.element.children, root, 0);
    return root.children();
}

} // namespace quill
