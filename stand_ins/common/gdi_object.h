// Owner of GDI objects, and the font of the stand-ins' windows.
//
//     const gdi_object font = make_interface_font(12);
//     const HGDIOBJ previous = SelectObject(dc, font.get());    // borrowed
//     DrawTextW(dc, text, -1, &area, DT_SINGLELINE);
//     SelectObject(dc, previous);
#pragma once

#include <windows.h>

#include <utility>

namespace quill {

// Owns a GDI object and deletes it. It must not be selected into a device context when it is deleted.
class gdi_object
{
public:
    gdi_object() = default;
    explicit gdi_object(HGDIOBJ object) : object_(object) {}
    gdi_object(gdi_object&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
    gdi_object& operator=(gdi_object&& other) noexcept
    {
        gdi_object old(std::exchange(object_, std::exchange(other.object_, nullptr)));
        return *this;
    }
    ~gdi_object()
    {
        if (object_ != nullptr)
            DeleteObject(object_);
    }

    HGDIOBJ get() const { return object_; }
    explicit operator bool() const { return object_ != nullptr; }

private:
    HGDIOBJ object_ = nullptr;
};

// The font of the stand-ins' windows, which Wine antialiases at small sizes. Height in pixels.
inline gdi_object make_interface_font(int height, int weight = FW_NORMAL)
{
    return gdi_object(CreateFontW(-height, 0, 0, 0, weight, FALSE, FALSE, FALSE, DEFAULT_CHARSET,
                                  OUT_DEFAULT_PRECIS, CLIP_DEFAULT_PRECIS, CLEARTYPE_QUALITY, DEFAULT_PITCH,
                                  L"DejaVu Sans"));
}

} // namespace quill
