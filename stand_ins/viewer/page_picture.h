// A rendered page as a bitmap of the screen.
#pragma once

#include "stand_ins/common/gdi_object.h"

#include <windows.h>

#include <string>

namespace quill {

struct page_picture
{
    gdi_object bitmap;
    SIZE size = {}; // pixels

    explicit operator bool() const { return static_cast<bool>(bitmap); }
};

// Keeps GDI+ ready while it lives.
class picture_codec
{
public:
    picture_codec();
    picture_codec(const picture_codec&) = delete;
    picture_codec& operator=(const picture_codec&) = delete;
    ~picture_codec();

    // The picture in the bytes of a PNG file; empty when they hold none.
    page_picture decode(const std::string& png) const;

private:
    ULONG_PTR token_ = 0;
};

} // namespace quill
