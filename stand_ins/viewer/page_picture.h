// A rendered page as a bitmap.
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

// Initialises GDI+ for the lifetime of the object.
class picture_codec
{
public:
    picture_codec();
    picture_codec(const picture_codec&) = delete;
    picture_codec& operator=(const picture_codec&) = delete;
    ~picture_codec();

    // Decodes the contents of a PNG file. Empty if they are invalid.
    page_picture decode(const std::string& png) const;

private:
    ULONG_PTR token_ = 0;
};

} // namespace quill
