#include "suite/pages/page_layout.h"

#include <algorithm>
#include <array>
#include <cwchar>

namespace quill {
namespace {

constexpr int page_margin = 16;
constexpr int paragraph_gap = 10;
constexpr int list_indent = 24;
constexpr int default_box_width = 300;
constexpr int default_box_height = 150;

template <std::size_t size>
bool is_one_of(const std::array<std::wstring_view, size>& names, const dom_node& node)
{
    return std::find(names.begin(), names.end(), std::wstring_view(node.name)) != names.end();
}

constexpr std::array<std::wstring_view, 8> hidden = {L"head",     L"script", L"style",   L"title",
                                                     L"template", L"meta",   L"noembed", L"noframes"};
constexpr std::array<std::wstring_view, 25> blocks = {
    L"address", L"article",  L"aside",   L"blockquote", L"body",   L"center", L"div", L"dl",   L"dt",
    L"dd",      L"fieldset", L"footer",  L"form",       L"header", L"hr",     L"li",  L"main", L"nav",
    L"ol",      L"pre",      L"section", L"table",      L"tbody",  L"tr",     L"ul"};

// 0 for what is no heading.
int heading_size(const dom_node& node)
{
    if (node.name.size() != 2 || node.name[0] != L'h' || node.name[1] < L'1' || node.name[1] > L'6')
        return 0;
    constexpr std::array<int, 6> sizes = {26, 21, 18, 16, 15, 15};
    return sizes[static_cast<std::size_t>(node.name[1] - L'1')];
}

text_style style_inside(const dom_node& element, text_style style)
{
    if (const int size = heading_size(element)) {
        style.size = size;
        style.bold = true;
    }
    if (element.is(L"b") || element.is(L"strong") || element.is(L"th"))
        style.bold = true;
    if (element.is(L"a") && element.attribute(L"href"))
        style.link = true;
    return style;
}

// "200", "200px" or "50%" of the width at hand.
int length_of(const dom_node& element, std::wstring_view attribute, int whole, int otherwise)
{
    const auto text = element.attribute(attribute);
    if (!text)
        return otherwise;
    wchar_t* end = nullptr;
    const long value = std::wcstol(text->c_str(), &end, 10);
    if (end == text->c_str() || value <= 0)
        return otherwise;
    constexpr long most = 10'000;
    const int number = static_cast<int>(std::min(value, most));
    return *end == L'%' ? whole * std::min(number, 100) / 100 : number;
}

bool is_blank(wchar_t letter)
{
    return letter == L' ' || letter == L'\t' || letter == L'\r' || letter == L'\n' || letter == L'\f';
}

// Fills the space between two edges from top to bottom.
class flow
{
public:
    flow(page_layout& page, const layout_surroundings& surroundings, int left, int right, int top)
        : page_(page), surroundings_(surroundings), left_(left), right_(right), x_(left), y_(top)
    {
    }

    void add_children(const dom_node& node, const text_style& style)
    {
        for (const auto& child : node.children())
            add(*child, style);
    }

    // Ends the last line; where the next thing below may stand.
    int finish()
    {
        end_line();
        return y_;
    }

private:
    void add(dom_node& node, const text_style& style)
    {
        if (node.kind == node_kind::text)
            add_text(node, style);
        else if (node.is_element() && !is_one_of(hidden, node))
            add_element(node, style);
    }

    void add_element(dom_node& element, const text_style& style)
    {
        if (surroundings_.is_box(element))
            return add_box(element);
        if (element.is(L"br"))
            return new_line(style);
        if (element.is(L"tr"))
            return add_row(element, style);
        const text_style inside = style_inside(element, style);
        const bool paragraph = element.is(L"p") || element.is(L"ul") || element.is(L"ol") ||
                               element.is(L"table") || heading_size(element) != 0;
        if (paragraph || is_one_of(blocks, element)) {
            end_line();
            gap_ = std::max(gap_, paragraph ? paragraph_gap : 0);
        }
        const int indent =
            element.is(L"ul") || element.is(L"ol") || element.is(L"blockquote") ? list_indent : 0;
        left_ += indent;
        x_ = std::max(x_, left_);
        add_children(element, inside);
        if (paragraph || is_one_of(blocks, element)) {
            end_line();
            gap_ = std::max(gap_, paragraph ? paragraph_gap : 0);
        }
        left_ -= indent;
        if (indent != 0)
            x_ = left_;
    }

    void add_text(const dom_node& node, const text_style& style)
    {
        const std::wstring& text = node.text;
        for (std::size_t i = 0; i < text.size();) {
            if (is_blank(text[i])) {
                blank_ = true;
                ++i;
                continue;
            }
            std::size_t end = i;
            while (end < text.size() && !is_blank(text[end]))
                ++end;
            add_word(text.substr(i, end - i), style, *node.parent());
            i = end;
        }
    }

    void add_word(const std::wstring& word, const text_style& style, dom_node& element)
    {
        const SIZE size = surroundings_.measure(word, style);
        const int blank = blank_ && x_ > left_ ? static_cast<int>(surroundings_.measure(L" ", style).cx) : 0;
        blank_ = false;
        if (x_ > left_ && x_ + blank + size.cx > right_) {
            end_line();
        } else if (x_ > left_ && joins_last(style, element)) {
            laid_text& last = page_.texts.back();
            last.text += (blank != 0 ? L" " : L"") + word;
            x_ += blank + static_cast<int>(size.cx);
            last.place.right = x_;
            return;
        } else {
            x_ += blank;
        }
        begin_line();
        page_.texts.push_back(
            {{x_, y_, x_ + size.cx, y_ + size.cy}, word, style, element.shared_from_this()});
        x_ += static_cast<int>(size.cx);
        line_height_ = std::max(line_height_, static_cast<int>(size.cy));
    }

    bool joins_last(const text_style& style, const dom_node& element) const
    {
        return !page_.texts.empty() && page_.texts.back().element.get() == &element &&
               page_.texts.back().style == style && page_.texts.back().place.top == y_ &&
               page_.texts.back().place.right == x_;
    }

    void add_box(dom_node& element)
    {
        const int whole = right_ - left_;
        const int width = length_of(element, L"width", whole, std::min(default_box_width, whole));
        const int height = length_of(element, L"height", default_box_height, default_box_height);
        if (x_ > left_ && x_ + width > right_)
            end_line();
        begin_line();
        page_.boxes.push_back({{x_, y_, x_ + width, y_ + height}, element.shared_from_this()});
        x_ += width + paragraph_gap;
        line_height_ = std::max(line_height_, height + paragraph_gap);
    }

    // The cells of a row share the width equally.
    void add_row(const dom_node& row, const text_style& style)
    {
        end_line();
        begin_line();
        std::vector<const dom_node*> cells;
        for (const auto& child : row.children())
            if (child->is(L"td") || child->is(L"th"))
                cells.push_back(child.get());
        int bottom = y_;
        for (std::size_t i = 0; i < cells.size(); ++i) {
            const int width = (right_ - left_) / static_cast<int>(cells.size());
            const int left = left_ + width * static_cast<int>(i);
            flow cell(page_, surroundings_, left, left + width - paragraph_gap, y_);
            cell.add_children(*cells[i], style_inside(*cells[i], style));
            bottom = std::max(bottom, cell.finish());
        }
        constexpr int row_gap = 4;
        y_ = bottom + row_gap;
    }

    void begin_line()
    {
        if (x_ > left_ || line_height_ > 0)
            return;
        y_ += gap_;
        gap_ = 0;
    }

    void end_line()
    {
        y_ += line_height_;
        line_height_ = 0;
        x_ = left_;
        blank_ = false;
    }

    void new_line(const text_style& style)
    {
        if (line_height_ == 0)
            line_height_ = static_cast<int>(surroundings_.measure(L" ", style).cy);
        end_line();
    }

    page_layout& page_;
    const layout_surroundings& surroundings_;
    int left_;
    int right_;
    int x_;
    int y_;
    int line_height_ = 0;
    int gap_ = 0;        // wanted before the next line
    bool blank_ = false; // seen since the last word
};

} // namespace

page_layout lay_out(const dom_node& body, const layout_surroundings& surroundings)
{
    page_layout page;
    flow whole(page, surroundings, page_margin, std::max(surroundings.width - page_margin, page_margin + 1),
               page_margin);
    whole.add_children(body, text_style{});
    page.height = whole.finish() + page_margin;
    return page;
}

} // namespace quill
