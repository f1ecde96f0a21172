#include "stand_ins/html_engine/page_layout.h"

#include "stand_ins/html_engine/table_columns.h"

#include <algorithm>
#include <array>
#include <cwchar>
#include <utility>

namespace quill {
namespace {

constexpr int page_margin = 16;
constexpr int paragraph_gap = 10;
constexpr int list_indent = 24;
constexpr int area_padding = 10;
constexpr int column_gap = 28;
constexpr int row_padding = 5;
constexpr COLORREF row_line = RGB(222, 226, 231);
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

// The font size of a heading, 0 for other elements.
int heading_size(const dom_node& node)
{
    if (node.name.size() != 2 || node.name[0] != L'h' || node.name[1] < L'1' || node.name[1] > L'6')
        return 0;
    constexpr std::array<int, 6> sizes = {26, 21, 18, 16, 15, 15};
    return sizes[static_cast<std::size_t>(node.name[1] - L'1')];
}

// Parses "#0072c6"; nullopt for any other form.
std::optional<COLORREF> color_of(const dom_node& element, std::wstring_view attribute)
{
    const auto text = element.attribute(attribute);
    if (!text || text->size() != 7 || text->front() != L'#')
        return std::nullopt;
    wchar_t* end = nullptr;
    const unsigned long value = std::wcstoul(text->c_str() + 1, &end, 16);
    if (*end != L'\0')
        return std::nullopt;
    return RGB((value >> 16) & 0xFF, (value >> 8) & 0xFF, value & 0xFF);
}

// The rows of a table, without those of nested tables.
void collect_rows(const dom_node& node, std::vector<const dom_node*>& rows)
{
    for (const auto& child : node.children()) {
        if (child->is(L"tr"))
            rows.push_back(child.get());
        else if (child->is(L"thead") || child->is(L"tbody") || child->is(L"tfoot"))
            collect_rows(*child, rows);
    }
}

std::vector<const dom_node*> cells_of(const dom_node& row)
{
    std::vector<const dom_node*> cells;
    for (const auto& child : row.children())
        if (child->is(L"td") || child->is(L"th"))
            cells.push_back(child.get());
    return cells;
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
    if (const auto color = element.is(L"font") ? color_of(element, L"color") : std::nullopt)
        style.color = color;
    return style;
}

// Parses "200", "200px" or "50%" of `whole`.
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

// Places content between two edges from top to bottom.
class flow
{
public:
    flow(page_layout& page, const layout_context& context, int left, int right, int top)
        : page_(page), context_(context), left_(left), right_(right), x_(left), y_(top)
    {
    }

    void add_children(const dom_node& node, const text_style& style)
    {
        for (const auto& child : node.children())
            add(*child, style);
    }

    // Ends the last line and returns the top of what follows.
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
        if (context_.is_box(element))
            return add_box(element);
        if (element.is(L"br"))
            return new_line(style);
        if (element.is(L"tr"))
            return add_row(element, style);
        if (element.is(L"table"))
            return add_table(element, style);
        if (const auto color = is_one_of(blocks, element) ? color_of(element, L"bgcolor") : std::nullopt)
            return add_area(element, *color, style);
        const text_style inside = style_inside(element, style);
        const bool paragraph =
            element.is(L"p") || element.is(L"ul") || element.is(L"ol") || heading_size(element) != 0;
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
        const SIZE size = context_.measure(word, style);
        const int blank = blank_ && x_ > left_ ? static_cast<int>(context_.measure(L" ", style).cx) : 0;
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

    // Adds a block with its own background.
    void add_area(const dom_node& element, COLORREF color, const text_style& style)
    {
        end_line();
        y_ += gap_;
        const std::size_t index = page_.areas.size();
        page_.areas.push_back({{left_, y_, right_, y_}, color});
        flow inside(page_, context_, left_ + area_padding, right_ - area_padding, y_ + area_padding);
        inside.add_children(element, style_inside(element, style));
        y_ = inside.finish() + area_padding;
        page_.areas[index].place.bottom = y_;
        gap_ = paragraph_gap;
    }

    void add_table(const dom_node& table, const text_style& style)
    {
        end_line();
        gap_ = std::max(gap_, paragraph_gap);
        const int stated = length_of(table, L"width", right_ - left_, 0);
        const auto outer =
            std::exchange(columns_, share_width(wanted_widths(table, style), right_ - left_, stated));
        add_children(table, style_inside(table, style));
        columns_ = outer;
        end_line();
        gap_ = std::max(gap_, paragraph_gap);
    }

    // The preferred width of each column. Not computed for a table in a cell that is being measured, since
    // nested tables would then take exponential time.
    std::vector<int> wanted_widths(const dom_node& table, const text_style& style) const
    {
        std::vector<const dom_node*> rows;
        std::vector<int> wanted;
        if (!measures_)
            collect_rows(table, rows);
        for (const dom_node* row : rows) {
            const auto cells = cells_of(*row);
            wanted.resize(std::max(wanted.size(), cells.size()));
            for (std::size_t i = 0; i < cells.size(); ++i)
                wanted[i] = std::max(wanted[i], width_of(*cells[i], style));
        }
        return wanted;
    }

    // The width of a cell without line breaks, including the gap to the next column.
    int width_of(const dom_node& cell, const text_style& style) const
    {
        constexpr int endless = 10'000;
        page_layout alone;
        flow line(alone, context_, 0, endless, 0);
        line.measures_ = true;
        line.add_children(cell, style_inside(cell, style));
        line.finish();
        LONG right = 0;
        for (const auto& text : alone.texts)
            right = std::max(right, text.place.right);
        for (const auto& box : alone.boxes)
            right = std::max(right, box.place.right);
        return right > 0 ? static_cast<int>(right) + column_gap : 0;
    }

    void add_row(const dom_node& row, const text_style& style)
    {
        end_line();
        begin_line();
        const auto cells = cells_of(row);
        if (measures_) {
            for (const dom_node* cell : cells)
                add_children(*cell, style_inside(*cell, style));
            return end_line();
        }
        const int top = y_;
        int bottom = y_ + row_padding;
        int left = left_;
        for (std::size_t i = 0; i < cells.size() && i < columns_.size(); ++i) {
            flow cell(page_, context_, left, left + columns_[i] - column_gap / 2, top + row_padding);
            cell.add_children(*cells[i], style_inside(*cells[i], style));
            bottom = std::max(bottom, cell.finish());
            left += columns_[i];
        }
        y_ = bottom + row_padding;
        page_.areas.push_back({{left_, y_ - 1, left, y_}, row_line});
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
            line_height_ = static_cast<int>(context_.measure(L" ", style).cy);
        end_line();
    }

    page_layout& page_;
    const layout_context& context_;
    int left_;
    int right_;
    int x_;
    int y_;
    int line_height_ = 0;
    int gap_ = 0;              // vertical space before the next line
    std::vector<int> columns_; // column widths of the enclosing table
    bool measures_ = false;    // only the width is needed
    bool blank_ = false;       // white space since the last word
};

} // namespace

page_layout lay_out(const dom_node& body, const layout_context& context)
{
    page_layout page;
    flow whole(page, context, page_margin, std::max(context.width - page_margin, page_margin + 1),
               page_margin);
    whole.add_children(body, text_style{});
    page.height = whole.finish() + page_margin;
    return page;
}

} // namespace quill
