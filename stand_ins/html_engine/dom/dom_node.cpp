#include "stand_ins/html_engine/dom/dom_node.h"

#include <algorithm>
#include <cwctype>
#include <utility>

namespace quill {
namespace {

bool visit_below(const dom_node& top, const std::function<bool(dom_node&)>& visit)
{
    for (const auto& child : top.children()) {
        if (child->is_element() && !visit(*child))
            return false;
        if (!visit_below(*child, visit))
            return false;
    }
    return true;
}

} // namespace

std::wstring lower_case(std::wstring_view text)
{
    std::wstring result(text);
    for (wchar_t& letter : result)
        if (letter >= L'A' && letter <= L'Z')
            letter = static_cast<wchar_t>(letter - L'A' + L'a');
    return result;
}

dom_node::dom_node(node_kind node_is, std::wstring name_or_text)
    : kind(node_is), name(node_is == node_kind::element ? name_or_text : std::wstring()),
      text(node_is == node_kind::element ? std::wstring() : std::move(name_or_text))
{
}

dom_node::~dom_node()
{
    remove_children();
}

bool dom_node::is(std::wstring_view element_name) const
{
    return kind == node_kind::element && name == element_name;
}

void dom_node::append(pointer child)
{
    child->parent_ = this;
    children_.push_back(std::move(child));
}

void dom_node::remove_children()
{
    for (const auto& child : children_)
        child->parent_ = nullptr;
    children_.clear();
}

bool dom_node::replace_with(std::vector<pointer> nodes)
{
    dom_node* const above = parent_;
    if (above == nullptr)
        return false;
    const auto place = std::find_if(above->children_.begin(), above->children_.end(),
                                    [&](const pointer& child) { return child.get() == this; });
    for (const auto& node : nodes)
        node->parent_ = above;
    parent_ = nullptr;
    // The list may hold the last reference to this node.
    const pointer keep = *place;
    const auto after = above->children_.erase(place);
    above->children_.insert(after, std::make_move_iterator(nodes.begin()),
                            std::make_move_iterator(nodes.end()));
    return true;
}

bool dom_node::contains(const dom_node& other) const
{
    for (const dom_node* node = &other; node != nullptr; node = node->parent())
        if (node == this)
            return true;
    return false;
}

std::optional<std::wstring> dom_node::attribute(std::wstring_view wanted) const
{
    const std::wstring key = lower_case(wanted);
    for (const auto& entry : attributes)
        if (entry.name == key)
            return entry.value;
    return std::nullopt;
}

void dom_node::set_attribute(std::wstring_view wanted, std::wstring value)
{
    std::wstring key = lower_case(wanted);
    for (auto& entry : attributes) {
        if (entry.name == key) {
            entry.value = std::move(value);
            return;
        }
    }
    attributes.push_back({std::move(key), std::move(value)});
}

bool dom_node::remove_attribute(std::wstring_view wanted)
{
    const std::wstring key = lower_case(wanted);
    return std::erase_if(attributes, [&](const dom_attribute& entry) { return entry.name == key; }) != 0;
}

void visit_elements(const dom_node& top, const std::function<bool(dom_node&)>& visit)
{
    visit_below(top, visit);
}

dom_node::pointer find_element(const dom_node& top, std::wstring_view name)
{
    dom_node::pointer found;
    visit_elements(top, [&](dom_node& element) {
        if (element.is(name))
            found = element.shared_from_this();
        return !found;
    });
    return found;
}

} // namespace quill
