// Merging of the document's menu into the browser frame's menu. The module adds no menu of its own, so
// the merged menu holds the container's groups; merging tells the frame that the document owns the menu.
#pragma once

#include "active_doc/identifiers.h"

#include <windows.h>

#include <atlbase.h>
#include <oleidl.h>

#include <utility>

template <class T>
class CMenu
{
public:
    // Offers the frame an empty menu to fill and hands it back as the frame's menu. Nothing is held when
    // the frame declines. One merge at a time.
    void MergeMenu(IOleInPlaceFrame* frame)
    {
        if (!frame || shared_menu_)
            return;
        OLEMENUGROUPWIDTHS widths{};
        const HMENU menu = CreateMenu();
        if (!menu || FAILED(frame->InsertMenus(menu, &widths))) {
            DiscardMenu(menu);
            return;
        }
        if (!static_cast<T*>(this)->m_hWnd) {
            DiscardMenu(menu); // closed meanwhile: nobody would unmerge it
            return;
        }
        LoadOwnMenu();
        shared_menu_ = menu;
        descriptor_ = OleCreateMenuDescriptor(menu, &widths);
        frame->SetMenu(menu, descriptor_, static_cast<T*>(this)->m_hWnd);
    }

    // Gives the frame its own menu back and destroys what the merge made. The frame may be null.
    void UnmergeMenu(IOleInPlaceFrame* frame)
    {
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

    HMENU shared_menu_ = nullptr;
    HOLEMENU descriptor_ = nullptr;
};
