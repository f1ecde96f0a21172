#include "stand_ins/html_engine/dom/html_writer.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace quill {
namespace {

using std::wstring_view;

constexpr std::array<wstring_view, 15> void_elements = {L"area",  L"base",  L"br",     L"col",   L"embed",
                                                        L"frame", L"hr",    L"img",    L"input", L"link",
                                                        L"meta",  L"param", L"source", L"track", L"wbr"};
// The text in these elements is not markup and is not escaped.
constexpr std::array<wstring_view, 7> raw_text_elements = {L"style",   L"script",   L"xmp",      L"iframe",
                                                           L"noembed", L"noframes", L"plaintext"};

template <std::size_t size>
bool is_one_of(const std::array<wstring_view, size>& names, const dom_node& node)
{
    return node.is_element() && std::find(names.begin(), names.end(), wstring_view(node.name)) != names.end();
}

void append_escaped(std::wstring& out, wstring_view text, bool in_value)
{
    constexpr wchar_t no_break_space = 0xA0;
    for (const wchar_t letter : text) {
        if (letter == L'&')
            out += L"&amp;";
        else if (letter == no_break_space)
            out += L"&nbsp;";
        else if (letter == L'"' && in_value)
            out += L"&quot;";
        else if (letter == L'<' && !in_value)
            out += L"&lt;";
        else if (letter == L'>' && !in_value)
            out += L"&gt;";
        else
            out += letter;
    }
}

void write(std::wstring& out, const dom_node& node);

void write_children(std::wstring& out, const dom_node& node)
{
    for (const auto& child : node.children())
        write(out, *child);
}

void write_element(std::wstring& out, const dom_node& element)
{
    out += L'<' + element.name;
    for (const auto& attribute : element.attributes) {
        out += L' ' + attribute.name + L"=\"";
        append_escaped(out, attribute.value, true);
        out += L'"';
    }
    out += L'>';
    if (is_void_element(element))
        return;
    write_children(out, element);
    out += L"</" + element.name + L'>';
}

void write(std::wstring& out, const dom_node& node)
{
    switch (node.kind) {
    case node_kind::document:
        write_children(out, node);
        return;
    case node_kind::doctype:
        out += L"<!DOCTYPE " + node.text + L'>';
        return;
    case node_kind::element:
        write_element(out, node);
        return;
    case node_kind::text:
        if (node.parent() != nullptr && is_one_of(raw_text_elements, *node.parent()))
            out += node.text;
        else
            append_escaped(out, node.text, false);
        return;
    case node_kind::comment:
        out += L"<!--" + node.text + L"-->";
        return;
    }
}

void append_text(std::wstring& out, const dom_node& node)
{
    if (node.kind == node_kind::text)
        out += node.text;
    else if (node.is(L"br"))
        out += L"\r\n";
    else if (!node.is(L"script") && !node.is(L"style"))
        for (const auto& child : node.children())
            append_text(out, *child);
}

} // namespace

std::wstring outer_html(const dom_node& node)
{
    std::wstring out;
    write(out, node);
    return out;
}

std::wstring inner_html(const dom_node& node)
{
    std::wstring out;
    write_children(out, node);
    return out;
}

std::wstring inner_text(const dom_node& node)
{
    std::wstring out;
    for (const auto& child : node.children())
        append_text(out, *child);
    return out;
}

bool is_void_element(const dom_node& node)
{
    return is_one_of(void_elements, node);
}

} // namespace quill
