#include "stand_ins/browser/shown_document.h"

#include <algorithm>
#include <array>
#include <utility>

namespace quill {
namespace {

BOOL CALLBACK look_at_window(HWND window, LPARAM parameter)
{
    std::array<wchar_t, 64> class_name = {};
    GetClassNameW(window, class_name.data(), static_cast<int>(class_name.size()));
    if (std::wstring_view(class_name.data()) != viewer_window_class)
        return TRUE;
    shown_document found;
    found.viewer = window;
    found.state =
        static_cast<viewer_state>(reinterpret_cast<LONG_PTR>(GetPropW(window, viewer_state_property)));
    std::array<wchar_t, 256> text = {};
    GetWindowTextW(window, text.data(), static_cast<int>(text.size()));
    found.text = text.data();
    reinterpret_cast<std::vector<shown_document>*>(parameter)->push_back(std::move(found));
    return TRUE;
}

std::pair<LONG, LONG> place_of(const shown_document& document)
{
    RECT place = {};
    GetWindowRect(document.viewer, &place);
    return {place.top, place.left};
}

} // namespace

shown_document find_shown_document(HWND browser)
{
    const auto documents = find_shown_documents(browser);
    return documents.empty() ? shown_document() : documents.front();
}

std::vector<shown_document> find_shown_documents(HWND browser)
{
    std::vector<shown_document> found;
    EnumChildWindows(browser, look_at_window, reinterpret_cast<LPARAM>(&found));
    std::sort(found.begin(), found.end(),
              [](const shown_document& a, const shown_document& b) { return place_of(a) < place_of(b); });
    return found;
}

shown_document summarise(const std::vector<shown_document>& documents, std::size_t count)
{
    shown_document all;
    std::size_t shown = 0;
    for (const auto& document : documents) {
        if (document.state == viewer_state::failed)
            return document;
        shown += document.state == viewer_state::shown ? 1 : 0;
        all.text += (all.text.empty() ? L"" : L"; ") + document.text;
        all.state = viewer_state::working;
    }
    if (shown >= count && shown == documents.size())
        all.state = viewer_state::shown;
    return all;
}

} // namespace quill
