#include "stand_ins/viewer/document_facts.h"

#include <windows.h>

#include <cmath>
#include <cstdlib>
#include <optional>
#include <utility>

namespace quill {
namespace {

constexpr page_size usual_page = {595, 842};
constexpr double smallest_side = 1;
constexpr double largest_side = 200'000; // more than the PDF format allows

// Calls `use` with each line of `text`, without the line end.
template <typename Use>
void for_each_line(std::string_view text, Use use)
{
    while (!text.empty()) {
        const std::size_t end = text.find('\n');
        std::string_view line = text.substr(0, end);
        if (!line.empty() && line.back() == '\r')
            line.remove_suffix(1);
        use(line);
        if (end == std::string_view::npos)
            return;
        text.remove_prefix(end + 1);
    }
}

bool starts_with(std::string_view text, std::string_view beginning)
{
    return text.substr(0, beginning.size()) == beginning;
}

// The first three numbers in `text`: 2, 595 and 420 for "Page    2 size:  595 x 420 pts (A5)".
std::vector<double> numbers_in(std::string_view text)
{
    const std::string line(text);
    std::vector<double> numbers;
    const char* at = line.c_str();
    while (*at != '\0' && numbers.size() < 3) {
        char* end = nullptr;
        const double value = *at >= '0' && *at <= '9' ? std::strtod(at, &end) : 0;
        if (end != nullptr) {
            numbers.push_back(value);
            at = end;
        } else {
            ++at;
        }
    }
    return numbers;
}

bool is_sensible(const page_size& size)
{
    return size.width >= smallest_side && size.width <= largest_side && size.height >= smallest_side &&
           size.height <= largest_side;
}

// The numeric value of an attribute in a start tag: 12 for top="12".
std::optional<double> number_attribute(std::string_view element, std::string_view name)
{
    const std::string key = " " + std::string(name) + "=\"";
    const std::size_t at = element.find(key);
    if (at == std::string_view::npos)
        return std::nullopt;
    return std::strtod(std::string(element.substr(at + key.size(), 32)).c_str(), nullptr);
}

std::wstring unescaped(std::string_view text)
{
    static constexpr std::pair<std::string_view, char> entities[] = {
        {"&amp;", '&'}, {"&lt;", '<'}, {"&gt;", '>'}, {"&quot;", '"'}, {"&#34;", '"'}, {"&#39;", '\''}};
    std::string plain;
    while (!text.empty()) {
        std::size_t used = 0;
        for (const auto& [entity, character] : entities) {
            if (starts_with(text, entity)) {
                plain += character;
                used = entity.size();
                break;
            }
        }
        if (used == 0) {
            plain += text.front();
            used = 1;
        }
        text.remove_prefix(used);
    }
    const int length =
        MultiByteToWideChar(CP_UTF8, 0, plain.data(), static_cast<int>(plain.size()), nullptr, 0);
    std::wstring wide(static_cast<std::size_t>(length), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, plain.data(), static_cast<int>(plain.size()), wide.data(), length);
    return wide;
}

// The href of the first link in a text element; nullopt if there is none.
std::optional<std::string_view> reference_in(std::string_view line)
{
    constexpr std::string_view opening = "<a href=\"";
    const std::size_t start = line.find(opening);
    if (start == std::string_view::npos)
        return std::nullopt;
    const std::string_view rest = line.substr(start + opening.size());
    return rest.substr(0, rest.find('"'));
}

std::optional<page_link> link_in(std::string_view line, double page_width, double page_height,
                                 std::string_view own_prefix)
{
    const auto reference = reference_in(line);
    const auto top = number_attribute(line, "top");
    const auto left = number_attribute(line, "left");
    const auto width = number_attribute(line, "width");
    const auto height = number_attribute(line, "height");
    if (!reference || !top || !left || !width || !height)
        return std::nullopt;
    page_link link = {*left / page_width,
                      *top / page_height,
                      (*left + *width) / page_width,
                      (*top + *height) / page_height,
                      {},
                      0};
    if (starts_with(*reference, own_prefix)) {
        const long page = std::atol(std::string(reference->substr(own_prefix.size())).c_str());
        if (page < 1)
            return std::nullopt;
        link.page = static_cast<std::size_t>(page - 1);
    } else {
        link.target = unescaped(*reference);
        if (link.target.empty())
            return std::nullopt;
    }
    return link;
}

} // namespace

std::vector<page_size> parse_page_sizes(std::string_view report)
{
    std::vector<page_size> pages;
    for_each_line(report, [&](std::string_view line) {
        if (starts_with(line, "Pages:")) {
            const auto numbers = numbers_in(line);
            constexpr double most_pages = 100'000;
            if (numbers.size() == 1 && numbers[0] >= 1 && numbers[0] <= most_pages)
                pages.assign(static_cast<std::size_t>(numbers[0]), usual_page);
        } else if (starts_with(line, "Page ")) {
            const auto numbers = numbers_in(line);
            if (numbers.size() < 2 || numbers[0] < 1 || numbers[0] > static_cast<double>(pages.size()))
                return;
            page_size& page = pages[static_cast<std::size_t>(numbers[0]) - 1];
            if (line.find(" size:") != std::string_view::npos && numbers.size() == 3) {
                const page_size size = {numbers[1], numbers[2]};
                page = is_sensible(size) ? size : usual_page;
            } else if (line.find(" rot:") != std::string_view::npos && std::fmod(numbers[1], 180) == 90) {
                std::swap(page.width, page.height);
            }
        }
    });
    return pages;
}

std::vector<page_link> parse_page_links(std::string_view report, std::string_view own_name)
{
    const std::string own_prefix = std::string(own_name) + ".html#";
    std::vector<page_link> links;
    double page_width = 0;
    double page_height = 0;
    for_each_line(report, [&](std::string_view line) {
        // The tool may print diagnostics before the page on the same line.
        if (const std::size_t page = line.find("<page "); page != std::string_view::npos) {
            page_width = number_attribute(line.substr(page), "width").value_or(0);
            page_height = number_attribute(line.substr(page), "height").value_or(0);
        } else if (starts_with(line, "<text ") && page_width > 0 && page_height > 0) {
            if (auto link = link_in(line, page_width, page_height, own_prefix))
                links.push_back(std::move(*link));
        }
    });
    return links;
}

} // namespace quill
