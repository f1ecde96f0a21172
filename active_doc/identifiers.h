// Identifiers of the active document that the outside world knows: the registry, the type library and
// the suite's viewer control.
#pragma once

#include "platform/com_categories.h"

#include <windows.h>

#include <oaidl.h>

// The dual interface of the type library. It has no methods of its own: scripts see an object that
// answers IDispatch.
struct DECLSPEC_NOVTABLE IQuillPDF_IE_ActiveDoc : public IDispatch
{
};
__CRT_UUID_DECL(IQuillPDF_IE_ActiveDoc, 0xA4E19C37, 0x5D82, 0x4B0F, 0x96, 0xE3, 0x7C, 0x21, 0xD8, 0xF0, 0x5B,
                0x6A)

namespace quill {

inline constexpr IID IID_IQuillPDF_IE_ActiveDoc = {
    0xA4E19C37, 0x5D82, 0x4B0F, {0x96, 0xE3, 0x7C, 0x21, 0xD8, 0xF0, 0x5B, 0x6A}};
inline constexpr GUID LIBID_QuillPDF_IE_ActiveDocLib = {
    0xC2A95E14, 0x7F38, 0x4B60, {0x9D, 0x1A, 0xE5, 0xB7, 0x08, 0x4F, 0x2C, 0x63}};
inline constexpr CLSID CLSID_ActiveDocCtrl = {
    0x5E2C7A90, 0x1B3D, 0x4F6E, {0x8A, 0x21, 0xC4, 0xD9, 0xE0, 0x7B, 0x3F, 0x15}};

// The suite's viewer control: created by name, reached through its own interface, used as IDispatch.
inline constexpr wchar_t inner_viewer_progid[] = L"QuillPDF.QuillPDFCtrl";
inline constexpr IID IID_inner_viewer = {
    0xE7C40B19, 0x2A6D, 0x4F85, {0xB3, 0xE2, 0x91, 0x0D, 0x5C, 0x7A, 0x4F, 0x38}};

// Script resource of the class.
inline constexpr UINT active_doc_registry_script = 100;
// The menu that the module would add to the frame's menu. It carries none: the merged menu holds the
// container's groups only.
inline constexpr WORD frame_menu_resource = 206;

} // namespace quill
