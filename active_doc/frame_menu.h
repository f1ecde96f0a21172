// Merging of the document's menu into the browser frame's menu. The module adds no menu of its own, so
// the merged menu holds the container's groups; merging tells the frame that the document owns the menu.
#pragma once

#include "active_doc/identifiers.h"

#include <windows.h>

#include <atlbase.h>
#include <oleidl.h>

#include <cstdint>
#include <utility>

template <class T>
class CMenu
{
public:
    // Offers the frame an empty menu to fill and sets it as the frame's menu. Nothing is held when the frame
    // declines, nor when the menu is unmerged inside a call of the frame. One merge at a time: re-entered
    // from there, it does nothing.
    void MergeMenu(IOleInPlaceFrame* frame)
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
            DiscardMenu(menu);
            if (!is_closed)
                is_merged_ = false;
            return;
        }
        LoadOwnMenu();
        shared_menu_ = menu;
        descriptor_ = OleCreateMenuDescriptor(menu, &widths);
        const HRESULT result = frame->SetMenu(menu, descriptor_, static_cast<T*>(this)->m_hWnd);
        // The frame may have taken the menu only after the unmerge inside that call.
        if (unmerges != unmerges_ && !is_merged_ && SUCCEEDED(result))
            frame->SetMenu(nullptr, nullptr, nullptr);
    }

    // Restores the frame's own menu and destroys what the merge made. The frame may be null.
    void UnmergeMenu(IOleInPlaceFrame* frame)
    {
        ++unmerges_;
        is_merged_ = false;
        if (frame)
            frame->SetMenu(nullptr, nullptr, nullptr);
        if (const HOLEMENU descriptor = std::exchange(descriptor_, nullptr))
            OleDestroyMenuDescriptor(descriptor);
        LoadOwnMenu();
        DiscardMenu(std::exchange(shared_menu_, nullptr));
    }

protected:
    ~CMenu() { UnmergeMenu(nullptr); }

private:
    static void LoadOwnMenu()
    {
        if (const HMENU own = LoadMenuW(ATL::_AtlBaseModule.GetResourceInstance(),
                                        MAKEINTRESOURCEW(quill::frame_menu_resource)))
            DestroyMenu(own);
    }

    static void DiscardMenu(HMENU menu)
    {
        if (!menu)
            return;
        // The submenus in it are the container's; destroying the menu with them inside would destroy them.
        while (GetMenuItemCount(menu) > 0 && RemoveMenu(menu, 0, MF_BYPOSITION)) {
        }
        DestroyMenu(menu);
    }

    bool is_merged_ = false;     // or being merged
    std::uint32_t unmerges_ = 0; // tells a merge that it was unmerged meanwhile
    HMENU shared_menu_ = nullptr;
    HOLEMENU descriptor_ = nullptr;
};
