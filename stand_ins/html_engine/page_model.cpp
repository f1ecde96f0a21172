#include "stand_ins/html_engine/page_model.h"

#include "stand_ins/html_engine/dom/html_writer.h"

#include <shlwapi.h>
#include <urlmon.h>

#include <array>
#include <utility>

namespace quill {
namespace {

std::wstring combine(const std::wstring& base, const std::wstring& reference)
{
    std::array<wchar_t, 4096> buffer{};
    DWORD length = 0;
    if (FAILED(CoInternetCombineUrl(base.c_str(), reference.c_str(), URL_ESCAPE_SPACES_ONLY, buffer.data(),
                                    static_cast<DWORD>(buffer.size()), &length, 0)))
        return reference;
    return buffer.data();
}

} // namespace

page_model::page_model() : root_(std::make_shared<dom_node>(node_kind::document)) {}

void page_model::set_root(dom_node::pointer root)
{
    root_ = std::move(root);
    changed();
}

dom_node::pointer page_model::body() const
{
    auto body = find_element(*root_, L"body");
    return body ? body : find_element(*root_, L"frameset");
}

std::wstring page_model::title() const
{
    const auto top = head();
    const auto title = top ? find_element(*top, L"title") : nullptr;
    return title ? inner_text(*title) : std::wstring();
}

void page_model::changed()
{
    ++version_;
    if (owner != nullptr)
        owner->tree_changed();
}

std::wstring page_model::absolute(std::wstring_view reference) const
{
    std::wstring base = url;
    const auto top = head();
    const auto element = top ? find_element(*top, L"base") : nullptr;
    if (const auto stated = element ? element->attribute(L"href") : std::nullopt)
        base = combine(base, *stated);
    return combine(base, std::wstring(reference));
}

element_object* page_model::object_of(const dom_node& node) const
{
    const auto found = objects_.find(&node);
    return found != objects_.end() ? found->second : nullptr;
}

void page_model::set_object(const dom_node& node, element_object* object)
{
    if (object != nullptr)
        objects_[&node] = object;
    else
        objects_.erase(&node);
}

std::wstring_view text_of(page_state state)
{
    switch (state) {
    case page_state::loading:
        return L"loading";
    case page_state::interactive:
        return L"interactive";
    case page_state::complete:
        return L"complete";
    }
    return L"uninitialized";
}

} // namespace quill
