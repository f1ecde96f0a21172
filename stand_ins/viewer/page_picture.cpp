#include "stand_ins/viewer/page_picture.h"

#include <objidl.h>
// gdiplus.h requires the interfaces of objidl.h.
#include <gdiplus.h>
#include <shlwapi.h>

namespace quill {

picture_codec::picture_codec()
{
    const Gdiplus::GdiplusStartupInput input;
    if (Gdiplus::GdiplusStartup(&token_, &input, nullptr) != Gdiplus::Ok)
        token_ = 0;
}

picture_codec::~picture_codec()
{
    if (token_ != 0)
        Gdiplus::GdiplusShutdown(token_);
}

page_picture picture_codec::decode(const std::string& png) const
{
    page_picture picture;
    if (token_ == 0)
        return picture;
    IStream* stream =
        SHCreateMemStream(reinterpret_cast<const BYTE*>(png.data()), static_cast<UINT>(png.size()));
    if (stream == nullptr)
        return picture;
    {
        Gdiplus::Bitmap source(stream);
        HBITMAP bitmap = nullptr;
        if (source.GetLastStatus() == Gdiplus::Ok &&
            source.GetHBITMAP(Gdiplus::Color::White, &bitmap) == Gdiplus::Ok) {
            picture.bitmap = gdi_object(bitmap);
            picture.size = {static_cast<LONG>(source.GetWidth()), static_cast<LONG>(source.GetHeight())};
        }
    }
    stream->Release();
    return picture;
}

} // namespace quill
