// Public identifiers of the document: class, interface, type library, the suite's viewer control, resources.
#pragma once

#include "platform/com_categories.h"

#include <windows.h>

#include <oaidl.h>

// The dual interface of the type library. It adds no methods to IDispatch.
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

// The suite's viewer control: created by its ProgID, queried for its own interface, called through IDispatch.
inline constexpr wchar_t inner_viewer_progid[] = L"QuillPDF.QuillPDFCtrl";
inline constexpr IID IID_inner_viewer = {
    0xE7C40B19, 0x2A6D, 0x4F85, {0xB3, 0xE2, 0x91, 0x0D, 0x5C, 0x7A, 0x4F, 0x38}};

// The registrar script of the class.
inline constexpr UINT active_doc_registry_script = 100;
// The menu to merge into the frame's. The module contains no such resource.
inline constexpr WORD frame_menu_resource = 206;

} // namespace quill
