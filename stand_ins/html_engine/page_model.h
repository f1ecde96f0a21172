// A page as all its objects share it: the tree, the addresses, the state, and which node has an object.
#pragma once

#include "stand_ins/html_engine/dom/dom_node.h"

#include <windows.h>

#include <oaidl.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>

namespace quill {

class element_object;

enum class page_state : int // the engine's READYSTATE
{
    loading = 1,
    interactive = 3,
    complete = 4,
};

// What the objects of a page ask of the page itself, which may be gone while some of them are still held.
class page_owner
{
public:
    virtual IDispatch* document() = 0;
    // The user, or a script by the method of that name, clicks on an element.
    virtual void click(const dom_node::pointer& element) = 0;
    virtual void tree_changed() = 0;

protected:
    ~page_owner() = default;
};

class page_model
{
public:
    page_model();

    const dom_node::pointer& root() const { return root_; }
    void set_root(dom_node::pointer root);
    dom_node::pointer document_element() const { return find_element(*root_, L"html"); }
    dom_node::pointer head() const { return find_element(*root_, L"head"); }
    dom_node::pointer body() const;
    std::wstring title() const;

    // Counts every change of the tree, so that collections know when to look again.
    std::uint64_t version() const { return version_; }
    // To be called after each.
    void changed();

    // An address of the page made absolute: by its base element, else by its own address.
    std::wstring absolute(std::wstring_view reference) const;

    // The one object of a node while it lives, so that it has one identity; not referenced here.
    element_object* object_of(const dom_node& node) const;
    void set_object(const dom_node& node, element_object* object); // null: it is gone

    std::wstring url;
    page_state state = page_state::loading;
    page_owner* owner = nullptr; // null when the page is gone

private:
    dom_node::pointer root_;
    std::uint64_t version_ = 0;
    std::unordered_map<const dom_node*, element_object*> objects_;
};

// As scripts see it.
std::wstring_view text_of(page_state state);

} // namespace quill
