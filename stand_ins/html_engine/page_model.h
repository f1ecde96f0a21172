// The state that all objects of a page share: the tree, the URL, the ready state and the objects of its
// nodes.
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

// The page's functions for its objects, which may outlive the page.
class page_owner
{
public:
    virtual IDispatch* document() = 0;
    // A click on an element by the user or by a script.
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

    // Incremented with every change of the tree, so that collections know when to update.
    std::uint64_t version() const { return version_; }
    // Call after each change.
    void changed();

    // Resolves a reference against the base element, or against the page's URL if there is none.
    std::wstring absolute(std::wstring_view reference) const;

    // The object of a node, or null. Borrowed; a node has one object at a time, so that its COM identity
    // holds.
    element_object* object_of(const dom_node& node) const;
    void set_object(const dom_node& node, element_object* object); // null: the object is destroyed

    std::wstring url;
    page_state state = page_state::loading;
    page_owner* owner = nullptr; // null after the page is destroyed

private:
    dom_node::pointer root_;
    std::uint64_t version_ = 0;
    std::unordered_map<const dom_node*, element_object*> objects_;
};

// The value of document.readyState.
std::wstring_view text_of(page_state state);

} // namespace quill
