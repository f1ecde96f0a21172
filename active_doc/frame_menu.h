// Merges the document's menu into the menu of the browser's frame. The document has no menu of its own, so
// the merged menu contains the container's groups only; merging tells the frame that the document owns the
// menu.
#pragma once

#include "active_doc/identifiers.h"

#include <windows.h>

#include <atlbase.h>
#include <oleidl.h>

#include <cstdint>
#include <utility>

// A base class of the document T, whose window becomes the owner of the menu. UI thread only.
template <class T>
class CMenu
{
public:
    // Has the frame fill an empty menu and sets it as the frame's menu. Does nothing while merged or merging.
    // If the frame fails, or if unmerge_menu is called inside a call to the frame, the menu is destroyed.
    void merge_menu(IOleInPlaceFrame* frame)
    {
        if (!frame || is_merged_)
            return;
        is_merged_ = true;
        const std::uint32_t unmerges = unmerges_;
        OLEMENUGROUPWIDTHS widths{};
        const HMENU menu = CreateMenu();
        const bool is_filled = menu && SUCCEEDED(frame->InsertMenus(menu, &widths));
        const bool is_closed = unmerges != unmerges_;
        if (!is_filled || is_closed) {
            discard_menu(menu);
            if (!is_closed)
                is_merged_ = false;
            return;
        }
        load_own_menu();
        shared_menu_ = menu;
        descriptor_ = OleCreateMenuDescriptor(menu, &widths);
        const HRESULT result = frame->SetMenu(menu, descriptor_, static_cast<T*>(this)->m_hWnd);
        // The frame may have set the menu after an unmerge inside this call.
        if (unmerges != unmerges_ && !is_merged_ && SUCCEEDED(result))
            frame->SetMenu(nullptr, nullptr, nullptr);
    }

    // Restores the frame's own menu and destroys the merged one. frame may be null.
    void unmerge_menu(IOleInPlaceFrame* frame)
    {
        ++unmerges_;
        is_merged_ = false;
        if (frame)
            frame->SetMenu(nullptr, nullptr, nullptr);
        if (const HOLEMENU descriptor = std::exchange(descriptor_, nullptr))
            OleDestroyMenuDescriptor(descriptor);
        load_own_menu();
        discard_menu(std::exchange(shared_menu_, nullptr));
    }

protected:
    ~CMenu() { unmerge_menu(nullptr); }

private:
    static void load_own_menu()
    {
        if (const HMENU own = LoadMenuW(ATL::_AtlBaseModule.GetResourceInstance(),
                                        MAKEINTRESOURCEW(quill::frame_menu_resource)))
            DestroyMenu(own);
    }

    static void discard_menu(HMENU menu)
    {
        if (!menu)
            return;
        // The submenus belong to the container: DestroyMenu would destroy them with the menu.
        while (GetMenuItemCount(menu) > 0 && RemoveMenu(menu, 0, MF_BYPOSITION)) {
        }
        DestroyMenu(menu);
    }

    bool is_merged_ = false;     // or being merged
    std::uint32_t unmerges_ = 0; // lets merge_menu detect a re-entrant unmerge_menu
    HMENU shared_menu_ = nullptr;
    HOLEMENU descriptor_ = nullptr;
};
