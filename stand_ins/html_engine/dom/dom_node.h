// The tree of an HTML page. Plain data without COM or windows.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quill {

enum class node_kind
{
    document,
    doctype, // text: the name
    element,
    text,
    comment,
};

struct dom_attribute
{
    std::wstring name; // lower case
    std::wstring value;
};

// A node is owned by its parent. A shared pointer keeps the node and its subtree alive, also after it is
// removed from the page.
class dom_node : public std::enable_shared_from_this<dom_node>
{
public:
    using pointer = std::shared_ptr<dom_node>;

    explicit dom_node(node_kind node_is, std::wstring name_or_text = {});
    dom_node(const dom_node&) = delete;
    dom_node& operator=(const dom_node&) = delete;
    ~dom_node();

    bool is(std::wstring_view element_name) const;
    bool is_element() const { return kind == node_kind::element; }

    dom_node* parent() const { return parent_; }
    const std::vector<pointer>& children() const { return children_; }
    void append(pointer child);
    void remove_children();
    // Replaces this node with `nodes`. False if the node has no parent.
    bool replace_with(std::vector<pointer> nodes);
    // Whether this node is `other` or one of its ancestors.
    bool contains(const dom_node& other) const;

    // The value as written in the page; nullopt if it is missing. Attribute names are case-insensitive.
    std::optional<std::wstring> attribute(std::wstring_view name) const;
    void set_attribute(std::wstring_view name, std::wstring value);
    bool remove_attribute(std::wstring_view name);

    const node_kind kind;
    const std::wstring name; // of an element, lower case
    std::wstring text;       // of a text, comment or doctype
    std::vector<dom_attribute> attributes;

private:
    dom_node* parent_ = nullptr;
    std::vector<pointer> children_;
};

std::wstring lower_case(std::wstring_view text);

// Calls `visit` for every element below `top`, in document order, until it returns false.
void visit_elements(const dom_node& top, const std::function<bool(dom_node&)>& visit);

// The first element with this name below `top`; null if there is none.
dom_node::pointer find_element(const dom_node& top, std::wstring_view name);

} // namespace quill
