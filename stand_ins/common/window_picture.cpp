#include "stand_ins/common/window_picture.h"

#include <objidl.h>
// gdiplus.h requires the interfaces of objidl.h.
#include <gdiplus.h>

#include <vector>

namespace quill {
namespace {

bool find_png_encoder(CLSID& encoder)
{
    UINT count = 0;
    UINT bytes = 0;
    if (Gdiplus::GetImageEncodersSize(&count, &bytes) != Gdiplus::Ok || bytes == 0)
        return false;
    // The block contains the array of descriptions, followed by their strings.
    std::vector<Gdiplus::ImageCodecInfo> block(bytes / sizeof(Gdiplus::ImageCodecInfo) + 1);
    if (Gdiplus::GetImageEncoders(count, bytes, block.data()) != Gdiplus::Ok)
        return false;
    for (UINT i = 0; i < count; ++i) {
        if (block[i].FormatID == Gdiplus::ImageFormatPNG) {
            encoder = block[i].Clsid;
            return true;
        }
    }
    return false;
}

bool save_bitmap(HBITMAP bitmap, const std::wstring& path)
{
    Gdiplus::GdiplusStartupInput input;
    ULONG_PTR token = 0;
    if (Gdiplus::GdiplusStartup(&token, &input, nullptr) != Gdiplus::Ok)
        return false;
    bool saved = false;
    {
        CLSID encoder = {};
        Gdiplus::Bitmap picture(bitmap, nullptr);
        saved = find_png_encoder(encoder) && picture.Save(path.c_str(), &encoder, nullptr) == Gdiplus::Ok;
    }
    Gdiplus::GdiplusShutdown(token);
    return saved;
}

} // namespace

bool save_window_picture(HWND window, const std::wstring& path)
{
    RECT bounds = {};
    if (!GetWindowRect(window, &bounds) || IsRectEmpty(&bounds))
        return false;
    const int width = bounds.right - bounds.left;
    const int height = bounds.bottom - bounds.top;
    // GetWindowDC includes the children as they are on the screen. PrintWindow omits windows of other
    // processes and those that do not handle WM_PRINT.
    const HDC source = GetWindowDC(window);
    if (source == nullptr)
        return false;
    bool saved = false;
    const HDC copy = CreateCompatibleDC(source);
    const HBITMAP bitmap = CreateCompatibleBitmap(source, width, height);
    if (copy != nullptr && bitmap != nullptr) {
        const HGDIOBJ old = SelectObject(copy, bitmap);
        const bool copied = BitBlt(copy, 0, 0, width, height, source, 0, 0, SRCCOPY) != FALSE;
        SelectObject(copy, old);
        saved = copied && save_bitmap(bitmap, path);
    }
    if (bitmap != nullptr)
        DeleteObject(bitmap);
    if (copy != nullptr)
        DeleteDC(copy);
    ReleaseDC(window, source);
    return saved;
}

} // namespace quill
